#include "persistence/type_rows.h"

#include "errors/raise.h"
#include "persistence/binder.h"
#include "persistence/row_map.h"
#include "persistence/statements.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace TarnConfigStore {
namespace {

bool Holds(const RowMap& row, std::string_view column, const std::optional<std::string>& value) {
  return row.Find(column) == (value ? std::optional<std::string_view>(*value) : std::nullopt);
}

// The rows as they are read and those to be written, both in the order of their instance ids.
bool Equal(const RowMapList& stored, const std::string& version,
           const std::vector<DefaultRow>& rows) {
  return std::equal(stored.begin(), stored.end(), rows.begin(), rows.end(),
                    [&version](const std::shared_ptr<RowMap>& old, const DefaultRow& row) {
                      return old->Text("Identifier") == row.instanceId &&
                             old->Text("Version") == version &&
                             Holds(*old, "Value", row.values.user) &&
                             Holds(*old, "VitalValue", row.values.vital) &&
                             Holds(*old, "CachedValue", row.values.cached);
                    });
}

[[noreturn]] void FailToWriteDefault(const ConfigStoreObjectId& type) {
  ThrowFailure("Write default config failed for: " + type.toString());
}

void Write(const ConfigStoreObjectId& type, const std::string& version, const DefaultRow& row,
           const DBStore::ConnectionHandle& connection) {
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, WRITE_DEFAULT_INSTANCE, DBStore::kWaitLimit);
  if (!Binder(connection, statement)
           .Text(row.instanceId, type.key, type.group, type.component, version)
           .Nullable(row.values.user, row.values.vital, row.values.cached)
           .Execute()) {
    FailToWriteDefault(type);
  }
}

bool HoldsValue(const RowMap& row) {
  return std::any_of(kValueColumns.begin(), kValueColumns.end(), [&row](const ValueColumn& column) {
    return row.Find(column.name).has_value();
  });
}

bool IsConfirmed(const RowMap& row) {
  return row.Text("Success") == "1";
}

StoredRow MakeStoredRow(const RowMap& row, std::string_view instanceId) {
  StoredRow stored;
  for (const ValueColumn& column : kValueColumns) {
    if (const auto text = row.Find(column.name)) {
      stored.*column.text = *text;
    }
  }
  stored.instanceId = instanceId;
  stored.version = row.Text("Version");
  stored.creationTime = row.Text("CreationTime");
  stored.revision = RevisionFrom(row.Text("Revision").data());
  stored.confirmed = IsConfirmed(row);
  return stored;
}

void ForEachType(const DBStore::ConnectionHandle& connection, std::string_view sql,
                 const TypeVisitor& visit) {
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, sql, DBStore::kWaitLimit);
  ForEachRow(connection, statement, "Get store rows failed.", [&visit](const RowMap& row) {
    visit(ConfigStoreObjectId(std::string(row.Text("Name")), std::string(row.Text("ConfigGroup")),
                              std::string(row.Text("Component"))));
  });
}

}  // namespace

bool AreDefaultRows(const ConfigStoreObjectId& type, const std::string& version,
                    std::vector<DefaultRow> rows, const DBStore::ConnectionHandle& connection) {
  std::sort(rows.begin(), rows.end(),
            [](const DefaultRow& a, const DefaultRow& b) { return a.instanceId < b.instanceId; });
  return Equal(ReadRowMaps(connection, READ_DEFAULT_INSTANCES, type), version, rows);
}

void ForEachTypeWithDefaults(const DBStore::ConnectionHandle& connection,
                             const TypeVisitor& visit) {
  ForEachType(connection, READ_TYPES_WITH_DEFAULTS, visit);
}

void ForEachStoredType(const DBStore::ConnectionHandle& connection, const TypeVisitor& visit) {
  ForEachType(connection, READ_STORED_TYPES, visit);
}

void ReplaceDefaultRows(const ConfigStoreObjectId& type, const std::string& version,
                        const std::vector<DefaultRow>& rows,
                        const DBStore::ConnectionHandle& connection) {
  if (AreDefaultRows(type, version, rows, connection)) {
    return;
  }
  const DBStore::StatementHandle removal = TypeStatement::PrepareAndBind(
      connection, DELETE_DEFAULT_INSTANCES, type.key, type.group, type.component);
  if (DBStore::ExecuteStmt(connection, removal, nullptr, nullptr, DBStore::kWaitLimit) != 0) {
    FailToWriteDefault(type);
  }
  for (const DefaultRow& row : rows) {
    Write(type, version, row, connection);
  }
}

int CountStoredInstances(const ConfigStoreObjectId& type,
                         const DBStore::ConnectionHandle& connection) {
  const RowMapList rows = ReadRowMaps(connection, COUNT_STORED_INSTANCES, type);
  int count = 0;
  if (!rows.empty()) {
    const std::string_view text = rows.front()->Text("Stored");
    std::from_chars(text.data(), text.data() + text.size(), count);
  }
  return count;
}

std::size_t ForEachStoredRow(const ConfigStoreObjectId& type,
                             const DBStore::ConnectionHandle& connection,
                             const std::function<void(const StoredRow&)>& receiver) {
  return TakeStoredRows(
      type, connection, [](const RowTexts& /*row*/) { return true; }, receiver);
}

std::size_t TakeStoredRows(const ConfigStoreObjectId& type,
                           const DBStore::ConnectionHandle& connection,
                           const std::function<bool(const RowTexts&)>& wants,
                           const std::function<void(StoredRow&&)>& receiver) {
  std::size_t without = 0;
  ForEachRow(connection, GET_INSTANCES.Text(), type, [&](const RowMap& row) {
    const RowTexts texts{row.Text("Identifier"), row.Find("UserValue"), IsConfirmed(row)};
    if (!texts.user && !HoldsValue(row)) {
      ++without;
    } else if (wants(texts)) {
      receiver(MakeStoredRow(row, texts.instanceId));
    }
  });
  return without;
}

void VisitStoredRow(const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection,
                    const std::function<void(const StoredRow&)>& receiver) {
  const RowMap row = ReadRowMap(connection, READ_TABLE_CONFIG, id);
  if (HoldsValue(row)) {
    receiver(MakeStoredRow(row, id.instanceId));
  }
}

void RedivideRow(const ConfigStoreObjectId& type, const StoredRow& row,
                 const DBStore::ConnectionHandle& connection) {
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, REDIVIDE_ROW, DBStore::kWaitLimit);
  if (!Binder(connection, statement)
           .Text(row.version)
           .Nullable(row.user, row.automatic, row.vital, row.cached, row.pending)
           .Text(type.key, type.group, type.component, row.instanceId)
           .Execute()) {
    ThrowFailure(
        "Dividing stored values again failed for: " +
        ConfigStoreObjectId(type.key, type.group, type.component, row.instanceId).toString());
  }
}

RowMapList ReadStagedOfType(const ConfigStoreObjectId& type,
                            const DBStore::ConnectionHandle& connection) {
  return ReadRowMaps(connection, READ_STAGED_OF_TYPE, type);
}

}  // namespace TarnConfigStore
