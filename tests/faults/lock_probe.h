// Locks on SQLite's files, asked for without taking one.
#pragma once

#include <string>
#include <vector>

namespace Faults {

/// Sees what other processes hold of one database: a write lock, and what keeps a log from being
/// restarted. Its descriptors stay open until Forget, since closing one gives up every lock that the
/// process has on the file, SQLite's too ("How To Corrupt An SQLite Database File", 2.2).
class LockProbe {
 public:
  explicit LockProbe(std::string path) : path_(std::move(path)) {}
  LockProbe(LockProbe&& other) noexcept = default;
  ~LockProbe() { Forget(); }

  /// "" or what is held.
  std::string Held();
  void Forget() noexcept;

 private:
  int Descriptor(const std::string& path);

  std::string path_;
  std::vector<int> open_;
};

}  // namespace Faults
