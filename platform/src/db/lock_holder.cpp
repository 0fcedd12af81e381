#include "db/lock_holder.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <set>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <vector>

namespace DBStore::internal {
namespace {

// A process names itself: nothing but letters reaches a terminal.
std::string NameOf(long process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  std::getline(file, name);
  std::replace_if(
      name.begin(), name.end(), [](char letter) { return letter < ' ' || letter > '~'; }, '?');
  return name;
}

// A line of proc(5)'s locks: "1: POSIX  ADVISORY  WRITE 12 fe:01:131 0 EOF".
struct Lock {
  char kind[8];
  char mode[8];
  long process;  // 0 where it is of another PID namespace, -1 where an open file has the lock
  unsigned deviceMajor;
  unsigned deviceMinor;
  unsigned long inode;
  unsigned long begin;

  bool Is(const char* wanted) const { return std::strcmp(kind, wanted) == 0; }
  bool IsOf(const struct stat& status) const {
    return inode == status.st_ino && deviceMajor == major(status.st_dev) &&
           deviceMinor == minor(status.st_dev);
  }
};

// Those who only wait for a lock are passed over.
std::vector<Lock> LocksHeld() {
  std::vector<Lock> held;
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    Lock lock{};
    constexpr int kFields = 7;
    if (std::sscanf(line.c_str(), "%*d: %7s %*s %7s %ld %x:%x:%lu %lu", lock.kind, lock.mode,
                    &lock.process, &lock.deviceMajor, &lock.deviceMinor, &lock.inode,
                    &lock.begin) == kFields) {
      held.push_back(lock);
    }
  }
  return held;
}

std::string Described(long process) {
  const std::string name = NameOf(process);
  std::string text = "process " + std::to_string(process);
  return name.empty() ? text : text.append(" (").append(name).append(")");
}

// The locks of the engine that nobody else may have at the same time. In the index of the log they
// are of those who write it, shorten it and mend it; in the database, of who writes without a log.
bool KeepsOthersOut(const Lock& lock, bool isIndex) {
  constexpr unsigned long kFirstOfReaders = 123;
  return std::strcmp(lock.mode, "WRITE") == 0 && (!isIndex || lock.begin < kFirstOfReaders);
}

}  // namespace

std::string LockHolder(int descriptor) {
  struct stat status {};
  if (fstat(descriptor, &status) == 0) {
    for (const Lock& lock : LocksHeld()) {
      if (lock.Is("FLOCK") && lock.process > 0 && lock.IsOf(status)) {
        return Described(lock.process);
      }
    }
  }
  return "a process that is not to be seen from here (look for inode " +
         std::to_string(status.st_ino) + " in /proc/locks)";
}

std::string WhoLocksDatabase(const std::string& path) {
  struct stat database {};
  struct stat index {};
  const bool hasDatabase = stat(path.c_str(), &database) == 0;
  const bool hasIndex = stat((path + "-shm").c_str(), &index) == 0;
  std::set<std::string> writers;
  std::set<std::string> readers;
  for (const Lock& lock : LocksHeld()) {
    const bool isOfIndex = hasIndex && lock.IsOf(index);
    if (lock.Is("FLOCK") || !(isOfIndex || (hasDatabase && lock.IsOf(database)))) {
      continue;
    }
    const std::string holder = lock.process == getpid() ? "this process itself"
                               : lock.process > 0       ? Described(lock.process)
                                                  : "a process that is not to be seen from here";
    if (KeepsOthersOut(lock, isOfIndex)) {
      writers.insert(holder);
    } else if (!hasIndex && lock.process != getpid()) {  // with a log, readers are in nobody's way
      readers.insert(holder);
    }
  }
  const std::set<std::string>& told = writers.empty() ? readers : writers;
  if (told.empty()) {
    return "nobody is seen from here who has it locked now: try again";
  }
  std::string names;
  for (const std::string& holder : told) {
    names.append(names.empty() ? "" : ", ").append(holder);
  }
  return names + (writers.empty() ? " reads it" : " has it locked for writing") +
         ": wait for that to end, or see what is being done there";
}

}  // namespace DBStore::internal
