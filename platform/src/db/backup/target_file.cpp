#include "db/backup/target_file.h"

#include "platform/host_paths.h"

#include "db/backup/steps.h"
#include "db/raising.h"

#include <sodium.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace DBStore::internal {
namespace {

constexpr mode_t kMode = 0600;

// What would take the name of a store's file, or of one that the engine keeps beside it, would be
// taken for it.
void RefuseStoresDirectory(int directory, const std::string& path) {
  const std::string store = HostPaths::Resolve(HostPaths::kStore);
  struct stat target {};
  struct stat stores {};
  if (fstat(directory, &target) == 0 &&
      stat(store.substr(0, store.rfind('/')).c_str(), &stores) == 0 &&
      target.st_dev == stores.st_dev && target.st_ino == stores.st_ino) {
    Raise(ErrorKind::OTHER, 0,
          path + ": lies in the directory of the stores themselves; write the backup elsewhere");
  }
}

}  // namespace

TargetFile::TargetFile(const std::string& path, bool replace) : path_(path), replace_(replace) {
  const std::size_t slash = path.rfind('/');
  const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  name_ = slash == std::string::npos ? path : path.substr(slash + 1);
  if (name_.empty() || name_ == "." || name_ == "..") {
    Raise(ErrorKind::OTHER, 0, (path.empty() ? "\"\"" : path) + ": is not the name of a file");
  }
  directory_ = FileDescriptor(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory_.IsOpen()) {
    RaiseSystemError(path, "cannot open its directory", errno);
  }
  RefuseStoresDirectory(directory_.Number(), path);
  CheckPlace();
}

TargetFile::~TargetFile() {
  RemoveDraft();
}

void TargetFile::RemoveDraft() noexcept {
  if (!draft_.empty()) {
    unlinkat(directory_.Number(), draft_.c_str(), 0);
    draft_.clear();
  }
}

void TargetFile::CheckPlace() const {
  struct stat status {};
  if (fstatat(directory_.Number(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno != ENOENT) {
      RaiseSystemError(path_, "cannot be looked at", errno);
    }
    return;
  }
  if (!S_ISREG(status.st_mode)) {
    Raise(ErrorKind::OTHER, 0,
          path_ +
              (S_ISDIR(status.st_mode)   ? ": is a directory"
               : S_ISLNK(status.st_mode) ? ": is a symbolic link, which is not followed"
                                         : ": is a special file") +
              "; write the backup elsewhere");
  }
  if (!replace_) {
    Raise(ErrorKind::OTHER, 0, path_ + ": exists; give another name, or ask to replace it");
  }
}

FileDescriptor TargetFile::Make() {
  Step("making the file");
  RemoveDraft();
  std::array<unsigned char, 8> random;
  randombytes_buf(random.data(), random.size());
  std::array<char, 2 * random.size() + 1> digits;
  sodium_bin2hex(digits.data(), digits.size(), random.data(), random.size());
  std::string draft = std::string(".tarn-backup-") + digits.data();
  FileDescriptor file(openat(directory_.Number(), draft.c_str(),
                             O_CREAT | O_EXCL | O_RDWR | O_NOFOLLOW | O_CLOEXEC, kMode));
  if (!file.IsOpen()) {
    RaiseSystemError(path_, "cannot make the file", errno);
  }
  draft_ = std::move(draft);
  // The mask of the process may have taken from the owner's rights.
  if (fchmod(file.Number(), kMode) != 0) {
    RaiseSystemError(path_, "cannot give the file its mode", errno);
  }
  return file;
}

void TargetFile::GiveName() {
  Step("giving the file its name");
  CheckPlace();
  int status = renameat2(directory_.Number(), draft_.c_str(), directory_.Number(), name_.c_str(),
                         replace_ ? 0 : RENAME_NOREPLACE);
  if (status != 0 && !replace_ && (errno == EINVAL || errno == ENOSYS)) {
    // Some file systems cannot refuse in one step.
    status = linkat(directory_.Number(), draft_.c_str(), directory_.Number(), name_.c_str(), 0);
    if (status == 0) {
      unlinkat(directory_.Number(), draft_.c_str(), 0);
    }
  }
  if (status != 0) {
    RaiseSystemError(path_, "cannot give the file its name", errno);
  }
  draft_.clear();
  if (fsync(directory_.Number()) != 0) {
    RaiseSystemError(path_, "its name cannot be made durable", errno);
  }
}

}  // namespace DBStore::internal
