#include "benchmarks.h"
#include "comparison.h"
#include "measured_host.h"
#include "samples.h"

#include <stdexcept>
#include <vector>

namespace Benchmarks {
namespace {

// Reads of many take long enough.
int RepetitionsFor(int count) {
  return count > 10000 ? 9 : count == 10000 ? 31 : count >= 1000 ? 101 : 401;
}

void RegisterRead(Roads& roads, const std::string& key, Comparison comparison) {
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(key);
  comparison.targetRatio = 1.3;
  const Sides sides = Compare(
      comparison,
      [&roads, id](benchmark::State& state) {
        const auto filter = std::make_shared<TarnConfigStore::FilterSpecObject>(id);
        Measure(state, [&] { return roads.library->GetInstances(filter); });
      },
      [&roads, id](benchmark::State& state) {
        Measure(state, [&] { return roads.floor.GetInstances(id); });
      });
  sides.library->Repetitions(RepetitionsFor(comparison.items));
  sides.floor->Repetitions(RepetitionsFor(comparison.items));
}

void RegisterFiltered(Roads& roads, int count) {
  constexpr double kTarget = 1.5;
  const auto key = Host::KeyOfInstances(static_cast<std::size_t>(count));
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(key);
  const std::string wanted = InstanceId(static_cast<std::size_t>(count) / 2);
  const Sides sides = Compare(
      {.name = "instances/" + std::to_string(count) + "-keep-one",
       .does =
           "select by type, read each text strictly to its end, make an object of the one whose "
           "member fits",
       .targetRatio = kTarget,
       .items = count},
      [&roads, id, wanted](benchmark::State& state) {
        const auto filter = std::make_shared<TarnConfigStore::FilterSpecObject>(id);
        filter->SetValue("id", wanted);
        Measure(state, [&] {
          auto kept = roads.library->GetInstances(filter);
          if (kept.size() != 1) {
            throw std::runtime_error("the filter does not keep one");
          }
          return kept;
        });
      },
      [&roads, id, wanted](benchmark::State& state) {
        Measure(state, [&] { return roads.floor.GetInstancesWhere(id, "id", wanted); });
      });
  sides.library->Repetitions(RepetitionsFor(count));
  sides.floor->Repetitions(RepetitionsFor(count));
}

}  // namespace

void RegisterInstances(Roads& roads, Extent extent) {
  constexpr int kMany = static_cast<int>(Host::kMany);
  const bool all = extent == Extent::ALL;
  for (const int count : all ? std::vector{10, 1000, 10000, kMany} : std::vector{10, 1000, 10000}) {
    RegisterRead(roads, Host::KeyOfInstances(static_cast<std::size_t>(count)),
                 {.name = "instances/" + std::to_string(count),
                  .does = "read the upgrade context, select by type, parse each row strictly, keep "
                          "all with metadata",
                  .items = count});
  }
  RegisterRead(roads, Host::kRewritten,
               {.name = "instances/10000-rewritten",
                .does = "the same after each row was replaced ten times, in random order",
                .items = 10000,
                .sibling = "instances/10000",
                .siblingRatio = 1.6});
  for (const int count : all ? std::vector{1000, 10000, kMany} : std::vector{1000, 10000}) {
    RegisterFiltered(roads, count);
  }
}

}  // namespace Benchmarks
