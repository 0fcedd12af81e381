#include "platform/upgrade_context.h"

#include "platform/host_paths.h"

#include "json/text_file.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace {

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Taking it for 0 would confirm what must not be confirmed.
[[noreturn]] void Fail(const std::string& what) {
  throw std::runtime_error(std::string("Upgrade context ") + HostPaths::kUpgradeContext + " " +
                           what);
}

// Every read asks for the file: a thread puts its path together once. Of no more than a text, since a thread's
// last call may come when it has destroyed what it had.
struct KnownPath {
  unsigned rootGeneration = 0;
  std::array<char, 256> text = {};
};
constinit thread_local KnownPath known;

Json::TextFile ReadContext(std::size_t longest) {
  // Before the path, which may be of a later one.
  const unsigned generation = HostPaths::RootGeneration();
  if (known.rootGeneration != generation) {
    const std::string path = HostPaths::Resolve(HostPaths::kUpgradeContext);
    if (path.size() >= known.text.size()) {
      return Json::ReadTextFile(path, longest);
    }
    known.text[path.copy(known.text.data(), path.size())] = '\0';
    known.rootGeneration = generation;
  }
  return Json::ReadTextFile(known.text.data(), longest);
}

}  // namespace

int GetUpgradeCtx() {
  constexpr std::size_t kLongest = 63;
  const Json::TextFile content = ReadContext(kLongest);
  if (content.error == ENOENT || content.error == ENOTDIR) {
    return 0;
  }
  if (!content) {
    Fail("cannot be read: " + content.Reason());
  }
  const std::string_view text = Trimmed(content.text);
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) {
    Fail("does not hold a decimal number");
  }
  return value;
}
