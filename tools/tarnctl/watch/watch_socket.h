// The socket that notifications arrive on.
#pragma once

#include "descriptor.h"

#include <optional>
#include <string>
#include <sys/types.h>

namespace tarnctl {

/// Listens on a socket file that only this user may connect to, and removes the file when it goes,
/// unless another has taken its place meanwhile.
/// A file of the name that nobody listens on any more is replaced. Anything else of that name stays
/// as it is and raises ToolError: somebody who listens, or what is no socket at all.
class WatchSocket {
 public:
  explicit WatchSocket(const std::string& path);
  WatchSocket(const WatchSocket&) = delete;
  WatchSocket& operator=(const WatchSocket&) = delete;

  /// To be polled; does not block.
  int Get() const { return socket_.Get(); }
  /// The next sender, or a closed descriptor when none waits. Does not block, nor does what it
  /// returns. Raises ToolError.
  Descriptor Accept() const;

 private:
  /// A file that is removed if it is still the same one.
  class OwnFile {
   public:
    explicit OwnFile(const std::string& path);
    ~OwnFile();
    OwnFile(const OwnFile&) = delete;
    OwnFile& operator=(const OwnFile&) = delete;

   private:
    std::string path_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
  };

  Descriptor socket_;
  std::optional<OwnFile> file_;  // goes first: while the socket is open no other gets its inode
};

}  // namespace tarnctl
