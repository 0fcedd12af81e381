#include "tarnconfigstore/listing.h"

#include "errors/raise.h"
#include "persistence/connection.h"
#include "persistence/row_map.h"
#include "persistence/statements.h"

#include <cstdlib>
#include <string_view>

namespace TarnConfigStore {
namespace {

constexpr int kReadFailed = 1;

std::vector<std::string_view> PrefixOf(const ConfigStoreObjectId& id) {
  std::vector<std::string_view> prefix;
  for (const std::string* field : {&id.component, &id.group, &id.key, &id.instanceId}) {
    if (field->empty()) {
      break;
    }
    prefix.push_back(*field);
  }
  return prefix;
}

StoredObject FromRow(const RowMap& row) {
  constexpr int kDecimal = 10;
  const auto text = [&row](std::string_view column) { return std::string(row.Text(column)); };
  const auto flag = [&row](std::string_view column) { return row.Text(column) == "1"; };
  return {
      ConfigStoreObjectId(text("Name"), text("ConfigGroup"), text("Component"), text("Identifier")),
      text("Version"),
      text("CreationTime"),
      text("ModifiedTime"),
      static_cast<std::int32_t>(std::strtol(text("Revision").c_str(), nullptr, kDecimal)),
      flag("Success"),
      flag("HasUser"),
      flag("HasAutomatic"),
      flag("HasVital"),
      flag("HasCached"),
      flag("HasPending")};
}

}  // namespace

std::vector<StoredObject> ListStored(const ConfigStoreObjectId& prefix) {
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  const std::vector<std::string_view> fields = PrefixOf(prefix);
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, LIST_STORED[fields.size()], DBStore::kWaitLimit);
  int index = 1;
  bool bound = true;
  for (const std::string_view field : fields) {
    bound = bound && DBStore::internal::Bind(connection, statement, index, field, false) == 0;
  }
  RowMapList rows;
  if (!bound || DBStore::ExecuteStmt(connection, statement, AppendRowMap, &rows,
                                     DBStore::kWaitLimit) == kReadFailed) {
    ThrowFailure("Get store rows failed.");
  }
  std::vector<StoredObject> objects;
  objects.reserve(rows.size());
  for (const std::shared_ptr<RowMap>& row : rows) {
    objects.push_back(FromRow(*row));
  }
  return objects;
}

}  // namespace TarnConfigStore
