#include "json/json.h"

#include <atomic>
#include <stdexcept>
#include <string>

namespace Json {
namespace {

std::atomic<AssertionHook> installed{nullptr};

}  // namespace

void SetAssertionHook(AssertionHook hook) noexcept {
  installed.store(hook, std::memory_order_relaxed);
}

void RaiseAssertion(const char* file, int line, const char* condition) {
  if (const AssertionHook hook = installed.load(std::memory_order_relaxed)) {
    hook(file, line, condition);
  }
  throw std::logic_error("JSON error:\"" + std::string(file) + "\":" + std::to_string(line) + ": " +
                         condition);
}

}  // namespace Json
