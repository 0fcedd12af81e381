// The system calls on files of this program and all that it loads: SQLite's and our own alike.
#include "faults/injected.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <initializer_list>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace {

using Faults::Kind;

bool Fails(std::initializer_list<Kind> kinds) noexcept {
  for (const Kind kind : kinds) {
    if (Faults::Strikes(kind)) {
      errno = kind == Kind::NO_SPACE ? ENOSPC : kind == Kind::INTERRUPTED ? EINTR : EIO;
      return true;
    }
  }
  return false;
}

std::size_t Moved(std::size_t size) noexcept {
  return size > 1 && Faults::Strikes(Kind::SHORT) ? size / 2 : size;
}

constexpr auto kLooks = {Kind::IO_ERROR};
constexpr auto kWaits = {Kind::IO_ERROR, Kind::INTERRUPTED};
constexpr auto kGrows = {Kind::IO_ERROR, Kind::NO_SPACE};
constexpr auto kWrites = {Kind::IO_ERROR, Kind::NO_SPACE, Kind::INTERRUPTED};

}  // namespace

// What stands behind a call here.
#define NEXT(name) \
  static const auto next = reinterpret_cast<decltype(&::name)>(dlsym(RTLD_NEXT, #name))
#define OPEN(name)                                                                          \
  int name(const char* path, int flags, ...) {                                              \
    NEXT(name);                                                                             \
    va_list arguments;                                                                      \
    va_start(arguments, flags);                                                             \
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;             \
    va_end(arguments);                                                                      \
    return Fails((flags & O_CREAT) != 0 ? kWrites : kWaits) ? -1 : next(path, flags, mode); \
  }
#define CALL(name, kinds, parameters, arguments, qualifier) \
  int name parameters qualifier {                           \
    NEXT(name);                                             \
    return Fails(kinds) ? -1 : next arguments;              \
  }
#define MOVE(name, kinds, block, offset, last)                      \
  ssize_t name(int file, block bytes, std::size_t size offset) {    \
    NEXT(name);                                                     \
    return Fails(kinds) ? -1 : next(file, bytes, Moved(size) last); \
  }
#define COMMA ,

extern "C" {

OPEN(open)
OPEN(open64)
MOVE(read, kWaits, void*, , )
MOVE(write, kWrites, const void*, , )
MOVE(pread, kWaits, void*, COMMA off_t offset, COMMA offset)
MOVE(pread64, kWaits, void*, COMMA off64_t offset, COMMA offset)
MOVE(pwrite, kWrites, const void*, COMMA off_t offset, COMMA offset)
MOVE(pwrite64, kWrites, const void*, COMMA off64_t offset, COMMA offset)
CALL(fsync, kWrites, (int file), (file), )
CALL(fdatasync, kWrites, (int file), (file), )
CALL(ftruncate, kWrites, (int file, off_t size), (file, size), noexcept)
CALL(ftruncate64, kWrites, (int file, off64_t size), (file, size), noexcept)
CALL(stat, kLooks, (const char* path, struct stat* status), (path, status), noexcept)
CALL(lstat, kLooks, (const char* path, struct stat* status), (path, status), noexcept)
CALL(fstat, kLooks, (int file, struct stat* status), (file, status), noexcept)
CALL(stat64, kLooks, (const char* path, struct stat64* status), (path, status), noexcept)
CALL(lstat64, kLooks, (const char* path, struct stat64* status), (path, status), noexcept)
CALL(fstat64, kLooks, (int file, struct stat64* status), (file, status), noexcept)
CALL(faccessat, kLooks, (int at, const char* path, int right, int flags), (at, path, right, flags),
     noexcept)
CALL(access, kLooks, (const char* path, int right), (path, right), noexcept)
CALL(mkdir, kGrows, (const char* path, mode_t mode), (path, mode), noexcept)
CALL(rename, kGrows, (const char* from, const char* to), (from, to), noexcept)
CALL(renameat2, kGrows, (int at, const char* from, int there, const char* to, unsigned flags),
     (at, from, there, to, flags), noexcept)
CALL(link, kGrows, (const char* from, const char* to), (from, to), noexcept)
CALL(unlink, kLooks, (const char* path), (path), noexcept)
CALL(chmod, kLooks, (const char* path, mode_t mode), (path, mode), noexcept)
CALL(fchmod, kLooks, (int file, mode_t mode), (file, mode), noexcept)
CALL(flock, kWaits, (int file, int operation), (file, operation), noexcept)

// Locks are not among the calls that fail: SQLite takes one that fails for one that somebody holds.

void* mmap64(void* address, std::size_t size, int protection, int flags, int file,
             off64_t offset) noexcept {
  NEXT(mmap64);
  return file >= 0 && Fails(kLooks) ? MAP_FAILED
                                    : next(address, size, protection, flags, file, offset);
}

char* realpath(const char* path, char* resolved) noexcept {
  NEXT(realpath);
  return Fails(kLooks) ? nullptr : next(path, resolved);
}

DIR* opendir(const char* path) {
  NEXT(opendir);
  return Fails(kWaits) ? nullptr : next(path);
}

dirent* readdir(DIR* directory) {
  NEXT(readdir);
  return Fails(kLooks) ? nullptr : next(directory);
}

// A restore waits for ticks of the coarse clock, in which others look at what it has begun. Here nobody
// else has the stores open, and restores are begun by the thousand.
int clock_getres(clockid_t clock, timespec* resolution) noexcept {
  NEXT(clock_getres);
  if (clock != CLOCK_MONOTONIC_COARSE) {
    return next(clock, resolution);
  }
  *resolution = {};
  return 0;
}

}  // extern "C"
