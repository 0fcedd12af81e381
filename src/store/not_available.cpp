#include "store/not_available.h"

#include "errors/raise.h"

#include <string>

namespace TarnConfigStore {

void ThrowNotAvailable(const char* operation) {
  ThrowFailure(std::string(operation) + " is not available yet");
}

}  // namespace TarnConfigStore
