#include "tarnconfigstore/listing.h"

#include "persistence/connection.h"
#include "persistence/next_boot_records.h"
#include "persistence/prefix_rows.h"
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
  ForEachRowUnder(prefix, LIST_STORED, GetDBStore(DBStore::Type::CURRENT_STORE, true),
                  [&visit](const RowMap& row) { visit(StoredFromRow(row)); });
}

std::vector<StoredObject> ListStored(const ConfigStoreObjectId& prefix) {
  std::vector<StoredObject> objects;
  VisitStored(prefix, [&objects](StoredObject object) { objects.push_back(std::move(object)); });
  return objects;
}

std::vector<StagedChange> ListStaged(const ConfigStoreObjectId& prefix) {
  std::vector<StagedChange> changes;
  ForEachRowUnder(prefix, LIST_STAGED, GetDBStore(DBStore::Type::CURRENT_STORE, true),
                  [&changes](const RowMap& row) { changes.push_back(StagedFromRow(row)); });
  return changes;
}

}  // namespace TarnConfigStore
