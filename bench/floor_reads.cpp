#include "floor_filter.h"
#include "floor_store.h"
#include "floor_transaction.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace Benchmarks {

const FloorStore::Columns FloorStore::kOneColumns = {-1, 0, 2, 5, 1, 3, 4, 6, 7, 8, 9};
const FloorStore::Columns FloorStore::kInstanceColumns = {2, 0, 3, 7, 6, 4, 5, 1, 8, 9, 10};

std::unique_ptr<FloorObject> FloorStore::Get(const TarnConfigStore::ConfigStoreObjectId& id) {
  BindType(getOne_, id);
  getOne_.Bind(4, id.instanceId);
  std::unique_ptr<FloorObject> object;
  if (getOne_.Step()) {
    object = MakeObject(getOne_, kOneColumns, ReadUpgradeContext(), id.instanceId);
  }
  getOne_.Reset();
  return object;
}

std::vector<std::unique_ptr<FloorObject>> FloorStore::GetInstances(
    const TarnConfigStore::ConfigStoreObjectId& id) {
  const int upgradeContext = ReadUpgradeContext();
  BindType(getAll_, id);
  std::vector<std::unique_ptr<FloorObject>> objects;
  while (getAll_.Step()) {
    objects.push_back(MakeObject(getAll_, kInstanceColumns, upgradeContext,
                                 getAll_.Text(kInstanceColumns.identifier)));
  }
  getAll_.Reset();
  return objects;
}

std::vector<std::unique_ptr<FloorObject>> FloorStore::GetInstancesWhere(
    const TarnConfigStore::ConfigStoreObjectId& id, std::string_view member,
    std::string_view wanted) {
  const int upgradeContext = ReadUpgradeContext();
  const Columns& columns = kInstanceColumns;
  BindType(getAll_, id);
  std::vector<std::unique_ptr<FloorObject>> objects;
  while (getAll_.Step()) {
    const bool isUsersAlone = upgradeContext == 0 && getAll_.IsNull(columns.automatic) &&
                              getAll_.IsNull(columns.cached) && getAll_.IsNull(columns.vital) &&
                              !getAll_.IsNull(columns.user);
    if (isUsersAlone && !MayHold(getAll_.Text(columns.user), member, wanted)) {
      continue;
    }
    auto object = MakeObject(getAll_, columns, upgradeContext, getAll_.Text(columns.identifier));
    const Json::Value* value = Json::FindMember(object->Data(), member);
    if (value != nullptr && value->IsString() && Json::Text(*value) == wanted) {
      objects.push_back(std::move(object));
    }
  }
  getAll_.Reset();
  return objects;
}

std::int64_t FloorStore::GetRevision(const TarnConfigStore::ConfigStoreObjectId& id) {
  BindType(getRevision_, id);
  getRevision_.Bind(4, id.instanceId);
  const std::int64_t revision = getRevision_.Step() ? getRevision_.Number(1) : -1;
  getRevision_.Reset();
  return revision;
}

std::unique_ptr<FloorObject> FloorStore::MakeObject(const FloorStatement& row,
                                                    const Columns& columns, int upgradeContext,
                                                    std::string_view instanceId) {
  int user = columns.user;
  if (upgradeContext != 0) {
    user = row.IsNull(columns.desired) ? columns.user : columns.desired;
  } else if (row.Number(columns.success) != 1) {
    user = -1;
  }
  const std::array<std::string_view, 4> layers = {row.Text(columns.automatic),
                                                  row.Text(columns.cached), row.Text(columns.vital),
                                                  user < 0 ? std::string_view() : row.Text(user)};
  return FloorObject::Make({instanceId, row.Text(columns.version), row.Text(columns.creationTime),
                            row.Text(columns.modifiedTime), row.Number(columns.revision)},
                           layers);
}

int FloorStore::ReadUpgradeContext() const {
  const int file = open(upgradeContextPath_.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return 0;
  }
  char text[32] = {};
  const ssize_t length = read(file, text, sizeof text - 1);
  close(file);
  return length <= 0 ? 0 : std::atoi(text);
}

}  // namespace Benchmarks
