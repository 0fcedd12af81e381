// The management daemon, as far as a sender meets it.
#pragma once

#include "child_process.h"

#include <string>

namespace Benchmarks {

/// Listens on the notification socket in the current directory, in a process of its own as the
/// daemon is, until it is destroyed. Raises std::runtime_error when it cannot.
class Daemon {
 public:
  enum class Manner { READS, ACCEPTS_ONLY, HANGS };

  explicit Daemon(Manner manner);
  ~Daemon();
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  /// Waits until one that only accepts has accepted so many senders, for a second at most. False
  /// when it has not.
  bool HasAccepted(int senders);

 private:
  bool ReadReports(int count);

  Child child_;
};

/// Sends a message to the daemon with nothing in between: socket, connect, send, close. Raises
/// std::runtime_error on any failure.
void SendBare(const std::string& message);

}  // namespace Benchmarks
