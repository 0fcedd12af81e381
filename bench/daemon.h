// The management daemon, as far as a sender meets it.
#pragma once

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace Benchmarks {

/// Listens on the notification socket in the current directory, on a thread of its own, until it is
/// destroyed. Raises std::runtime_error when it cannot.
class Daemon {
 public:
  enum class Manner { READS, ACCEPTS_ONLY };

  explicit Daemon(Manner manner);
  ~Daemon();
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  /// How many senders it has accepted so far.
  int Accepted() const { return accepted_; }

  /// The socket's name, relative to the current directory.
  static const std::string& Endpoint();

 private:
  void Serve(Manner manner);

  int socket_;
  std::atomic<int> accepted_ = 0;
  std::vector<int> senders_;  // held open by one that only accepts
  std::thread thread_;
};

/// Sends a message to the daemon with nothing in between: socket, connect, send, close. Raises
/// std::runtime_error on any failure.
void SendBare(const std::string& message);

}  // namespace Benchmarks
