// The line that each store operation starts with.
#pragma once

#include "tarnconfigstore/object_id.h"

namespace TarnConfigStore {

/// Logs "OPERATION : IDENTIFIER, context: N". Programs that read the log know a call with context 0
/// by "context: 1", and any other by "context: 0".
void LogStoreCall(int priority, const char* operation, const ConfigStoreObjectId& id, int context);

}  // namespace TarnConfigStore
