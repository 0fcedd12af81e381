#include "benchmarks.h"
#include "comparison.h"
#include "host.h"
#include "samples.h"

namespace Benchmarks {
namespace {

// Reads of many take long enough.
int RepetitionsFor(int count) {
  return count >= 10000 ? 31 : count >= 1000 ? 101 : 401;
}

void RegisterRead(Roads& roads, const std::string& key, Comparison comparison) {
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(key);
  comparison.targetRatio = 1.5;
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

}  // namespace

void RegisterInstances(Roads& roads) {
  for (const int count : {10, 1000, 10000}) {
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
}

}  // namespace Benchmarks
