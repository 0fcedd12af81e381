// The client of a local stream socket.
#pragma once

#include "platform/file_descriptor.h"

#include <chrono>
#include <string>

namespace TarnConfigStore {

/// Writes messages to a socket that somebody listens on, and reads nothing. Its failures are
/// std::runtime_error with the system's own text. Nobody can keep it waiting: connecting and sending
/// together wait for as long as DaemonPatience allows at most, counted from the start of Connect (a
/// message of several tens of kilobytes, for that long wherever its reader falls behind). What the
/// peer makes of that time is noted there. A peer that has gone raises no
/// signal, and programs that are started meanwhile do not inherit the socket. For one thread at a
/// time.
class UdsClient {
 public:
  /// Opens nothing. The endpoint is a path name of at most 107 bytes, relative to the working
  /// directory if it has no "/" in front.
  explicit UdsClient(const std::string& endpoint);
  ~UdsClient();
  UdsClient(const UdsClient&) = delete;
  UdsClient& operator=(const UdsClient&) = delete;

  /// Does nothing when connected. Raises "Failed to create socket: TEXT", "Endpoint address too
  /// long." (the socket stays open, until Disconnect) or "Failed to connect socket: TEXT" (nothing
  /// stays open).
  void Connect();

  /// Sends everything in one write; what that does not take is not sent after it. Raises "Not
  /// connected to an endpoint.", "Failed to send data: TEXT" or "Partial write: NB written, expected
  /// MB.". Stays connected.
  void Send(const std::string& data);

  /// Closes the socket, if there is one; a failure of that is only logged.
  void Disconnect() noexcept;

 private:
  using Clock = std::chrono::steady_clock;

  bool LimitWaits(Clock::time_point now);
  template <class Call>
  auto CallWithinDeadline(Call call);

  [[noreturn]] static void Fail(const char* what);

  std::string endpoint_;
  bool waits_ = true;
  FileDescriptor socket_;
  Clock::time_point deadline_;
  std::chrono::microseconds waitLimit_{0};  // of the socket; zero while it has none
};

}  // namespace TarnConfigStore
