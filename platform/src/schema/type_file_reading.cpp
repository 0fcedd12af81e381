// Finding type files, wherever they lie.
#include "platform/type_files.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

namespace TypeFiles {
namespace {

constexpr std::string_view kSuffix = ".json";

std::vector<std::string> Failed(std::error_code& error) {
  error.assign(errno, std::generic_category());
  return {};
}

}  // namespace

// By the system's own calls: those of the standard library end the process where there is no memory.
std::vector<std::string> FilesAt(const std::string& path, std::error_code& error) {
  error.clear();
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    return Failed(error);
  }
  if (!S_ISDIR(status.st_mode)) {
    return {path};
  }
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(path.c_str()), closedir);
  if (!directory) {
    return Failed(error);
  }
  const std::string folder = path.ends_with('/') ? path : path + '/';
  std::vector<std::string> files;
  errno = 0;
  while (const dirent* const entry = readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    if (name.ends_with(kSuffix) && name != kSuffix) {
      files.push_back(std::string(folder).append(name));
    }
    errno = 0;
  }
  if (errno != 0) {
    return Failed(error);
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace TypeFiles
