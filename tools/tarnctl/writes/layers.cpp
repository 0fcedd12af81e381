#include "writes/layers.h"

#include "verbs/option_names.h"

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStore;
using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::WriteKind;

constexpr const char* kUser = "--user";
constexpr const char* kVital = "--vital";
constexpr const char* kCached = "--cached";

}  // namespace

Choice LayerChoice() {
  return {.name = "Layers",
          .help = "Replace one layer and keep the others",
          .arguments = {Flag(kUser, "Replace what the user set"),
                        Flag(kAutomatic, "Replace what automatic configuration set"),
                        Flag(kVital, "Replace what the system must keep"),
                        Flag(kCached, "Replace what the system remembers")}};
}

WriteKind KindOf(const Given& given) {
  return given.Has(kVital)                           ? WriteKind::SET_VITAL_DATA
         : given.Has(kCached)                        ? WriteKind::SET_CACHED_DATA
         : given.Has(kUser) || given.Has(kAutomatic) ? WriteKind::SET_USER_DATA
                                                     : WriteKind::SET;
}

void SetLayers(ConfigStore& store, const std::shared_ptr<ConfigStoreObject>& object,
               const Given& given) {
  if (given.Has(kUser)) {
    store.SetUserData(object, TarnConfigStore::EXTERNAL);
  } else if (given.Has(kAutomatic)) {
    store.SetUserData(object, TarnConfigStore::AUTO_CONFIG);
  } else if (given.Has(kVital)) {
    store.SetVitalData(object);
  } else if (given.Has(kCached)) {
    store.SetCachedData(object);
  } else {
    store.Set(object, TarnConfigStore::EXTERNAL);
  }
}

void SetLayersOfInstances(ConfigStore& store,
                          const std::vector<std::shared_ptr<ConfigStoreObject>>& objects,
                          const Given& given) {
  if (given.Has(kUser)) {
    store.SetUserDataInstances(objects, TarnConfigStore::EXTERNAL);
  } else if (given.Has(kAutomatic)) {
    store.SetUserDataInstances(objects, TarnConfigStore::AUTO_CONFIG);
  } else if (given.Has(kVital)) {
    store.SetVitalDataInstances(objects);
  } else if (given.Has(kCached)) {
    store.SetCachedDataInstances(objects);
  } else {
    store.SetInstances(objects, TarnConfigStore::EXTERNAL);
  }
}

}  // namespace tarnctl
