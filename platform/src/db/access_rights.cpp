#include "db/access_rights.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace DBStore::internal {
namespace {

bool MayAccess(const std::string& path, int right) {
  return faccessat(AT_FDCWD, path.c_str(), right, AT_EACCESS) == 0;
}

std::string DirectoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::string Lacking(const std::string& right, const std::string& path, const char* mend) {
  std::string text = "user " + std::to_string(geteuid()) + " lacks the right to " + right;
  struct stat status {};
  if (stat(path.c_str(), &status) == 0) {
    char mode[8];
    std::snprintf(mode, sizeof mode, "%04o", static_cast<unsigned>(status.st_mode & 07777));
    text += " (mode " + std::string(mode) + ", owner " + std::to_string(status.st_uid) +
            ", group " + std::to_string(status.st_gid) + ")";
  }
  return text + ": " + mend;
}

}  // namespace

std::string MissingReadRight(const std::string& path) {
  for (std::size_t end = path.find('/', 1); end != std::string::npos;
       end = path.find('/', end + 1)) {
    if (const std::string directory = path.substr(0, end); !MayAccess(directory, X_OK)) {
      return Lacking("search the directory " + directory, directory,
                     "run as its owner or group, or change its mode");
    }
  }
  return Lacking("read it", path, "run as its owner or group, or change its mode");
}

std::string MissingWriteRight(const std::string& path) {
  if (!MayAccess(path, W_OK)) {
    if (errno == EROFS) {
      return "its file system is mounted for reading only: mount it for writing";
    }
    return Lacking("write it", path, "run as its owner, or change its mode");
  }
  for (const char* suffix : {"-wal", "-shm", "-journal"}) {
    const std::string beside = path + suffix;
    if (!MayAccess(beside, W_OK) && errno != ENOENT) {
      return Lacking("write the file " + std::string(suffix) + " beside it", beside,
                     "run as its owner, or change its mode");
    }
  }
  const std::string directory = DirectoryOf(path);
  if (!MayAccess(directory, W_OK)) {
    return Lacking("make files in its directory", directory,
                   "run as its owner, or change its mode");
  }
  return "it was opened for reading only: open the store anew";
}

bool CanBeWritten(const std::string& path) noexcept {
  return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

bool RightsRefuseWriting(const std::string& path) noexcept {
  return !CanBeWritten(path) && (errno == EACCES || errno == EPERM);
}

}  // namespace DBStore::internal
