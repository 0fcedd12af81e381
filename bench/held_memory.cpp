#include "tarnconfigstore/config_store.h"

#include "benchmarks.h"
#include "child_benchmarks.h"
#include "floor_store.h"
#include "measured_host.h"
#include "samples.h"

#include <malloc.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace Benchmarks {
namespace {

constexpr std::size_t kObjects = 1000;
constexpr std::size_t kInstances = 10000;

double AllocatedBytes() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd);
}

// What is held once everything else is in place: a first pass fills the database's page cache, which
// is nobody's object.
template <class Read>
double MeasureHeld(Read read) {
  read();
  const double before = AllocatedBytes();
  const auto held = read();
  return AllocatedBytes() - before;
}

template <class Get>
auto GetOneByOne(Get get) {
  const std::string key = Host::KeyOfInstances(kObjects);
  std::vector<decltype(get(IdOf(key)))> objects;
  objects.reserve(kObjects);
  for (std::size_t i = 0; i < kObjects; ++i) {
    objects.push_back(get(IdOf(key, InstanceId(i))));
  }
  return objects;
}

double ObjectsOfLibrary(const std::string& /*root*/) {
  const auto store = TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
  return MeasureHeld([&] { return GetOneByOne([&](const auto& id) { return store->Get(id); }); });
}

double ObjectsOfFloor(const std::string& root) {
  FloorStore store(root);
  return MeasureHeld([&] { return GetOneByOne([&](const auto& id) { return store.Get(id); }); });
}

double InstancesOfLibrary(const std::string& /*root*/) {
  const auto store = TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
  const auto all =
      std::make_shared<TarnConfigStore::FilterSpecObject>(IdOf(Host::KeyOfInstances(kInstances)));
  return MeasureHeld([&] { return store->GetInstances(all); });
}

double InstancesOfFloor(const std::string& root) {
  FloorStore store(root);
  return MeasureHeld([&] { return store.GetInstances(IdOf(Host::KeyOfInstances(kInstances))); });
}

const ChildTask objectsOfLibrary("held-objects/library", ObjectsOfLibrary);
const ChildTask objectsOfFloor("held-objects/floor", ObjectsOfFloor);
const ChildTask instancesOfLibrary("held-instances/library", InstancesOfLibrary);
const ChildTask instancesOfFloor("held-instances/floor", InstancesOfFloor);

}  // namespace

void RegisterHeldMemory(const std::string& root) {
  constexpr int kChildren = 3;
  constexpr double kTarget = 1.0e6;
  CompareInChildren({.name = "memory/1000-objects",
                     .does = "allocated bytes held by 1,000 objects of 400 bytes, read one by one",
                     .targetValue = kTarget,
                     .unit = Unit::BYTES,
                     .items = static_cast<int>(kObjects)},
                    objectsOfLibrary, objectsOfFloor, root, kChildren);
  constexpr double kTimesTheirText = 4;
  CompareInChildren(
      {.name = "memory/10000-instances",
       .does = "allocated bytes held by 10,000 instances, read at once; at most four times their "
               "JSON text",
       .targetValue = kTimesTheirText * static_cast<double>(kInstances * kObjectSize),
       .unit = Unit::BYTES,
       .items = static_cast<int>(kInstances)},
      instancesOfLibrary, instancesOfFloor, root, kChildren);
}

}  // namespace Benchmarks
