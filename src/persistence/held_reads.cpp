#include "persistence/held_reads.h"

#include "platform/held_rows.h"

#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "persistence/boot_flags.h"
#include "persistence/statements.h"

#include <memory>
#include <new>
#include <string>
#include <utility>

namespace TarnConfigStore {
namespace {

// The identifier is the row's key. Whose type is gone must not keep it.
struct HeldObject {
  std::weak_ptr<TarnSchemaStore::SchemaObject> schema;
  int upgradeContext;
  std::shared_ptr<const JsonDoc> data;
  std::string version;
  std::string creationTime;
  std::string modifiedTime;
  std::int32_t revision;

  bool IsOf(const SchemaHandle& type) const {
    return !schema.owner_before(type) && !type.owner_before(schema);
  }
};

DBStore::RowQuery QueryOf(const InstanceStatement& statement, const ConfigStoreObjectId& id) {
  return {statement.Text(), {id.key, id.group, id.component, id.instanceId}};
}

// Where there is no memory to hold it, what was read is there all the same.
template <class Hold>
void HoldWhereWorthWhile(const DBStore::ConnectionHandle& connection,
                         const DBStore::RowQuery& query, Hold hold) noexcept {
  if (DBStore::IsWorthHolding(connection, query)) {
    try {
      hold();
    } catch (const std::bad_alloc&) {
      return;
    }
  }
}

}  // namespace

ObjectHandle FindHeldObject(const ConfigStoreObjectId& id,
                            const DBStore::ConnectionHandle& connection,
                            const SchemaHandle& schema) {
  const DBStore::MadeOfRow made = DBStore::FindHeld(connection, QueryOf(READ_TABLE_CONFIG, id));
  if (!made) {
    return nullptr;
  }
  const HeldObject& held = *static_cast<const HeldObject*>(made.get());
  if (!held.IsOf(schema) || held.upgradeContext != ReadUpgradeContext()) {
    return nullptr;
  }
  return Internal::Access::Wrap(ConfigStoreObjectImpl::Make(
      id, JsonDoc::CopyOf(*held.data), schema,
      {held.version, held.creationTime, held.modifiedTime, held.revision}));
}

void HoldObject(const ConfigStoreObject& object, const DBStore::ConnectionHandle& connection,
                const SchemaHandle& schema, int upgradeContext) noexcept {
  const ConfigStoreObjectImpl& read = Internal::Access::Of(object);
  const DBStore::RowQuery query = QueryOf(READ_TABLE_CONFIG, read.GetConfigStoreObjectId());
  HoldWhereWorthWhile(connection, query, [&] {
    const std::shared_ptr<const JsonDoc> data = JsonDoc::CopyOf(read.GetDocument());
    auto held = std::make_shared<const HeldObject>(
        HeldObject{schema, upgradeContext, data, read.GetVersion(), read.GetCreationTime(),
                   read.GetModifiedTime(), read.GetRevision()});
    DBStore::Hold(connection, query, std::move(held),
                  sizeof(HeldObject) + sizeof(JsonDoc) + data->Size());
  });
}

std::optional<std::int32_t> FindHeldRevision(const ConfigStoreObjectId& id,
                                             const DBStore::ConnectionHandle& connection) {
  const DBStore::MadeOfRow made = DBStore::FindHeld(connection, QueryOf(READ_REVISION, id));
  return made ? std::optional(*static_cast<const std::int32_t*>(made.get())) : std::nullopt;
}

void HoldRevision(const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection,
                  std::int32_t revision) noexcept {
  const DBStore::RowQuery query = QueryOf(READ_REVISION, id);
  HoldWhereWorthWhile(connection, query, [&] {
    DBStore::Hold(connection, query, std::make_shared<const std::int32_t>(revision),
                  sizeof revision);
  });
}

}  // namespace TarnConfigStore
