#include "tarnconfigstore/file.h"

#include <sys/stat.h>

namespace TarnConfigStore {

bool FileExists(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0;
}

}  // namespace TarnConfigStore
