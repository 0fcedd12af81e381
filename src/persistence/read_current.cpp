#include "persistence/read_current.h"

#include "platform/formatted_text.h"
#include "platform/logger.h"

#include "errors/raise.h"
#include "json/arena.h"
#include "objects/filter.h"
#include "objects/merge.h"
#include "objects/schema_lookup.h"
#include "persistence/boot_flags.h"
#include "persistence/connection.h"
#include "persistence/held_reads.h"
#include "persistence/statements.h"

#include <optional>
#include <utility>

namespace TarnConfigStore {
namespace {

// What an upgrade context of this number shows of the user's values.
constexpr int kConfirmedOnly = 0;

// All layers of a row: what automatic configuration set, over it the cached and the vital values,
// over them the user's.
ObjectHandle MergeLayers(const RowMap& row, const ConfigStoreObjectId& id,
                         const SchemaHandle& schema, int upgradeContext, Arena* arena = nullptr) {
  return MergeColumns(
      row, {"AutoConfValue", "CachedValue", "VitalValue", UserColumn(row, upgradeContext)}, id,
      schema, arena);
}

// The one column that a row's object is made of; nothing where there are several, or none.
std::optional<std::string_view> OnlyLayer(const RowMap& row, int upgradeContext) {
  return row.FindOnly(
      {"AutoConfValue", "CachedValue", "VitalValue", UserColumn(row, upgradeContext)});
}

ObjectHandle MergeUserAndAutomatic(const RowMap& row, const ConfigStoreObjectId& id,
                                   const SchemaHandle& schema) {
  return UpdateConfigInternal(MakeConfirmedUserObject(row, id, schema),
                              MakeObjectFromRow(row, "AutoConfValue", id, schema),
                              schema->GetSchemaPlace());
}

// Hands on the instances that a filter without an instance id keeps. The others are not held, and
// not even made where their text tells enough; a text that is not JSON ends it all the same.
void ForEachKept(const std::shared_ptr<FilterSpecObject>& filter,
                 const DBStore::ConnectionHandle& connection, const SchemaHandle& schema,
                 const std::function<void(ObjectHandle)>& receive) {
  const int upgradeContext = ReadUpgradeContext();
  const InstanceFilter conditions(*filter, schema->GetSchemaPlace());
  const bool streams = conditions.CanStream();
  const bool looks = streams && !filter->IsEmpty();
  Arena arena;
  std::vector<ObjectHandle> objects = ObjectsOfType(
      connection, GET_INSTANCES.Text(), filter->GetConfigStoreObjectId(),
      [&](const RowMap& row, const ConfigStoreObjectId& instance) -> ObjectHandle {
        const auto only = looks ? OnlyLayer(row, upgradeContext) : std::nullopt;
        if (only && conditions.RulesOut(*only)) {
          return nullptr;
        }
        ObjectHandle object = MergeLayers(row, instance, schema, upgradeContext, &arena);
        if (!streams) {
          return object;
        }
        if (object && conditions.Keeps(*object)) {
          receive(std::move(object));
        }
        return nullptr;
      });
  if (!streams) {
    for (ObjectHandle& object : FilterConfigStoreObjects(std::move(objects), filter)) {
      receive(std::move(object));
    }
  }
}

}  // namespace

ObjectHandle GetInternal(const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection,
                         const SchemaHandle& schema) {
  if (ObjectHandle held = FindHeldObject(id, connection, schema)) {
    return held;
  }
  const DBStore::Turn turn(connection);
  ObjectHandle object;
  int upgradeContext = 0;
  VisitRow(connection, READ_TABLE_CONFIG, id, [&](const RowMap& row) {
    upgradeContext = ReadUpgradeContext();
    object = MergeLayers(row, id, schema, upgradeContext);
  });
  if (object) {
    HoldObject(*object, connection, schema, upgradeContext);
  }
  return object;
}

ObjectHandle MakeCurrent(const RowMap& row, const ConfigStoreObjectId& id,
                         const SchemaHandle& schema) {
  if (row.Empty()) {
    return nullptr;
  }
  return MergeLayers(row, id, schema, ReadUpgradeContext());
}

ObjectHandle GetCurrentConfigInternal(const ConfigStoreObjectId& id,
                                      const DBStore::ConnectionHandle& connection,
                                      const SchemaHandle& schema) {
  return MergeUserAndAutomatic(ReadRowMap(connection, READ_TABLE_USER_AUTO_CONFIG, id), id, schema);
}

std::vector<ObjectHandle> GetConfigInstancesInternal(
    const std::shared_ptr<FilterSpecObject>& filter, const DBStore::ConnectionHandle& connection,
    const SchemaHandle& schema) {
  const ConfigStoreObjectId& id = filter->GetConfigStoreObjectId();
  if (!id.instanceId.empty()) {
    return FilterConfigStoreObjects(ListOf(GetInternal(id, connection, schema)), filter);
  }
  std::vector<ObjectHandle> objects;
  ForEachKept(filter, connection, schema,
              [&](ObjectHandle object) { objects.push_back(std::move(object)); });
  return objects;
}

std::vector<std::string> GetConfigInstanceIdsInternal(
    const std::shared_ptr<FilterSpecObject>& filter, const DBStore::ConnectionHandle& connection,
    const SchemaHandle& schema) {
  std::vector<std::string> ids;
  const auto add = [&ids](const ObjectHandle& object) {
    ids.push_back(object->GetConfigStoreObjectId().instanceId);
  };
  if (filter->GetConfigStoreObjectId().instanceId.empty()) {
    ForEachKept(filter, connection, schema, add);
  } else {
    for (const ObjectHandle& object : GetConfigInstancesInternal(filter, connection, schema)) {
      add(object);
    }
  }
  return ids;
}

std::vector<ObjectHandle> GetCurrentConfigInstancesInternal(
    const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection,
    const SchemaHandle& schema) {
  if (!id.instanceId.empty()) {
    return ListOf(GetCurrentConfigInternal(id, connection, schema));
  }
  return ObjectsOfType(connection, GET_INSTANCES.Text(), id,
                       [&](const RowMap& row, const ConfigStoreObjectId& instance) {
                         return MergeUserAndAutomatic(row, instance, schema);
                       });
}

ObjectHandle GetConfigByBootAndContext(const ConfigStoreObjectId& id, const SchemaHandle& schema,
                                       const USERDATA_CONTEXT& context,
                                       const DBStore::ConnectionHandle& connection) {
  const int upgradeContext = ReadUpgradeContext();
  bool pendingVisible = true;
  if (upgradeContext == 0) {
    pendingVisible = IsBootInternal(connection);
    if (pendingVisible) {
      pendingVisible = context == EXTERNAL && schema->IsBootAccessible();
    }
  }
  const RowMap row = ReadRowMap(connection, READ_TABLE_CONFIG, id);
  if (context != EXTERNAL) {
    return MakeObjectFromRow(row, "AutoConfValue", id, schema);
  }
  return MergeLayers(row, id, schema, pendingVisible ? upgradeContext : kConfirmedOnly);
}

std::vector<ObjectHandle> GetBulkConfigInternal(const std::string& component,
                                                const std::string& group, LeftOut* leftOut) {
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  const std::string_view sql = group.empty() ? READ_COMPONENT : READ_GROUP;
  DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, sql, DBStore::kWaitLimit);
  int index = 1;
  const bool bound =
      (group.empty() || DBStore::internal::Bind(connection, statement, index, group, false) == 0) &&
      DBStore::internal::Bind(connection, statement, index, component, false) == 0;
  constexpr const char* kFailure = "Get all keys failed";
  if (!bound) {
    ThrowFailure(kFailure);
  }
  const RowMapList rows = ReadRows(connection, statement, kFailure);
  statement.reset();

