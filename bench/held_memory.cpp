#include "tarnconfigstore/config_store.h"

#include "benchmarks.h"
#include "child_process.h"
#include "comparison.h"
#include "floor_store.h"
#include "host.h"
#include "samples.h"

#include <malloc.h>
#include <vector>

namespace Benchmarks {
namespace {

constexpr std::size_t kObjects = 1000;

double AllocatedBytes() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd);
}

// What a thousand objects take up once everything else is in place: a first pass fills the
// database's page cache, which is nobody's object.
template <class Get>
double MeasureHeld(Get get) {
  const std::string key = Host::KeyOfInstances(kObjects);
  for (std::size_t i = 0; i < kObjects; ++i) {
    get(IdOf(key, InstanceId(i)));
  }
  std::vector<decltype(get(IdOf(key)))> objects;
  objects.reserve(kObjects);
  const double before = AllocatedBytes();
  for (std::size_t i = 0; i < kObjects; ++i) {
    objects.push_back(get(IdOf(key, InstanceId(i))));
  }
  return AllocatedBytes() - before;
}

void ReportChild(benchmark::State& state, ChildTask task, const std::string& root) {
  try {
    for ([[maybe_unused]] auto iteration : state) {
      state.counters[kBytes] = MeasureInChild(task, root);
    }
  } catch (const std::exception& failure) {
    state.SkipWithError(failure.what());
  }
}

}  // namespace

double MeasureMemoryOfLibrary() {
  const auto store = TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
  return MeasureHeld([&](const auto& id) { return store->Get(id); });
}

double MeasureMemoryOfFloor(const std::string& root) {
  FloorStore store(root);
  return MeasureHeld([&](const auto& id) { return store.Get(id); });
}

void RegisterHeldMemory(const std::string& root) {
  constexpr double kTarget = 1.6e6;
  constexpr int kChildren = 3;
  const Sides sides = Compare(
      {.name = "memory/1000-objects",
       .does = "allocated bytes held by 1,000 objects of 400 bytes, read one by one",
       .targetValue = kTarget,
       .unit = Unit::BYTES,
       .items = 1000},
      [root](benchmark::State& state) { ReportChild(state, ChildTask::HELD_MEMORY_LIBRARY, root); },
      [root](benchmark::State& state) { ReportChild(state, ChildTask::HELD_MEMORY_FLOOR, root); });
  for (benchmark::internal::Benchmark* side : {sides.library, sides.floor}) {
    side->Iterations(1)->Repetitions(kChildren);
  }
}

}  // namespace Benchmarks
