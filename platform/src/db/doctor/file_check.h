// The files that the stores consist of, and what lies beside them.
#pragma once

#include "platform/host_repair.h"

#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <vector>

namespace DBStore::internal {

/// Owner and mode that a file or the directory has, and those that it should have: everything belongs
/// to the owner of the directory, nobody but owner and group may look into a database, and nobody else
/// may change the directory. What SQLite keeps beside a database has its rights.
struct WrongRights {
  std::string path;
  std::string fixedPath;
  mode_t mode = 0;
  mode_t rightMode = 0;
  uid_t owner = 0;
  uid_t rightOwner = 0;
  gid_t group = 0;
  gid_t rightGroup = 0;

  std::string Describe() const;
  /// By this process.
  bool CanBeMended() const noexcept;
};
std::vector<WrongRights> FindWrongRights();

/// A file that a process left which was killed while it made or restored something.
struct LeftOver {
  std::string path;
  std::string fixedPath;
};
std::vector<LeftOver> FindLeftOvers();

/// Where the stores lie.
std::string StoresDirectory();
/// As messages name it.
std::string StoresDirectoryName();

/// Rights, left-overs, a restore that was begun, what earlier repairs kept, and room on the disk.
void CheckFiles(std::vector<HostRepair::Finding>& findings);

/// Whether the copy of a backup that a restore was begun with can be read. Raises nothing.
bool IsPendingRestoreSound();

}  // namespace DBStore::internal
