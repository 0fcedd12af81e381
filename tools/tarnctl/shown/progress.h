// A word about work that takes long.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>

namespace tarnctl {

/// Shows on a terminal that something is still being done: from the first second on, each second, in
/// one line of standard error that is gone when this goes. Says nothing where that is no terminal.
class Progress {
 public:
  /// \param what  as "importing host.json"
  explicit Progress(std::string what);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// So many more bytes have passed.
  void Add(std::size_t bytes) { bytes_ += bytes; }

 private:
  void Run();
  void Show(long seconds) const;

  const std::string what_;
  std::atomic<std::size_t> bytes_{0};
  std::mutex mutex_;
  std::condition_variable wake_;
  bool isOver_ = false;
  std::thread thread_;
};

}  // namespace tarnctl
