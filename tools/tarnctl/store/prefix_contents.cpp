#include "store/prefix_contents.h"

#include "tarnconfigstore/listing.h"
#include "tarnconfigstore/type_administration.h"

#include "given/object_name.h"

#include <set>

namespace tarnctl {

using TarnConfigStore::ConfigStoreObjectId;

bool HoldsAnything(const ConfigStoreObjectId& prefix) {
  struct Found {};
  try {
    // What is thrown ends the listing.
    TarnConfigStore::VisitStored(prefix, [](const auto& /*object*/) { throw Found(); });
  } catch (const Found&) {
    return true;
  }
  return !TarnConfigStore::ListStaged(prefix).empty();
}

std::vector<ConfigStoreObjectId> FindUnknown(const ConfigStoreObjectId& prefix) {
  std::set<std::string> types;
  for (const auto& type : TarnConfigStore::ListTypes()) {
    types.insert(FormatObject({type.key, type.group, type.component}));
  }
  std::vector<ConfigStoreObjectId> unknown;
  TarnConfigStore::VisitStored(prefix, [&](const TarnConfigStore::StoredObject& object) {
    const ConfigStoreObjectId& id = object.id;
    if (types.count(FormatObject({id.key, id.group, id.component})) == 0) {
      unknown.push_back(id);
    }
  });
  return unknown;
}

void AddObjects(const std::vector<ConfigStoreObjectId>& objects, const std::string& error,
                Findings& findings) {
  for (const ConfigStoreObjectId& id : objects) {
    findings.push_back({FormatObject(id), error});
  }
}

}  // namespace tarnctl
