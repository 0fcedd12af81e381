#include "platform/regular_file.h"
#include "platform/type_files.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace TypeFiles {
namespace {

constexpr std::size_t kMaxFileSize = std::size_t{16} * 1024 * 1024;
constexpr std::string_view kSuffix = ".json";

}  // namespace

// By the system's own calls: those of the standard library end the process where there is no memory.
std::optional<std::vector<std::string>> FilesAt(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    return std::nullopt;
  }
  if (!S_ISDIR(status.st_mode)) {
    return std::vector<std::string>{path};
  }
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(path.c_str()), closedir);
  if (!directory) {
    return std::nullopt;
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
    return std::nullopt;
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::optional<std::string> ReadText(const std::string& path) {
  std::string text;
  return ReadRegularFile(path, kMaxFileSize, text) ? std::optional(std::move(text)) : std::nullopt;
}

}  // namespace TypeFiles
