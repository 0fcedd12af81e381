#include "fuzz_target.h"

#include "platform/logger.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

namespace Fuzz {
namespace {

// Made when the first target is.
std::map<std::string, Run>& Targets() {
  static std::map<std::string, Run> targets;
  return targets;
}

Run ChosenTarget() {
  const char* const name = std::getenv("TARN_FUZZ_TARGET");
  const auto found = Targets().find(name == nullptr ? "" : name);
  if (found == Targets().end()) {
    std::fputs("TARN_FUZZ_TARGET has to name one of:", stderr);
    for (const auto& [known, run] : Targets()) {
      std::fprintf(stderr, " %s", known.c_str());
    }
    std::fputs("\n", stderr);
    std::exit(2);
  }
  // Lines are built and escaped as they would be, and go nowhere; backtraces would take most of the time.
  CSLogger::SetLevel(CSLogger::kWriteCall);
  CSLogger::SetSink([](int, const char*) {});
  return found->second;
}

}  // namespace

Target::Target(const char* name, Run run) {
  Targets().emplace(name, run);
}

void Require(bool condition, const char* what, std::string_view detail) {
  if (!condition) {
    std::fprintf(stderr, "does not hold: %s\n%.*s\n", what, static_cast<int>(detail.size()),
                 detail.data());
    std::abort();
  }
}

unsigned char TakeByte(std::string_view& input) {
  if (input.empty()) {
    return 0;
  }
  const auto byte = static_cast<unsigned char>(input.front());
  input.remove_prefix(1);
  return byte;
}

std::string_view TakeLine(std::string_view& input) {
  const std::string_view line = input.substr(0, input.find('\n'));
  input.remove_prefix(line.size() == input.size() ? line.size() : line.size() + 1);
  return line;
}

}  // namespace Fuzz

// NOLINTNEXTLINE(readability-identifier-naming): the fuzzer calls it by this name.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Fuzz::Run run = Fuzz::ChosenTarget();
  run({reinterpret_cast<const char*>(data), size});
  return 0;
}
