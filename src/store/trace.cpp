#include "store/trace.h"

#include "platform/logger.h"

namespace TarnConfigStore {

void LogStoreCall(int priority, const char* operation, const ConfigStoreObjectId& id, int context) {
  if (CSLogger::IsEnabled(priority)) {
    CSLogger::Log(priority, "%s : %s, context: %d", operation, id.toString().c_str(),
                  context == 0 ? 1 : 0);
  }
}

}  // namespace TarnConfigStore
