// The messages that notifications come in.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace tarnctl {

struct Notification {
  std::vector<std::string> objects;  ///< COMPONENT.GROUP.KEY each
  pid_t process = 0;                 ///< that changed them
};

/// Takes the bytes of one sender as they come, and gives the notifications in them: HTTP/1.1
/// requests with a Content-Length, of kLongest bytes at most, that hold a JSON-RPC request each.
class WatchMessageReader {
 public:
  static constexpr std::size_t kLongest = 65536;

  void Append(std::string_view bytes) { buffer_ += bytes; }

  /// The next notification; nothing while it is not there as a whole. Raises std::invalid_argument
  /// with what is wrong as soon as that shows: the sender is to be left then.
  std::optional<Notification> Next();

  /// Whether a message has begun that has not ended.
  bool IsInsideMessage() const { return !buffer_.empty(); }

 private:
  std::string buffer_;
};

}  // namespace tarnctl
