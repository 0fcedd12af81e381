#include "platform/upgrade_context.h"

#include "platform/file_descriptor.h"
#include "platform/host_paths.h"
#include "platform/logger.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

// The path is built anew only when the root has moved.
const std::string& Path() {
  thread_local unsigned generation = 0;
  thread_local std::string path;
  const unsigned now = HostPaths::RootGeneration();
  if (generation != now) {
    path = HostPaths::Resolve(HostPaths::kUpgradeContext);
    generation = now;
  }
  return path;
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

int GetUpgradeCtx() {
  const FileDescriptor file(open(Path().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file.IsOpen()) {
    if (errno != ENOENT && errno != ENOTDIR) {
      CSLogger::Log(CSLogger::kProblem, "Upgrade context %s cannot be read: %s",
                    HostPaths::kUpgradeContext, std::strerror(errno));
    }
    return 0;
  }
  char buffer[64];
  ssize_t length = -1;
  do {
    length = read(file.Number(), buffer, sizeof buffer);
  } while (length < 0 && errno == EINTR);
  if (length < 0) {
    CSLogger::Log(CSLogger::kProblem, "Upgrade context %s cannot be read: %s",
                  HostPaths::kUpgradeContext, std::strerror(errno));
    return 0;
  }
  const std::string_view text = Trimmed({buffer, static_cast<std::size_t>(length)});
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) {
    CSLogger::Log(CSLogger::kProblem,
                  "Upgrade context %s does not hold a decimal number; taken as 0",
                  HostPaths::kUpgradeContext);
    return 0;
  }
  return value;
}