  const auto cache = TarnSchemaStore::SchemaStore::GetCache();
  std::vector<ObjectHandle> objects;
  for (const std::shared_ptr<RowMap>& row : rows) {
    const ConfigStoreObjectId id(std::string(row->Text("Name")),
                                 group.empty() ? std::string(row->Text("ConfigGroup")) : group,
                                 component, std::string(row->Text("Identifier")));
    const SchemaHandle schema = FindSchema(cache, id);
    if (!schema) {
      CSLogger::Log(CSLogger::kProblem, "Skipped, its type is not installed: %s",
                    id.toString().c_str());
      if (leftOut != nullptr) {
        leftOut->notInstalled.push_back(id);
      }
      continue;
    }
    if (ObjectHandle object = MergeLayers(*row, id, schema, kConfirmedOnly)) {
      objects.push_back(std::move(object));
    } else if (leftOut != nullptr && row->Find("UserValue")) {
      leftOut->unconfirmed.push_back(id);
    }
  }
  return objects;
}

RowMapList GetStoreContentsInternalST(std::string_view valueExpression,
                                      const DBStore::ConnectionHandle& connection,
                                      bool includeUnconfirmed) {
  const std::string sql =
      Str_Asprintf(includeUnconfirmed ? READ_CONTENTS : READ_CONFIRMED_CONTENTS, {valueExpression});
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, sql, DBStore::kWaitLimit);
  return ReadRows(connection, statement, "Get store rows failed.");
}

RowMapList GetUserConfigContents(const DBStore::ConnectionHandle& connection) {
  return GetStoreContentsInternalST("UserValue", connection, false);
}

void UpdateConfigTypeMap(ConfigTypeMap& map, const ObjectHandle& object) {
  const ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
  map[id.key][id.instanceId] = object;
}

}  // namespace TarnConfigStore
