#include "errors/raise.h"
#include "json/json.h"

#include <string>

namespace TarnConfigStore {
namespace {

void Throw(const char* file, int line, const char* condition) {
  ThrowJsonAssertion("JSON error:\"" + std::string(file) + "\":" + std::to_string(line) + ": " +
                     condition);
}

// Set when the library is loaded, so that the ground floor need not know who stands on it.
[[maybe_unused]] const bool hookIsSet = (Json::SetAssertionHook(Throw), true);

}  // namespace
}  // namespace TarnConfigStore
