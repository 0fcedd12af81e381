#include "persistence/write_values.h"

#include "errors/raise.h"
#include "objects/access.h"
#include "objects/division.h"
#include "objects/schema_lookup.h"
#include "persistence/binder.h"
#include "persistence/boot_flags.h"
#include "persistence/statements.h"

#include <string_view>

namespace TarnConfigStore {
namespace {

// The upgrade context in which rows stay to be confirmed.
constexpr int kUnconfirmedUpgrade = 2;

// Hands each object's version and text on.
template <class Write>
void ForEachText(const std::vector<ObjectHandle>& objects, const SchemaHandle& known, Write write) {
  for (const ObjectHandle& object : objects) {
    const ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
    const SchemaHandle schema = known ? known : RequireSchema(id);
    GiveGeneratedIds(*object, *schema);
    write(id, schema->GetVersion(), Internal::Access::Of(*object).GetSerializedData());
  }
}

void WriteInstances(std::string_view sql, const std::vector<ObjectHandle>& objects,
                    const DBStore::ConnectionHandle& connection, const SchemaHandle& schema) {
  ForEachText(
      objects, schema,
      [&](const ConfigStoreObjectId& id, const std::string& version, const std::string& text) {
        const DBStore::StatementHandle statement =
            DBStore::internal::Prepare(connection, sql, DBStore::kWaitLimit);
        if (!Binder(connection, statement)
                 .Text(id.instanceId, id.key, id.group, id.component, version)
                 .Nullable(text)
                 .Execute()) {
          ThrowFailure("Write config instances failed");
        }
      });
}

}  // namespace

void WriteUserConfigInstances(const std::vector<ObjectHandle>& objects,
                              const DBStore::ConnectionHandle& connection, bool confirmed,
                              const SchemaHandle& schema) {
  const int success = confirmed || ReadUpgradeContext() != kUnconfirmedUpgrade ? 1 : 0;
  ForEachText(
      objects, schema,
      [&](const ConfigStoreObjectId& id, const std::string& version, const std::string& text) {
        const DBStore::StatementHandle statement =
            DBStore::internal::Prepare(connection, WRITE_USER, DBStore::kWaitLimit);
        if (!Binder(connection, statement)
                 .Text(id.instanceId, id.key, id.group, id.component, version)
                 .Number(success)
                 .Nullable(text)
                 .Execute()) {
          ThrowFailure("Write user data failed");
        }
      });
}

void WriteCachedConfigInstances(const std::vector<ObjectHandle>& objects,
                                const DBStore::ConnectionHandle& connection,
                                const SchemaHandle& schema) {
  WriteInstances(WRITE_CACHED, objects, connection, schema);
}

void WriteVitalConfigInstances(const std::vector<ObjectHandle>& objects,
                               const DBStore::ConnectionHandle& connection,
                               const SchemaHandle& schema) {
  WriteInstances(WRITE_VITAL, objects, connection, schema);
}

void WriteAutoConfConfigInstances(const std::vector<ObjectHandle>& objects,
                                  const DBStore::ConnectionHandle& connection,
                                  const SchemaHandle& schema) {
  WriteInstances(WRITE_AUTOMATIC, objects, connection, schema);
}

}  // namespace TarnConfigStore
