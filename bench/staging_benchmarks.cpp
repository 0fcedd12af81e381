#include "tarnconfigstore/apply_next_boot.h"

#include "benchmarks.h"
#include "comparison.h"
#include "measured_host.h"
#include "samples.h"

#include <array>
#include <chrono>
#include <stdexcept>
#include <vector>

namespace Benchmarks {
namespace {

using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::EXTERNAL;
using Objects = std::vector<std::shared_ptr<ConfigStoreObject>>;

constexpr std::size_t kStaged = 1000;

std::shared_ptr<ConfigStoreObject> MakeObject(unsigned variant) {
  auto object = std::make_shared<ConfigStoreObject>(IdOf(Host::kStaged));
  object->SetData(ObjectText(variant).c_str());
  return object;
}

Objects MakeInstances(unsigned variant) {
  Objects objects;
  for (std::size_t i = 0; i < kStaged; ++i) {
    const std::string id = InstanceId(i);
    objects.push_back(std::make_shared<ConfigStoreObject>(IdOf(Host::kStagedInstances, id)));
    objects.back()->SetData(ObjectText(static_cast<unsigned>(i) + variant, id).c_str());
  }
  return objects;
}

// Both sides by the library; the one writes to the records of the next boot, the other at once.
template <class Write>
void WriteInTurn(benchmark::State& state, Write write) {
  const std::array<std::shared_ptr<ConfigStoreObject>, 2> objects = {MakeObject(0), MakeObject(1)};
  std::size_t turn = 0;
  Measure(state, [&] {
    write(objects[++turn % objects.size()]);
    return turn;
  });
}

void RegisterStaging(Roads& roads) {
  constexpr double kTarget = 1.2;
  constexpr double kSeconds = 0.005;
  constexpr int kRepetitions = 101;
  const Sides sides = Compare(
      {.name = "stage/durable",
       .does = "NextBootStore::Set of one object, against ConfigStore::Set; both durable",
       .targetRatio = kTarget},
      [&roads](benchmark::State& state) {
        const auto nextBoot = roads.library->GetNextBootStore();
        WriteInTurn(state, [&](const auto& object) { nextBoot->Set(object); });
      },
      [&roads](benchmark::State& state) {
        WriteInTurn(state, [&](const auto& object) { roads.library->Set(object, EXTERNAL); });
      });
  sides.library->MinTime(kSeconds)->Repetitions(kRepetitions);
  sides.floor->MinTime(kSeconds)->Repetitions(kRepetitions);
}

double SecondsOf(const std::function<void()>& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void ApplyStaged(Roads& roads, benchmark::State& state) {
  try {
    const std::array<Objects, 2> sets = {MakeInstances(0), MakeInstances(1)};
    std::size_t turn = 0;
    for ([[maybe_unused]] auto iteration : state) {
      roads.library->GetNextBootStore()->SetInstances(sets[++turn % sets.size()]);
      std::size_t applied = 0;
      state.SetIterationTime(
          SecondsOf([&] { applied = TarnConfigStore::ApplyNextBootConfig({}).applied.size(); }));
      if (applied < kStaged) {
        throw std::runtime_error("not everything was applied");
      }
    }
  } catch (const std::exception& failure) {
    state.SkipWithError(failure.what());
  }
}

void SetAtOnce(Roads& roads, benchmark::State& state) {
  try {
    const std::array<Objects, 2> sets = {MakeInstances(0), MakeInstances(1)};
    std::size_t turn = 0;
    for ([[maybe_unused]] auto iteration : state) {
      const Objects& objects = sets[++turn % sets.size()];
      state.SetIterationTime(SecondsOf([&] { roads.library->SetInstances(objects, EXTERNAL); }));
    }
  } catch (const std::exception& failure) {
    state.SkipWithError(failure.what());
  }
}

void RegisterApplying(Roads& roads) {
  constexpr double kTarget = 1.5;
  constexpr int kRepetitions = 31;
  const Sides sides = Compare(
      {.name = "apply/1000",
       .does = "ApplyNextBootConfig of 1,000 staged records, against SetInstances of the objects",
       .targetRatio = kTarget,
       .items = static_cast<int>(kStaged),
       .ownClock = true},
      [&roads](benchmark::State& state) { ApplyStaged(roads, state); },
      [&roads](benchmark::State& state) { SetAtOnce(roads, state); });
  for (benchmark::internal::Benchmark* side : {sides.library, sides.floor}) {
    side->Iterations(1)->Repetitions(kRepetitions);
  }
}

}  // namespace

void RegisterStagedChanges(Roads& roads) {
  RegisterStaging(roads);
  RegisterApplying(roads);
}

}  // namespace Benchmarks
