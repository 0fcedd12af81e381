// A host whose whole state can be told and brought back.
#pragma once

#include "faults/lock_probe.h"

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace Faults {

/// One of the host's databases, past the library. What it holds is read anew where it has changed only:
/// tens of thousands of points leave it as it was.
class FaultyDatabase {
 public:
  /// \param saved  a copy of what Restore brings back
  FaultyDatabase(std::string path, const std::string& saved);
  FaultyDatabase(FaultyDatabase&&) = default;
  ~FaultyDatabase() { Leave(); }

  /// Copies what a database holds.
  static void Save(const std::string& path, const std::string& copy);
  /// \param grows  a statement that a change by others would run, too
  void Restore(const char* grows);
  /// Every row of every table, but for times and ids made up by chance.
  const std::string& Look();
  /// "" or which lock somebody else holds on it.
  std::string Locked();
  /// Closes it, so that whoever opens it next is the first.
  void Leave();

 private:
  struct Closer {
    void operator()(sqlite3* database) const;
    void operator()(sqlite3_stmt* statement) const;
  };
  using Handle = std::unique_ptr<sqlite3, Closer>;
  using Tables = std::map<std::string, std::string>;  // by their names

  static Handle Open(const std::string& path);
  static std::vector<std::string> Run(sqlite3* database, const std::string& sql);
  Tables Read(sqlite3* database);
  std::string Bytes() const;
  void Use();
  void Know(Tables tables);
  long long Version() const;

  std::string path_;
  Handle database_;
  std::unique_ptr<sqlite3_stmt, Closer> askVersion_;
  LockProbe probe_;
  std::string schemaVersion_;
  std::vector<std::string> queries_;  // table/SELECT
  Tables saved_;
  Tables inserts_;
  Tables now_;
  std::string text_;
  long long version_ = -1;   // of what text_ says, while it is open
  std::string bytes_ = "?";  // the same, while it is closed
};

/// The databases under a root, and the names of all its files. For one process.
class FaultyHost {
 public:
  explicit FaultyHost(const std::string& root);

  /// Keeps what there is under a root: what Restore brings back.
  static void Save(const std::string& root);
  void Restore();
  /// Equal numbers are equal states.
  unsigned Look();
  /// The lines that one state has and the other has not.
  std::string Differences(unsigned before, unsigned now) const;
  std::string Locked();
  void Leave();

 private:
  std::string root_;
  std::vector<FaultyDatabase> databases_;
  std::vector<std::string> files_;
  std::vector<std::string> states_;
};

/// A text without what differs from one call to the next: times, generated ids.
std::string Settled(std::string text);

}  // namespace Faults
