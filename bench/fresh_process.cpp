#include "tarnconfigstore/config_store.h"

#include "benchmarks.h"
#include "child_process.h"
#include "comparison.h"
#include "floor_store.h"
#include "measured_host.h"
#include "samples.h"

#include <chrono>
#include <stdexcept>

namespace Benchmarks {
namespace {

using Clock = std::chrono::steady_clock;

double NanosecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

void MeasureChildren(benchmark::State& state, ChildTask task, const std::string& root) {
  constexpr double kNanosecondsPerSecond = 1e9;
  try {
    for ([[maybe_unused]] auto iteration : state) {
      state.SetIterationTime(MeasureInChild(task, root) / kNanosecondsPerSecond);
    }
  } catch (const std::exception& failure) {
    state.SkipWithError(failure.what());
  }
}

}  // namespace

double MeasureFirstGetByLibrary() {
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(Host::kPlain);
  const Clock::time_point start = Clock::now();
  const auto store = TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
  const auto object = store->Get(id);
  const double taken = NanosecondsSince(start);
  if (!object) {
    throw std::runtime_error("nothing stored");
  }
  return taken;
}

double MeasureFirstGetByFloor(const std::string& root) {
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(Host::kPlain);
  const Clock::time_point start = Clock::now();
  FloorStore store(root);
  const FloorType type(root, id);
  const auto object = store.Get(id);
  const double taken = NanosecondsSince(start);
  if (!object) {
    throw std::runtime_error("nothing stored");
  }
  return taken;
}

void RegisterFreshProcess(const std::string& root) {
  constexpr double kTarget = 2.0;
  constexpr int kChildren = 41;
  const Sides sides = Compare(
      {.name = "first-get/2000-types",
       .does = "in a fresh process: open the store and the types, read one type of 2,000, get one "
               "object",
       .targetRatio = kTarget,
       .ownClock = true,
       .inChildren = true},
      [root](benchmark::State& state) {
        MeasureChildren(state, ChildTask::FIRST_GET_LIBRARY, root);
      },
      [root](benchmark::State& state) {
        MeasureChildren(state, ChildTask::FIRST_GET_FLOOR, root);
      });
  for (benchmark::internal::Benchmark* side : {sides.library, sides.floor}) {
    side->Iterations(1)->Repetitions(kChildren);
  }
}

}  // namespace Benchmarks
