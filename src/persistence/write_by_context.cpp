#include "persistence/write_by_context.h"

#include "errors/raise.h"
#include "objects/division.h"
#include "persistence/binder.h"
#include "persistence/statements.h"

#include <string_view>

namespace TarnConfigStore {
namespace {

struct ContextStatements {
  std::string_view write;
  std::string_view update;
};

ContextStatements StatementsOf(UPDATE_CONTEXT context) {
  switch (context) {
    case UPDATE_DURING_UPGRADE:
      return {WRITE_CONTEXT_UPGRADE, UPDATE_CONTEXT_UPGRADE};
    case UPDATE_AUTOMATIC:
      return {WRITE_CONTEXT_AUTOMATIC, UPDATE_CONTEXT_AUTOMATIC};
    case UPDATE_USER:
      break;
  }
  return {WRITE_CONTEXT_USER, UPDATE_CONTEXT_USER};
}

const std::optional<std::string>& OwnLayer(const ColumnValues& layers, UPDATE_CONTEXT context) {
  return context == UPDATE_AUTOMATIC ? layers.automatic : layers.user;
}

ColumnValues Divide(const ObjectHandle& object, const TarnSchemaStore::SchemaObject& schema,
                    UPDATE_CONTEXT context) {
  GiveGeneratedIds(*object, schema);
  return DivideObject(*object, schema, context == UPDATE_AUTOMATIC ? AUTO_CONFIG : EXTERNAL).values;
}

[[noreturn]] void FailByContext(const ConfigStoreObjectId& id) {
  ThrowFailure("Database call to update configuration by context failed for: " + id.toString());
}

}  // namespace

void SetByContextInternal(const ObjectHandle& object, const SchemaHandle& schema,
                          UPDATE_CONTEXT context, const DBStore::ConnectionHandle& connection) {
  WriteLayersByContext(object->GetConfigStoreObjectId(), Divide(object, *schema, context),
                       schema->GetVersion(), context, connection);
}

void WriteLayersByContext(const ConfigStoreObjectId& id, const ColumnValues& layers,
                          const std::string& version, UPDATE_CONTEXT context,
                          const DBStore::ConnectionHandle& connection) {
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, StatementsOf(context).write, DBStore::kWaitLimit);
  if (!Binder(connection, statement)
           .Text(id.instanceId, id.key, id.group, id.component, version)
           .Nullable(OwnLayer(layers, context), layers.vital, layers.cached)
           .Execute()) {
    FailByContext(id);
  }
}

void UpdateByContextInternal(const ObjectHandle& object, const SchemaHandle& schema,
                             UPDATE_CONTEXT context, const DBStore::ConnectionHandle& connection) {
  const ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
  const ColumnValues layers = Divide(object, *schema, context);
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, StatementsOf(context).update, DBStore::kWaitLimit);
  if (!Binder(connection, statement)
           .Nullable(OwnLayer(layers, context), layers.vital, layers.cached)
           .Text(id.key, id.group, id.component, id.instanceId)
           .Execute()) {
    FailByContext(id);
  }
}

}  // namespace TarnConfigStore
