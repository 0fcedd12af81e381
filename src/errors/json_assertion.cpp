#include "tarnconfigstore/exceptions.h"

#include "platform/json.h"

#include <string>

namespace Json {

void RaiseAssertion(const char* file, int line, const char* condition) {
  const std::string message =
      "JSON error:\"" + std::string(file) + "\":" + std::to_string(line) + ": " + condition;
  throw TarnConfigStore::ConfigStoreException(TarnConfigStore::CS_JSON_ASSERTION, message.c_str());
}

}  // namespace Json
