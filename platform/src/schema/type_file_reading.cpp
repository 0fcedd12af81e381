#include "platform/file_descriptor.h"
#include "platform/type_files.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace TypeFiles {
namespace {

constexpr off_t kMaxFileSize = off_t{16} * 1024 * 1024;

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
  // Opening a pipe would wait for its writer.
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status = {};
  if (!file.IsOpen() || fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode) ||
      status.st_size > kMaxFileSize) {
    return std::nullopt;
  }
  std::string text(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t length = 0;
  while (length < text.size()) {
    const ssize_t got = read(file.Number(), text.data() + length, text.size() - length);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got < 0) {
      return std::nullopt;
    }
    if (got == 0) {
      break;
    }
    length += static_cast<std::size_t>(got);
  }
  text.resize(length);
  return text;
}

}  // namespace TypeFiles
