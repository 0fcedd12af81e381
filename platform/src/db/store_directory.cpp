#include "db/store_directory.h"

#include "platform/db_store.h"
#include "platform/host_paths.h"

#include "db/lock_holder.h"
#include "db/raising.h"

#include <climits>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace DBStore::internal {
namespace {

constexpr mode_t kDirectoryMode = 0755;

std::string DirectoryPath() {
  const std::string path = HostPaths::Resolve(HostPaths::kStore);
  return path.substr(0, path.rfind('/'));
}

// What lies under the root is named by its fixed path, the way to the root by its own.
std::string_view NameInMessages(std::string_view path, std::size_t rootLength) {
  return path.size() > rootLength ? path.substr(rootLength) : path;
}

bool IsDirectory(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

void MakeDirectory(const std::string& path, std::string_view name, std::vector<std::string>& made) {
  if (IsDirectory(path)) {
    return;
  }
  if (mkdir(path.c_str(), kDirectoryMode) == 0) {
    // The mask of the process may have taken more away than the mode says.
    if (chmod(path.c_str(), kDirectoryMode) != 0) {
      RaiseSystemError(name, "cannot give the directory its mode", errno);
    }
    made.push_back(path);
    return;
  }
  const int error = errno;
  if (error == EEXIST && IsDirectory(path)) {
    return;  // somebody else was faster
  }
  RaiseSystemError(name,
                   error == EEXIST ? "is in the way of a directory" : "cannot make the directory",
                   error == EEXIST ? 0 : error);
}

}  // namespace

void StoreDirectory::Make(std::vector<std::string>& made) {
  const std::size_t rootLength = HostPaths::GetRoot().size();
  const std::string directory = DirectoryPath();
  for (std::size_t end = directory.find('/', 1);; end = directory.find('/', end + 1)) {
    const std::string path = directory.substr(0, end);
    if (!path.empty()) {
      MakeDirectory(path, NameInMessages(path, rootLength), made);
    }
    if (end == std::string::npos) {
      return;
    }
  }
}

StoreDirectory::StoreDirectory(bool (*isNeedless)() noexcept)
    : path_(DirectoryPath()), directory_(open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  const std::string_view name = NameInMessages(path_, HostPaths::GetRoot().size());
  if (!directory_.IsOpen()) {
    RaiseSystemError(name, "cannot open the directory", errno);
  }
  constexpr std::chrono::milliseconds kPause(10);
  const auto end =
      std::chrono::steady_clock::now() + std::chrono::milliseconds(DBStore::kWaitLimit);
  while (flock(directory_.Number(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EINTR) {
      continue;
    }
    if (errno != EWOULDBLOCK) {
      RaiseSystemError(name, "cannot lock the directory", errno);
    }
    if (std::chrono::steady_clock::now() >= end) {
      // Whoever may open the directory may lock it.
      Raise(ErrorKind::BUSY, 0,
            std::string(name) + ": " + LockHolder(directory_.Number()) +
                " has kept the directory locked for " + std::to_string(kWaitLimit / 1000) +
                " s; try again, and end it if it is not making or restoring the databases");
    }
    if (isNeedless != nullptr && isNeedless()) {
      return;
    }
    std::this_thread::sleep_for(kPause);
  }
  isHeld_ = true;
}

StoreDirectory::~StoreDirectory() {
  // Not by closing alone: somebody may have a copy of the descriptor.
  if (isHeld_) {
    flock(directory_.Number(), LOCK_UN);
  }
}

std::string StoreDirectory::PathOf(const char* fixedPath) const {
  const std::string_view fixed = fixedPath;
  return path_ + std::string(fixed.substr(fixed.rfind('/')));
}

void StoreDirectory::Sync() const {
  if (fsync(directory_.Number()) != 0) {
    RaiseSystemError(NameInMessages(path_, HostPaths::GetRoot().size()),
                     "cannot make the new files durable", errno);
  }
}

FileDescriptor MakeDraft(const std::string& draft, unsigned mode, std::string_view fixedPath) {
  RemoveDraft(draft);
  FileDescriptor file(
      open(draft.c_str(), O_CREAT | O_EXCL | O_RDWR | O_NOFOLLOW | O_CLOEXEC, mode));
  if (!file.IsOpen() || fchmod(file.Number(), mode) != 0) {
    RaiseSystemError(fixedPath, "cannot make the file", errno);
  }
  return file;
}

void RemoveBeside(const std::string& database) noexcept {
  char path[PATH_MAX + 16];
  for (const char* suffix : {"-journal", "-wal", "-shm"}) {
    std::snprintf(path, sizeof path, "%s%s", database.c_str(), suffix);
    unlink(path);
  }
}

void RemoveDraft(const std::string& draft) noexcept {
  unlink(draft.c_str());
  RemoveBeside(draft);
}

bool GiveName(const std::string& draft, const std::string& path) noexcept {
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

}  // namespace DBStore::internal
