#include "benchmarks.h"
#include "comparison.h"
#include "measured_host.h"
#include "samples.h"

#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace Benchmarks {
namespace {

void RegisterGet(Roads& roads, const char* name, const char* does, const char* key, double target,
                 int repetitions = 401) {
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(key);
  const Sides sides = Compare(
      {.name = name, .does = does, .targetRatio = target},
      [&roads, id](benchmark::State& state) {
        Measure(state, [&] { return roads.library->Get(id); });
      },
      [&roads, id](benchmark::State& state) {
        Measure(state, [&] { return roads.floor.Get(id); });
      });
  sides.library->Repetitions(repetitions);
  sides.floor->Repetitions(repetitions);
}

// What the store holds of a row that nobody changed; the floor reads it each time.
template <class Library, class Floor>
void RegisterUnchanged(const char* name, Library library, Floor floor) {
  constexpr double kTarget = 0.4;
  Compare(
      {.name = name,
       .does = "the same of an object that did not change since; the floor reads it anew",
       .targetRatio = kTarget},
      [library](benchmark::State& state) {
        TarnConfigStore::SetRowHolding(true);
        library();
        library();
        Measure(state, library);
        TarnConfigStore::SetRowHolding(false);
      },
      [floor](benchmark::State& state) { Measure(state, floor); });
}

void RegisterUnchangedGet(Roads& roads, const char* name, const char* key) {
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(key);
  RegisterUnchanged(
      name, [&roads, id] { return roads.library->Get(id); },
      [&roads, id] { return roads.floor.Get(id); });
}

// Pages that were not read a moment ago, at random, the same on both sides.
void RegisterRandomGets(Roads& roads, std::size_t count) {
  constexpr double kRandomTarget = 1.35;
  constexpr std::size_t kTurns = 1000;
  constexpr int kRandomRepetitions = 101;
  const auto ids = std::make_shared<std::vector<TarnConfigStore::ConfigStoreObjectId>>();
  std::mt19937 random(1);
  std::uniform_int_distribution<std::size_t> any(0, count - 1);
  for (std::size_t i = 0; i < kTurns; ++i) {
    ids->push_back(IdOf(Host::KeyOfInstances(count), InstanceId(any(random))));
  }
  const Sides sides = Compare(
      {.name = "get/random-" + std::to_string(count),
       .does = "Get of instances at random among so many",
       .targetRatio = kRandomTarget},
      [&roads, ids](benchmark::State& state) {
        std::size_t turn = 0;
        Measure(state, [&] { return roads.library->Get((*ids)[++turn % kTurns]); });
      },
      [&roads, ids](benchmark::State& state) {
        std::size_t turn = 0;
        Measure(state, [&] { return roads.floor.Get((*ids)[++turn % kTurns]); });
      });
  for (benchmark::internal::Benchmark* side : {sides.library, sides.floor}) {
    side->Iterations(static_cast<int>(kTurns))->Repetitions(kRandomRepetitions);
  }
}

}  // namespace

void RegisterGets(Roads& roads) {
  constexpr double kTarget = 1.25;
  constexpr double kLayeredTarget = 1.35;
  RegisterGet(roads, "get/one-column",
              "select by key, read the upgrade context, parse 400 bytes strictly, keep metadata",
              Host::kPlain, kTarget);
  RegisterGet(roads, "get/four-columns",
              "the same with four texts of 400 bytes together, merged member by member",
              Host::kLayered, kLayeredTarget);
  RegisterUnchangedGet(roads, "get/unchanged", Host::kPlain);
  RegisterUnchangedGet(roads, "get/unchanged-four-columns", Host::kLayered);
  constexpr double kMegabyteTarget = 1.5;
  constexpr int kFew = 31;
  RegisterGet(roads, "get/1MB", "the same with an object of 1 MB in 2,500 members", Host::kMegabyte,
              kMegabyteTarget, kFew);
  RegisterRandomGets(roads, 10000);
  RegisterRandomGets(roads, Host::kMany);
  constexpr double kRevisionTarget = 1.15;
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(Host::kPlain);
  Compare(
      {.name = "revision",
       .does = "select by key, read one number",
       .targetRatio = kRevisionTarget},
      [&roads, id](benchmark::State& state) {
        Measure(state, [&] { return roads.library->GetRevision(id); });
      },
      [&roads, id](benchmark::State& state) {
        Measure(state, [&] { return roads.floor.GetRevision(id); });
      });
  RegisterUnchanged(
      "revision/unchanged", [&roads, id] { return roads.library->GetRevision(id); },
      [&roads, id] { return roads.floor.GetRevision(id); });
}

}  // namespace Benchmarks
