#include "persistence/staged_base_row.h"

#include "platform/staged_base.h"

#include <array>
#include <string>

namespace TarnConfigStore {

std::optional<RowMap> ReadStagedBaseRow(const ConfigStoreObjectId& id,
                                        const DBStore::ConnectionHandle& connection) {
  DBStore::StagedBase base;
  if (DBStore::ReadStagedBase(id, &base, connection) != 0) {
    ThrowFailure("Get failed: " + id.toString());
  }
  if (base.kind == DBStore::StagedBase::Kind::NONE) {
    return std::nullopt;
  }
  RowMap row;
  if (base.kind == DBStore::StagedBase::Kind::NO_ROW) {
    return row;
  }
  const auto value = [](const std::optional<std::string>& text) {
    return text ? text->c_str() : nullptr;
  };
  const std::string revision = std::to_string(base.revision);
  constexpr std::array<const char*, 10> kNames = {
      "Version",      "AutoConfValue", "UserValue",    "VitalValue",   "CachedValue",
      "DesiredValue", "Success",       "CreationTime", "ModifiedTime", "Revision"};
  const std::array<const char*, kNames.size()> values = {
      base.version.c_str(),       value(base.automatic),
      value(base.user),           value(base.vital),
      value(base.cached),         value(base.pending),
      base.confirmed ? "1" : "0", base.creationTime.c_str(),
      base.modifiedTime.c_str(),  revision.c_str()};
  row.Put(static_cast<int>(kNames.size()), values.data(), kNames.data());
  return row;
}

}  // namespace TarnConfigStore
