#include "editing/private_file.h"

#include "descriptor.h"
#include "failure.h"
#include "given/input_file.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace tarnctl {
namespace {

[[noreturn]] void FailToWrite(const std::string& path) {
  throw ToolError(ExitCode::FAILED,
                  "cannot write " + path + ": " + std::generic_category().message(errno));
}

std::string MakeDirectory() {
  const char* const parent = std::getenv("TMPDIR");
  std::string path = parent == nullptr || *parent == '\0' ? "/tmp" : parent;
  path += "/tarnctl-edit-XXXXXX";
  if (::mkdtemp(path.data()) == nullptr) {
    FailToWrite(path);
  }
  return path;
}

}  // namespace

PrivateFile::PrivateFile(const std::string& name)
    : directory_(MakeDirectory()), path_(directory_ + "/" + name) {}

PrivateFile::~PrivateFile() {
  if (!isKept_) {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
  }
}

void PrivateFile::Write(const std::string& text) const {
  const Descriptor file(
      ::open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file.IsOpen()) {
    FailToWrite(path_);
  }
  for (std::string_view rest = text; !rest.empty();) {
    const ssize_t length = ::write(file.Get(), rest.data(), rest.size());
    if (length < 0 && errno != EINTR) {
      FailToWrite(path_);
    }
    rest.remove_prefix(length < 0 ? 0 : static_cast<std::size_t>(length));
  }
}

std::string PrivateFile::Read() const {
  return ReadInput(path_);
}

}  // namespace tarnctl
