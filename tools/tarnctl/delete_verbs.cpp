#include "delete_verbs.h"

#include "instance_filter.h"
#include "object_name.h"
#include "store_access.h"

#include <cstddef>
#include <cstdio>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStore;
using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::FilterSpecObject;

// Rows are counted without being read where all are meant: what nobody can read can still be
// deleted.
std::size_t CountInstances(ConfigStore& store, const std::shared_ptr<FilterSpecObject>& filter) {
  return filter->IsEmpty() ? store.GetInstanceIds(filter->GetConfigStoreObjectId()).size()
                           : store.GetInstances(filter).size();
}

}  // namespace

void DeleteObject(const std::string& object) {
  const ConfigStoreObjectId id = ParseObject(object);
  const auto store = OpenStore();
  if (store->GetRevision(id) == TarnConfigStore::kDefaultRevision) {
    RaiseNotStored(id);
  }
  store->Delete(id);
}

void DeleteInstances(const std::string& type, const std::vector<std::string>& conditions) {
  const ConfigStoreObjectId id = ParseType(type);
  const auto store = OpenStore();
  const auto filter = MakeFilter(id, conditions);
  const std::size_t count = CountInstances(*store, filter);
  if (count == 0) {
    RaiseNoInstances(id, conditions);
  }
  store->DeleteInstances(filter);
  std::fprintf(stderr, "tarnctl: %zu %s of %s deleted\n", count,
               count == 1 ? "instance" : "instances", FormatObject(id).c_str());
}

}  // namespace tarnctl
