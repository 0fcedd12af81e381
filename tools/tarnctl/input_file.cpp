#include "input_file.h"

#include "failure.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <sys/stat.h>
#include <system_error>

namespace tarnctl {
namespace {

std::string NameOf(const std::string& path) {
  return path == "-" ? std::string("standard input") : path;
}

[[noreturn]] void RaiseUnreadable(const std::string& path, int error) {
  throw ToolError(ExitCode::FAILED,
                  "cannot read " + NameOf(path) + ": " + std::generic_category().message(error),
                  TarnConfigStore::CS_JSON_FILE_FAILED);
}

void RequireSize(std::uintmax_t size, std::size_t largest, const std::string& path) {
  if (size > largest) {
    throw ToolError(ExitCode::INVALID,
                    NameOf(path) + " is larger than " + std::to_string(largest) + " bytes",
                    TarnConfigStore::CS_JSON_PARSE_FAILED);
  }
}

// A file tells its size before it is read, a pipe does not.
std::string ReadAll(std::FILE* stream, std::size_t largest, const std::string& path) {
  struct stat status {};
  if (::fstat(::fileno(stream), &status) == 0 && S_ISREG(status.st_mode)) {
    RequireSize(static_cast<std::uintmax_t>(status.st_size), largest, path);
  }
  std::string text;
  std::array<char, 16384> block;
  while (const std::size_t length = std::fread(block.data(), 1, block.size(), stream)) {
    text.append(block.data(), length);
    RequireSize(text.size(), largest, path);
  }
  if (std::ferror(stream) != 0) {
    RaiseUnreadable(path, errno);
  }
  return text;
}

struct CloseFile {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};

}  // namespace

std::string ReadInput(const std::string& path, std::size_t largest) {
  if (path == "-") {
    return ReadAll(stdin, largest, path);
  }
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
  if (!file) {
    RaiseUnreadable(path, errno);
  }
  return ReadAll(file.get(), largest, path);
}

bool IsYamlFile(std::string_view path) {
  return path.ends_with(".yaml") || path.ends_with(".yml");
}

}  // namespace tarnctl
