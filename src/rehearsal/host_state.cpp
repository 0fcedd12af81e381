#include "rehearsal/host_state.h"

#include "tarnconfigstore/file.h"

#include "platform/host_copy.h"
#include "platform/host_paths.h"

#include "errors/platform_failures.h"
#include "persistence/connection.h"

namespace TarnConfigStore {
namespace {

RowsById ReadRows() {
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  RowsById rows;
  ForEachStoredType(connection, [&](const ConfigStoreObjectId& type) {
    ForEachStoredRow(type, connection, [&](const StoredRow& row) {
      ConfigStoreObjectId id = type;
      id.instanceId = row.instanceId;
      rows.emplace(std::move(id), row);
    });
  });
  return rows;
}

std::vector<PendingChange> ReadWaiting(bool reveal) {
  PendingOptions options;
  options.reveal = reveal;
  return ListPendingChanges(options);
}

}  // namespace

HostState ReadHostState() {
  HostState state;
  for (const char* database : {HostPaths::kStore, HostPaths::kSchemaStore}) {
    if (!FileExists(HostPaths::Resolve(database))) {
      return state;
    }
  }
  state.rows = ReadRows();
  state.waiting = ReadWaiting(true);
  state.masked = state.waiting.empty() ? state.waiting : ReadWaiting(false);
  WithStoreFailures([&state] {
    for (TypeFiles::KeptType& type : TypeFiles::ReadAll()) {
      const TarnSchemaStore::TypeName name = type.name;
      state.types.emplace(name, std::move(type));
    }
    state.entries = HostCopy::ReadEntries();
  });
  return state;
}

}  // namespace TarnConfigStore
