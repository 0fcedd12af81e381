#include "platform/host_setup.h"

#include "platform/db_store.h"
#include "platform/file_descriptor.h"
#include "platform/host_paths.h"
#include "platform/store_error.h"

#include "db/database_file.h"
#include "db/last_error.h"
#include "db/layout.h"
#include "db/open_databases.h"

#include <sqlite3.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace HostSetup {
namespace {

using DBStore::ErrorKind;
using DBStore::internal::Layout;

constexpr mode_t kDirectoryMode = 0755;
constexpr mode_t kFileMode = 0640;

bool Fail(Result& result, std::string_view path, const std::string& what, int error) {
  result.ok = false;
  result.failure = std::string(path) + ": " + what;
  ErrorKind kind = ErrorKind::OTHER;
  if (error != 0) {
    result.failure += ": " + std::error_code(error, std::generic_category()).message();
  }
  if (error == EACCES || error == EPERM || error == EROFS) {
    kind = ErrorKind::PERMISSION;
    result.failure += "; run as a user who may write there, usually root";
  } else if (error == EWOULDBLOCK) {
    kind = ErrorKind::BUSY;
  }
  DBStore::internal::ReportFailure(kind, 0, result.failure);
  return false;
}

// What lies under the root is named by its fixed path, the way to the root by its own.
std::string_view NameInMessages(std::string_view path, std::size_t rootLength) {
  return path.size() > rootLength ? path.substr(rootLength) : path;
}

bool IsDirectory(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool MakeDirectory(const std::string& path, std::string_view name, Result& result) {
  if (IsDirectory(path)) {
    return true;
  }
  if (mkdir(path.c_str(), kDirectoryMode) == 0) {
    // The mask of the process may have taken more away than the mode says.
    if (chmod(path.c_str(), kDirectoryMode) != 0) {
      return Fail(result, name, "cannot give the directory its mode", errno);
    }
    result.created.push_back(path);
    return true;
  }
  const int error = errno;
  if (error == EEXIST && IsDirectory(path)) {
    return true;  // somebody else was faster
  }
  return Fail(result, name,
              error == EEXIST ? "is in the way of a directory" : "cannot make the directory",
              error == EEXIST ? 0 : error);
}

bool MakeDirectories(const std::string& directory, std::size_t rootLength, Result& result) {
  for (std::size_t end = directory.find('/', 1);; end = directory.find('/', end + 1)) {
    const std::string path = directory.substr(0, end);
    if (!path.empty() && !MakeDirectory(path, NameInMessages(path, rootLength), result)) {
      return false;
    }
    if (end == std::string::npos) {
      return true;
    }
  }
}

// One process at a time. The lock is on the directory, which nobody has to make first and which
// ends with the process that holds it.
bool LockDirectory(const FileDescriptor& directory, std::string_view name, Result& result) {
  constexpr std::chrono::milliseconds kPause(10);
  const auto end =
      std::chrono::steady_clock::now() + std::chrono::milliseconds(DBStore::kWaitLimit);
  while (flock(directory.Number(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EINTR) {
      continue;
    }
    if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= end) {
      return Fail(result, name, "another process is making the databases", errno);
    }
    std::this_thread::sleep_for(kPause);
  }
  return true;
}

bool Exists(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 || errno != ENOENT;
}

void RemoveDraft(const std::string& draft) {
  for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
    unlink((draft + suffix).c_str());
  }
}

// Never over a file that is there, whoever made it.
bool GiveName(const std::string& draft, const std::string& path) {
  if (renameat2(AT_FDCWD, draft.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) {
    return true;
  }
  if (errno != EINVAL && errno != ENOSYS) {
    return false;
  }
  // Some file systems cannot do that in one step.
  if (link(draft.c_str(), path.c_str()) != 0) {
    return false;
  }
  unlink(draft.c_str());
  return true;
}

// The database gets its name when it is whole, so that a process that is killed while making it
// leaves nothing that could be taken for a store.
bool MakeDatabase(const Layout& layout, const std::string& path, Result& result) {
  const std::string draft = path + ".new";
  RemoveDraft(draft);
  {
    const FileDescriptor file(
        open(draft.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_NOFOLLOW | O_CLOEXEC, kFileMode));
    if (!file.IsOpen() || fchmod(file.Number(), kFileMode) != 0) {
      return Fail(result, layout.fixedPath, "cannot make the file", errno);
    }
  }
  const int code = DBStore::internal::DefineDatabase(layout, draft);
  if (code != SQLITE_OK) {
    RemoveDraft(draft);
    return Fail(result, layout.fixedPath,
                std::string("cannot make the database: ") + sqlite3_errstr(code), 0);
  }
  if (!GiveName(draft, path)) {
    const int error = errno;
    RemoveDraft(draft);
    return Fail(result, layout.fixedPath, "cannot give the database its name", error);
  }
  result.created.push_back(path);
  return true;
}

bool EnsureDatabase(const Layout& layout, const std::string& directory, Result& result) {
  const std::string fixedPath = layout.fixedPath;
  const std::string path = directory + fixedPath.substr(fixedPath.rfind('/'));
  const bool existed = Exists(path);
  if (!existed && !MakeDatabase(layout, path, result)) {
    return false;
  }
  // Opening it for writing also makes the files that readers without the right to write need beside
  // it.
  if (!DBStore::internal::OpenDatabase(layout, true)) {
    result.ok = false;
    result.failure = DBStore::GetLastError().message;
    return false;
  }
  if (existed) {
    result.unchanged.push_back(path);
  }
  return true;
}

}  // namespace

Result Initialize() {
  Result result;
  const Layout& store = DBStore::internal::CurrentStoreLayout();
  const Layout& schemaStore = DBStore::internal::SchemaStoreLayout();
  const std::string root = HostPaths::GetRoot();
  const std::string storePath = HostPaths::Resolve(store.fixedPath);
  const std::string directory = storePath.substr(0, storePath.rfind('/'));
  const std::string_view name = NameInMessages(directory, root.size());

  if (DBStore::internal::OpenDatabases::AreOutOfReach()) {
    Fail(result, name, DBStore::internal::OpenDatabases::kOutOfReach, 0);
    return result;
  }
  if (!MakeDirectories(directory, root.size(), result)) {
    return result;
  }
  const FileDescriptor handle(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!handle.IsOpen()) {
    Fail(result, name, "cannot open the directory", errno);
    return result;
  }
  if (!LockDirectory(handle, name, result) || !EnsureDatabase(store, directory, result) ||
      !EnsureDatabase(schemaStore, directory, result)) {
    return result;
  }
  if (!result.created.empty() && fsync(handle.Number()) != 0) {
    Fail(result, name, "cannot make the new files durable", errno);
  }
  return result;
}

}  // namespace HostSetup
