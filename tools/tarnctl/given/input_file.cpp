#include "given/input_file.h"

#include "failure.h"
#include "json/text_file.h"

#include <array>
#include <cerrno>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tarnctl {
namespace {

[[noreturn]] void RaiseUnreadable(const std::string& path, const std::string& reason) {
  throw ToolError(ExitCode::FAILED, "cannot read " + NameOfInput(path) + ": " + reason,
                  TarnConfigStore::CS_JSON_FILE_FAILED);
}

[[noreturn]] void RaiseTooLarge(const std::string& path, std::size_t largest) {
  throw ToolError(ExitCode::INVALID,
                  NameOfInput(path) + " is larger than " + std::to_string(largest) + " bytes",
                  TarnConfigStore::CS_JSON_PARSE_FAILED);
}

// Whoever feeds standard input may take any time. It is read past its end never: a terminal gives more
// after one.
std::string ReadStandardInput(std::size_t largest) {
  std::string text;
  std::array<char, 16384> block;
  for (;;) {
    const ssize_t length = ::read(STDIN_FILENO, block.data(), block.size());
    if (length == 0) {
      return text;
    }
    if (length < 0 && errno != EINTR) {
      RaiseUnreadable("-", std::generic_category().message(errno));
    }
    text.append(block.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    if (text.size() > largest) {
      RaiseTooLarge("-", largest);
    }
  }
}

}  // namespace

std::string NameOfInput(const std::string& path) {
  return path == "-" ? std::string("standard input") : path;
}

std::string ReadInput(const std::string& path, std::size_t largest) {
  if (path == "-") {
    return ReadStandardInput(largest);
  }
  Json::TextFile file = Json::ReadTextFile(path, largest);
  if (file.error == EFBIG) {
    RaiseTooLarge(path, largest);
  }
  if (!file) {
    RaiseUnreadable(path, file.error == ENOTSUP
                              ? "it is no regular file; \"-\" reads what standard input gives"
                              : file.Reason());
  }
  return std::move(file.text);
}

bool IsYamlFile(std::string_view path) {
  return path.ends_with(".yaml") || path.ends_with(".yml");
}

}  // namespace tarnctl
