// A host whose whole state can be told and brought back.
#pragma once

#include <memory>
#include <string>
#include <vector>

struct sqlite3;

namespace Faults {

/// Looks at the databases under a root past the library, and keeps what they held when it was first
/// made there. For one process.
class FaultyHost {
 public:
  explicit FaultyHost(const std::string& root);

  /// Keeps what the databases hold: what Restore brings back.
  void Save();
  void Restore();
  /// Every row of every table, but for times and ids made up by chance, and the names of all files.
  std::string Look() const;
  /// "" or which database somebody keeps from being written.
  std::string Locked() const;

 private:
  struct Closer {
    void operator()(sqlite3* database) const;
  };
  using Handle = std::unique_ptr<sqlite3, Closer>;
  static Handle Open(const std::string& path);
  static std::vector<std::string> Run(sqlite3* database, const std::string& sql);
  static std::vector<std::string> Tables(sqlite3* database);
  static std::string RowsOf(sqlite3* database, const std::string& schema);

  std::string root_;
  Handle databases_[2];
};

/// A text without what differs from one call to the next: times, generated ids.
std::string Settled(std::string text);

}  // namespace Faults
