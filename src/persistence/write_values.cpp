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

// \param bindBetween  binds what the statement takes before the text
template <class BindBetween>
void Write(std::string_view sql, const std::vector<ObjectHandle>& objects,
           const DBStore::ConnectionHandle& connection, const SchemaHandle& known,
           const char* failure, BindBetween bindBetween) {
  for (const ObjectHandle& object : objects) {
    const ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
    const SchemaHandle schema = known ? known : RequireSchema(id);
    GiveGeneratedIds(*object, *schema);
    const std::string text = Internal::Access::Of(*object).GetSerializedData();
    const DBStore::StatementHandle statement =
        DBStore::internal::Prepare(connection, sql, DBStore::kWaitLimit);
    Binder binder(connection, statement);
    binder.Text(id.instanceId, id.key, id.group, id.component, schema->GetVersion());
    bindBetween(binder);
    if (!binder.Nullable(text).Execute()) {
      ThrowFailure(failure);
    }
  }
}

void WriteInstances(std::string_view sql, const std::vector<ObjectHandle>& objects,
                    const DBStore::ConnectionHandle& connection, const SchemaHandle& schema) {
  Write(sql, objects, connection, schema, "Write config instances failed",
        [](Binder& /*nothing*/) {});
}

}  // namespace

bool AreConfirmedAtOnce(bool always, int upgradeContext) noexcept {
  return always || upgradeContext != kUnconfirmedUpgrade;
}

void WriteUserConfigInstances(const std::vector<ObjectHandle>& objects,
                              const DBStore::ConnectionHandle& connection, bool confirmed,
                              const SchemaHandle& schema) {
  const int success = confirmed || AreConfirmedAtOnce(false, ReadUpgradeContext()) ? 1 : 0;
  Write(WRITE_USER, objects, connection, schema, "Write user data failed",
        [success](Binder& binder) { binder.Number(success); });
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
