#include "platform/regular_file.h"
#include "platform/type_files.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace TypeFiles {
namespace {

constexpr std::size_t kMaxFileSize = std::size_t{16} * 1024 * 1024;

}  // namespace

std::optional<std::vector<std::string>> FilesAt(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (error || !fs::exists(status)) {
    return std::nullopt;
  }
  if (!fs::is_directory(status)) {
    return std::vector<std::string>{path};
  }
  std::vector<std::string> files;
  fs::directory_iterator entry(path, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    if (entry->path().extension() == ".json") {
      files.push_back(entry->path().string());
    }
  }
  if (error) {
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
