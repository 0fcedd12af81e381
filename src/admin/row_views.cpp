#include "admin/row_views.h"

#include "objects/merge.h"

namespace TarnConfigStore {
namespace {

ObjectHandle Part(const StoredRow& row, RowText text, const ConfigStoreObjectId& id,
                  const SchemaHandle& type) {
  return text != nullptr && row.*text ? MakeObject(*(row.*text), id, type) : nullptr;
}

ObjectHandle Merge(const StoredRow& row, RowText automatic, RowText user,
                   const ConfigStoreObjectId& id, const SchemaHandle& type) {
  return MergeConfig(Part(row, automatic, id, type), Part(row, &StoredRow::cached, id, type),
                     Part(row, &StoredRow::vital, id, type), Part(row, user, id, type),
                     type->GetSchemaPlace());
}

}  // namespace

std::vector<RowView> ViewsOf(const StoredRow& row) {
  std::vector<RowView> views = {{DataPlace::CURRENT, row.confirmed ? &StoredRow::user : nullptr}};
  if (!row.confirmed && row.user) {
    views.push_back({DataPlace::UNCONFIRMED, &StoredRow::user});
  }
  if (row.pending) {
    views.push_back({DataPlace::PENDING, &StoredRow::pending});
  }
  return views;
}

ObjectHandle MergeView(const StoredRow& row, RowText user, const ConfigStoreObjectId& id,
                       const SchemaHandle& type) {
  return Merge(row, &StoredRow::automatic, user, id, type);
}

ObjectHandle MergeSetView(const StoredRow& row, RowText user, const ConfigStoreObjectId& id,
                          const SchemaHandle& type) {
  return Merge(row, nullptr, user, id, type);
}

}  // namespace TarnConfigStore
