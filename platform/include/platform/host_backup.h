// Both stores in one file, and back.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace HostBackup {

/// What a backup holds.
struct Content {
  std::int64_t created = 0;  ///< seconds since 1970
  int storeLayout = 0;
  int schemaStoreLayout = 0;
  std::uint64_t objects = 0;  ///< rows of Config that have a value
  std::uint64_t types = 0;
};

struct Written {
  std::uint64_t bytes = 0;
  Content content;
};

/// Writes the store and the schema store, as they are at one moment, into one file; others read and
/// write meanwhile. The file appears under its name whole, verified, and with mode 0600, or not at
/// all.
/// \param replace  takes the place of a file of that name, which is otherwise refused
///
/// Raises std::runtime_error, with the last store error set, as Restore does.
Written Backup(const std::string& path, bool replace);

struct Restored {
  std::vector<std::string> created;   ///< directories and databases that were not there, by path
  std::vector<std::string> replaced;  ///< databases whose content is another one now
  std::vector<std::string>
      outdated;  ///< those with tables of an older library, as the backup has them
  Content content;
};

/// Makes the stores what they were when the backup was written. Databases that are there are
/// written, not exchanged, so that whoever has them open sees the new content. Both of them change,
/// or neither, even if the process is killed: the next who opens one completes what was begun. Tables
/// are those of the library that the backup is of; an older one's are brought over by
/// HostSetup::Initialize, and used as they are until then.
/// \param force  allows it where there is a store, or what is left of one
Restored Restore(const std::string& path, bool force);

}  // namespace HostBackup
