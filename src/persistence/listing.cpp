#include "tarnconfigstore/listing.h"

#include "errors/raise.h"
#include "persistence/connection.h"
#include "persistence/next_boot_records.h"
#include "persistence/row_objects.h"
#include "persistence/statements.h"

#include <cstdlib>
#include <string_view>
#include <utility>

namespace TarnConfigStore {
namespace {

bool IsSet(const RowMap& row, std::string_view column) {
  return row.Text(column) == "1";
}

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

// Rows under a prefix, by the statement for as many fields as it names.
template <std::size_t count>
void VisitUnder(const ConfigStoreObjectId& prefix, const std::string_view (&statements)[count],
                const RowVisitor& visit) {
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  const std::vector<std::string_view> fields = PrefixOf(prefix);
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, statements[fields.size()], DBStore::kWaitLimit);
  int index = 1;
  bool bound = true;
  for (const std::string_view field : fields) {
    bound = bound && DBStore::internal::Bind(connection, statement, index, field, false) == 0;
  }
  constexpr const char* kFailure = "Get store rows failed.";
  if (!bound) {
    ThrowFailure(kFailure);
  }
  ForEachRow(connection, statement, kFailure, visit);
}

StoredObject StoredFromRow(const RowMap& row) {
  const auto text = [&row](std::string_view column) { return std::string(row.Text(column)); };
  return {IdFromRow(row),
          text("Version"),
          text("CreationTime"),
          text("ModifiedTime"),
          RevisionFrom(text("Revision").c_str()),
          IsSet(row, "Success"),
          IsSet(row, "HasUser"),
          IsSet(row, "HasAutomatic"),
          IsSet(row, "HasVital"),
          IsSet(row, "HasCached"),
          IsSet(row, "HasPending")};
}

StagedChange StagedFromRow(const RowMap& row) {
  return {IdFromRow(row),        std::string(row.Text("Version")), ActionFromRow(row),
          IsSet(row, "HasUser"), IsSet(row, "HasVital"),           IsSet(row, "HasCached")};
}

}  // namespace

void VisitStored(const ConfigStoreObjectId& prefix,
                 const std::function<void(StoredObject)>& visit) {
  VisitUnder(prefix, LIST_STORED, [&visit](const RowMap& row) { visit(StoredFromRow(row)); });
}

std::vector<StoredObject> ListStored(const ConfigStoreObjectId& prefix) {
  std::vector<StoredObject> objects;
  VisitStored(prefix, [&objects](StoredObject object) { objects.push_back(std::move(object)); });
  return objects;
}

std::vector<StagedChange> ListStaged(const ConfigStoreObjectId& prefix) {
  std::vector<StagedChange> changes;
  VisitUnder(prefix, LIST_STAGED,
             [&changes](const RowMap& row) { changes.push_back(StagedFromRow(row)); });
  return changes;
}

}  // namespace TarnConfigStore
