#include "db/lock_holder.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>

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

// A line of proc(5)'s locks: "1: FLOCK  ADVISORY  WRITE 12 fe:01:131 0 EOF".
long HolderIn(const std::string& line, const struct stat& status) {
  long process = 0;
  unsigned deviceMajor = 0;
  unsigned deviceMinor = 0;
  unsigned long inode = 0;
  if (std::sscanf(line.c_str(), "%*d: FLOCK %*s %*s %ld %x:%x:%lu", &process, &deviceMajor,
                  &deviceMinor, &inode) != 4) {
    return 0;  // also who only waits for a lock
  }
  const bool isIt = inode == status.st_ino && deviceMajor == major(status.st_dev) &&
                    deviceMinor == minor(status.st_dev);
  return isIt ? process : 0;
}

}  // namespace

std::string LockHolder(int descriptor) {
  struct stat status {};
  if (fstat(descriptor, &status) == 0) {
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
      if (const long process = HolderIn(line, status); process > 0) {
        const std::string name = NameOf(process);
        std::string text = "process " + std::to_string(process);
        return name.empty() ? text : text.append(" (").append(name).append(")");
      }
    }
  }
  return "a process that is not to be seen from here (look for inode " +
         std::to_string(status.st_ino) + " in /proc/locks)";
}

}  // namespace DBStore::internal
