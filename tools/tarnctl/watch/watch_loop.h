// Serving those who send notifications.
#pragma once

#include "watch/watch_message.h"
#include "watch/watch_socket.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <poll.h>
#include <string>
#include <vector>

namespace tarnctl {

/// True when polling for the events finds one, or that the other side is gone.
bool HasEvent(int descriptor, short events);

/// Takes notifications from all senders at once, one poll after the other. Each sender has a few
/// seconds; what is no notification gets a word on standard error and changes nothing else.
class WatchLoop {
 public:
  using Print = std::function<void(const Notification&)>;

  /// \param stop   ends the loop when it can be read
  /// \param count  ends the loop after so many notifications
  /// \param asJson  how to speak on standard error
  WatchLoop(const WatchSocket& socket, int stop, std::optional<std::uint64_t> count, Print print,
            bool asJson)
      : socket_(socket), stop_(stop), left_(count), print_(std::move(print)), asJson_(asJson) {}

  /// Also ends when nobody reads standard output any more. Raises ToolError, and what `print` raises.
  void Run();

 private:
  using Clock = std::chrono::steady_clock;
  struct Sender {
    Descriptor socket;
    Clock::time_point deadline;
    WatchMessageReader reader;
  };

  bool WaitForEvents();  ///< false when it is time to end
  int MillisecondsToNextDeadline() const;
  void ReceiveAll();
  void Receive(Sender& sender);
  /// With a word about a message that has begun and will not be read to its end.
  void Leave(Sender& sender, const std::string& reason) const;
  void LeaveLateSenders();
  void AcceptSender();

  const WatchSocket& socket_;
  int stop_;
  std::optional<std::uint64_t> left_;
  Print print_;
  bool asJson_;
  std::vector<Sender> senders_;
  std::vector<pollfd> polled_;
};

}  // namespace tarnctl
