#include "objects/argument_errors.h"

#include "errors/raise.h"

namespace TarnConfigStore {

void ThrowArgument(const std::string& message) {
  throw InvalidArgumentException(CS_GENERIC, message.c_str());
}

void ThrowInvalidType(std::string_view key) {
  throw InvalidTypeException(CS_GENERIC,
                             std::string("Invalid type specified for: ").append(key).c_str());
}

}  // namespace TarnConfigStore
