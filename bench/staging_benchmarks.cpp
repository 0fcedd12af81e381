#include "tarnconfigstore/apply_next_boot.h"

#include "benchmarks.h"
#include "comparison.h"
#include "measured_host.h"
#include "samples.h"

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>
#include <vector>

namespace Benchmarks {
namespace {

using TarnConfigStore::ConfigStoreObject;
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

void RegisterStaging(Roads& roads, const std::string& root) {
  constexpr double kTarget = 1.2;
  constexpr double kSeconds = 0.005;
  constexpr int kRepetitions = 101;
  const auto type = std::make_shared<FloorType>(root, IdOf(Host::kStaged));
  const Sides sides = Compare(
      {.name = "stage/durable",
       .does = "validate, read BOOT_MODE, serialise, replace the record, write BOOT_MODE; in a "
               "transaction of its own, one fdatasync",
       .targetRatio = kTarget},
      [&roads](benchmark::State& state) {
        const std::array<std::shared_ptr<ConfigStoreObject>, 2> objects = {MakeObject(0),
                                                                           MakeObject(1)};
        const auto nextBoot = roads.library->GetNextBootStore();
        std::size_t turn = 0;
        Measure(state, [&] {
          nextBoot->Set(objects[++turn % objects.size()]);
          return turn;
        });
      },
      [&roads, type](benchmark::State& state) {
        const std::array<std::unique_ptr<FloorObject>, 2> objects = {
            FloorObject::Make({}, ObjectText(0)), FloorObject::Make({}, ObjectText(1))};
        std::size_t turn = 0;
        Measure(state, [&] {
          roads.floor.Stage(IdOf(Host::kStaged), objects[++turn % objects.size()]->Data(), *type);
          return turn;
        });
      });
  sides.library->MinTime(kSeconds)->Repetitions(kRepetitions);
  sides.floor->MinTime(kSeconds)->Repetitions(kRepetitions);
}

// What is to be applied is staged by the library on both sides, and nobody measures that.
class Staging {
 public:
  explicit Staging(Roads& roads) : roads_(roads), sets_({MakeInstances(0), MakeInstances(1)}) {
    // What the durable row left, which is of another type.
    TarnConfigStore::ApplyNextBootConfig({});
  }
  void StageAll() {
    roads_.library->GetNextBootStore()->SetInstances(sets_[++turn_ % sets_.size()]);
  }

 private:
  Roads& roads_;
  std::array<Objects, 2> sets_;
  std::size_t turn_ = 0;
};

void RequireAll(std::size_t applied) {
  if (applied != kStaged) {
    throw std::runtime_error("not everything was applied");
  }
}

void RegisterApplying(Roads& roads, const std::string& root) {
  constexpr double kTarget = 1.5;
  constexpr int kRepetitions = 31;
  const auto type = std::make_shared<FloorType>(root, IdOf(Host::kStagedInstances));
  const Sides sides = Compare(
      {.name = "apply/1000",
       .does = "read 1,000 staged records, validate each, write its row, take the records back; "
               "one transaction",
       .targetRatio = kTarget,
       .items = static_cast<int>(kStaged),
       .ownClock = true},
      [&roads](benchmark::State& state) {
        Staging staging(roads);
        MeasurePrepared(
            state, [&] { staging.StageAll(); },
            [] { RequireAll(TarnConfigStore::ApplyNextBootConfig({}).applied.size()); });
      },
      [&roads, type](benchmark::State& state) {
        Staging staging(roads);
        MeasurePrepared(
            state, [&] { staging.StageAll(); },
            [&] {
              const std::string ids = roads.floor.ApplyStaged(IdOf(Host::kStagedInstances), *type);
              RequireAll(static_cast<std::size_t>(std::count(ids.begin(), ids.end(), '\0')));
            });
      });
  for (benchmark::internal::Benchmark* side : {sides.library, sides.floor}) {
    side->Iterations(1)->Repetitions(kRepetitions);
  }
}

}  // namespace

void RegisterStagedChanges(Roads& roads, const std::string& root) {
  RegisterStaging(roads, root);
  RegisterApplying(roads, root);
}

}  // namespace Benchmarks
