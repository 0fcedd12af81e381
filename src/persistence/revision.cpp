#include "persistence/revision.h"

#include "errors/raise.h"
#include "persistence/statements.h"

#include <cstdlib>
#include <string_view>

namespace TarnConfigStore {
namespace {

constexpr int kReadFailed = 1;

int TakeRevision(void* revision, int count, char** values, char** names) {
  constexpr int kDecimal = 10;
  for (int i = 0; i < count; ++i) {
    if (values[i] != nullptr && std::string_view(names[i]) == "Revision") {
      *static_cast<std::int32_t*>(revision) =
          static_cast<std::int32_t>(std::strtol(values[i], nullptr, kDecimal));
    }
  }
  return 0;
}

}  // namespace

std::int32_t GetRevisionInternal(const ConfigStoreObjectId& id,
                                 const DBStore::ConnectionHandle& connection) {
  std::int32_t revision = kDefaultRevision;
  const DBStore::StatementHandle statement =
      READ_REVISION.PrepareAndBind(connection, id.key, id.group, id.component, id.instanceId);
  if (DBStore::ExecuteStmt(connection, statement, TakeRevision, &revision, DBStore::kWaitLimit) ==
      kReadFailed) {
    ThrowFailure("GetRevision command failed");
  }
  return revision;
}

}  // namespace TarnConfigStore
