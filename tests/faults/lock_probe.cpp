#include "faults/lock_probe.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Faults {
namespace {

struct Range {
  const char* suffix;
  off_t start;
  off_t length;
  const char* what;
};

// "The Locking Protocol" of SQLite's file format for logs: eight bytes of the index, of which the last
// tells of users only; PENDING_BYTE and the next one of the database.
constexpr Range kRanges[] = {{"-shm", 120, 1, "the lock for writing"},
                             {"-shm", 121, 2, "the lock of a checkpoint"},
                             {"-shm", 123, 5, "the lock of a reader"},
                             {"", 0x40000000, 2, "the lock of a rollback journal's writer"}};

}  // namespace

// The one of the file that has the name now.
int LockProbe::Descriptor(const std::string& path) {
  struct stat named {};
  if (stat(path.c_str(), &named) != 0) {
    return -1;
  }
  for (const int descriptor : open_) {
    struct stat known {};
    if (fstat(descriptor, &known) == 0 && known.st_ino == named.st_ino) {
      return descriptor;
    }
  }
  const int descriptor = open(path.c_str(), O_RDWR | O_CLOEXEC);
  if (descriptor >= 0) {
    open_.push_back(descriptor);
  }
  return descriptor;
}

std::string LockProbe::Held() {
  for (const Range& range : kRanges) {
    const int descriptor = Descriptor(path_ + range.suffix);
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = range.start;
    lock.l_len = range.length;
    if (descriptor >= 0 && fcntl(descriptor, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK) {
      return path_ + ": " + range.what + " is held";
    }
  }
  return {};
}

void LockProbe::Forget() noexcept {
  for (const int descriptor : open_) {
    close(descriptor);
  }
  open_.clear();
}

}  // namespace Faults
