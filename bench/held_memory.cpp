#include "tarnconfigstore/config_store.h"

#include "benchmarks.h"
#include "child_process.h"
#include "comparison.h"
#include "floor_store.h"
#include "measured_host.h"
#include "samples.h"

#include <fstream>
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

// getrusage would tell of this process's parent, too.
double PeakBytes() {
  constexpr double kKilobyte = 1024;
  std::ifstream status("/proc/self/status");
  for (std::string name; status >> name;) {
    if (name == "VmHWM:") {
      double kilobytes = 0;
      status >> kilobytes;
      return kKilobyte * kilobytes;
    }
  }
  throw std::runtime_error("/proc/self/status tells no peak");
}

// How far the process's memory grows when one of many is kept, once the store is open.
template <class KeepOne>
double MeasurePeak(KeepOne keepOne) {
  keepOne(IdOf(Host::KeyOfInstances(kObjects)), InstanceId(1));
  const double before = PeakBytes();
  if (keepOne(IdOf(Host::KeyOfInstances(Host::kMany)), InstanceId(Host::kMany / 2)) != 1) {
    throw std::runtime_error("the filter does not keep one");
  }
  return PeakBytes() - before;
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
  return MeasureHeld([&] { return GetOneByOne([&](const auto& id) { return store->Get(id); }); });
}

double MeasureMemoryOfFloor(const std::string& root) {
  FloorStore store(root);
  return MeasureHeld([&] { return GetOneByOne([&](const auto& id) { return store.Get(id); }); });
}

double MeasureInstancesOfLibrary() {
  const auto store = TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
  const auto all =
      std::make_shared<TarnConfigStore::FilterSpecObject>(IdOf(Host::KeyOfInstances(kInstances)));
  return MeasureHeld([&] { return store->GetInstances(all); });
}

double MeasureInstancesOfFloor(const std::string& root) {
  FloorStore store(root);
  return MeasureHeld([&] { return store.GetInstances(IdOf(Host::KeyOfInstances(kInstances))); });
}

double MeasurePeakOfLibrary() {
  const auto store = TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
  return MeasurePeak([&](const auto& id, const std::string& wanted) {
    const auto filter = std::make_shared<TarnConfigStore::FilterSpecObject>(id);
    filter->SetValue("id", wanted);
    return store->GetInstances(filter).size();
  });
}

double MeasurePeakOfFloor(const std::string& root) {
  FloorStore store(root);
  return MeasurePeak([&](const auto& id, const std::string& wanted) {
    return store.GetInstancesWhere(id, "id", wanted).size();
  });
}

void RegisterHeldMemory(const std::string& root) {
  constexpr double kTarget = 1.0e6;
  constexpr int kChildren = 3;
  const Sides sides = Compare(
      {.name = "memory/1000-objects",
       .does = "allocated bytes held by 1,000 objects of 400 bytes, read one by one",
       .targetValue = kTarget,
       .unit = Unit::BYTES,
       .items = 1000},
      [root](benchmark::State& state) { ReportChild(state, ChildTask::HELD_MEMORY_LIBRARY, root); },
      [root](benchmark::State& state) { ReportChild(state, ChildTask::HELD_MEMORY_FLOOR, root); });
  constexpr double kTimesTheirText = 4;
  const Sides instances = Compare(
      {.name = "memory/10000-instances",
       .does = "allocated bytes held by 10,000 instances, read at once; at most four times their "
               "JSON text",
       .targetValue = kTimesTheirText * static_cast<double>(kInstances * kObjectSize),
       .unit = Unit::BYTES,
       .items = 10000},
      [root](benchmark::State& state) {
        ReportChild(state, ChildTask::HELD_INSTANCES_LIBRARY, root);
      },
      [root](benchmark::State& state) {
        ReportChild(state, ChildTask::HELD_INSTANCES_FLOOR, root);
      });
  constexpr double kPeakTarget = 15e6;
  const Sides peak = Compare(
      {.name = "memory/100000-keep-one",
       .does = "growth of the process while one of 100,000 instances is kept",
       .targetValue = kPeakTarget,
       .unit = Unit::BYTES},
      [root](benchmark::State& state) {
        ReportChild(state, ChildTask::PEAK_OF_KEEP_ONE_LIBRARY, root);
      },
      [root](benchmark::State& state) {
        ReportChild(state, ChildTask::PEAK_OF_KEEP_ONE_FLOOR, root);
      });
  for (benchmark::internal::Benchmark* side :
       {sides.library, sides.floor, instances.library, instances.floor, peak.library, peak.floor}) {
    side->Iterations(1)->Repetitions(kChildren);
  }
}

}  // namespace Benchmarks
