#include "benchmarks.h"
#include "comparison.h"
#include "measured_host.h"
#include "samples.h"

#include <array>

namespace Benchmarks {
namespace {

using TarnConfigStore::ConfigStoreObject;

// Two sets of all instances, written in turn, so that every write changes every row.
using LibrarySets = std::array<std::vector<std::shared_ptr<ConfigStoreObject>>, 2>;
using FloorSets = std::array<std::vector<std::unique_ptr<FloorObject>>, 2>;

LibrarySets MakeLibrarySets(const std::string& key, std::size_t count) {
  LibrarySets sets;
  for (unsigned variant = 0; variant < sets.size(); ++variant) {
    for (std::size_t i = 0; i < count; ++i) {
      const std::string id = InstanceId(i);
      sets[variant].push_back(std::make_shared<ConfigStoreObject>(IdOf(key, id)));
      sets[variant].back()->SetData(ObjectText(static_cast<unsigned>(i) + variant, id).c_str());
    }
  }
  return sets;
}

FloorSets MakeFloorSets(std::size_t count) {
  FloorSets sets;
  for (unsigned variant = 0; variant < sets.size(); ++variant) {
    for (std::size_t i = 0; i < count; ++i) {
      const std::string id = InstanceId(i);
      const std::string text = ObjectText(static_cast<unsigned>(i) + variant, id);
      sets[variant].push_back(FloorObject::Make({.instanceId = id}, text));
    }
  }
  return sets;
}

void RegisterSetInstances(Roads& roads, const std::string& root, std::size_t count, int repetitions,
                          FloorStore::Rows rows) {
  constexpr double kTarget = 1.1;
  const bool isPlain = rows == FloorStore::Rows::NEW;
  const std::string key = Host::KeyOfWrittenInstances(count);
  const auto type = std::make_shared<FloorType>(root, IdOf(key));
  const Sides sides = Compare(
      {.name = "set-instances/" + std::to_string(count) + (isPlain ? "-plain" : ""),
       .does = isPlain
                   ? "the same against a floor that carries nothing over: delete and plain inserts"
                   : "validate all, read IS_BOOT and what exists, delete, write, one fdatasync",
       .targetRatio = isPlain ? 0 : kTarget,
       .items = static_cast<int>(count)},
      [&roads, key, count](benchmark::State& state) {
        const LibrarySets sets = MakeLibrarySets(key, count);
        std::size_t turn = 0;
        Measure(state, [&] {
          roads.library->SetInstances(sets[++turn % sets.size()], TarnConfigStore::EXTERNAL);
          return turn;
        });
      },
      [&roads, type, key, count, rows](benchmark::State& state) {
        FloorSets sets = MakeFloorSets(count);
        std::size_t turn = 0;
        Measure(state, [&] {
          roads.floor.SetInstances(IdOf(key), sets[++turn % sets.size()], *type, rows);
          return turn;
        });
      });
  sides.library->Repetitions(repetitions);
  sides.floor->Repetitions(repetitions);
}

}  // namespace

void RegisterBulkWrites(Roads& roads, const std::string& root, Extent extent) {
  using enum FloorStore::Rows;
  RegisterSetInstances(roads, root, 10, 101, KEPT);
  RegisterSetInstances(roads, root, 1000, 31, KEPT);
  RegisterSetInstances(roads, root, 1000, 31, NEW);
  RegisterSetInstances(roads, root, 10000, 9, KEPT);
  if (extent == Extent::ALL) {
    RegisterSetInstances(roads, root, Host::kMany, 3, KEPT);
  }
}

}  // namespace Benchmarks
