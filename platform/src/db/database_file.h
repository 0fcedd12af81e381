// Opening the platform's databases safely, and telling what is wrong with one that cannot be
// opened.
#pragma once

#include "db/layout.h"

#include <memory>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>

struct sqlite3;

namespace DBStore::internal {

/// What tells a file from another one that took its place or from the same one with other
/// permissions. Taken with lstat: opening a database file by other means than SQLite would drop
/// SQLite's locks on it.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  mode_t mode = 0;
  uid_t owner = 0;
  gid_t group = 0;

  bool IsSameFile(const FileIdentity& other) const noexcept {
    return device == other.device && inode == other.inode;
  }
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// False when there is no such file, or it cannot be looked at (errno tells).
bool IdentifyFile(const std::string& path, FileIdentity& identity) noexcept;

struct DatabaseCloser {
  void operator()(sqlite3* database) const noexcept;
};
using DatabaseHandle = std::unique_ptr<sqlite3, DatabaseCloser>;

/// An open database. Its SQLite handle takes no locks of its own: it is for one thread at a time.
struct DatabaseFile {
  DatabaseHandle handle;  ///< empty when it could not be opened
  std::string path;       ///< where the file lies, the root included
  FileIdentity identity;
  bool readOnly = false;  ///< this user may not write it, or writing was not asked for

  explicit operator bool() const noexcept { return handle != nullptr; }
};

/// Who may do what with a database that is made.
inline constexpr mode_t kDatabaseMode = 0640;

/// Opens an existing database after its layout; never makes one. A restore that was begun is
/// completed first. The result is empty when that fails, and the reason, with what mends it, is
/// logged and kept as the thread's last store error.
/// \param writable  asks for writing where this user may; a file that may only be read is opened for
///                  that
DatabaseFile OpenDatabase(const Layout& layout, bool writable);

/// The same in the middle of a restore.
DatabaseFile OpenDatabaseAsItIs(const Layout& layout, bool writable);

/// The path with its directory's links followed: an administrator may have made some on the way there.
/// From there on no link is followed. Empty, with errno set, when there is no such directory or no way
/// into it.
std::string CanonicalPath(const std::string& path);

/// Opens a file with SQLite, whatever is in it. Like all that answers with an SQLite result code, it
/// reports nothing.
DatabaseHandle OpenFile(const char* path, int flags, int& code) noexcept;

/// The same with what every connection to a store is given. There is a handle even where the file
/// could be opened and is no database.
DatabaseHandle OpenWithSettings(const std::string& path, bool writable, int& code) noexcept;

/// The first column of a pragma's, or another statement's, first row.
int ReadPragma(sqlite3* database, const char* pragma, std::string& value);

/// What a database says of its layout.
struct LayoutFound {
  enum Verdict { READABLE, SOMETHING_ELSE, NEWER, UNKNOWN };
  Verdict verdict = UNKNOWN;
  int applicationId = 0;
  int version = 0;
};
int ReadLayout(sqlite3* database, const Layout& layout, LayoutFound& found);

/// Whether there is a regular file where the database belongs. Reports what else there is.
bool IsDatabasesPlace(const Layout& layout, const std::string& path, struct stat& status);

/// Whether the database that is open is still the one at its path. Reports, as opening it would,
/// where there is none any more, or another one.
bool CheckStillThere(const Layout& layout, const DatabaseFile& file);

/// Makes a database in an empty file that nobody else knows yet. An SQLite result code.
int DefineDatabase(const Layout& layout, const std::string& path) noexcept;

}  // namespace DBStore::internal
