#include "benchmarks.h"
#include "comparison.h"
#include "host.h"
#include "samples.h"

namespace Benchmarks {
namespace {

constexpr double kTarget = 1.5;

void RegisterRead(Roads& roads, const std::string& name, const char* does, const std::string& key,
                  int count) {
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(key);
  Compare(
      {.name = name, .does = does, .targetRatio = kTarget, .items = count},
      [&roads, id](benchmark::State& state) {
        const auto filter = std::make_shared<TarnConfigStore::FilterSpecObject>(id);
        Measure(state, [&] { return roads.library->GetInstances(filter); });
      },
      [&roads, id](benchmark::State& state) {
        Measure(state, [&] { return roads.floor.GetInstances(id); });
      });
}

}  // namespace

void RegisterInstances(Roads& roads) {
  constexpr const char* kDoes =
      "read the upgrade context, select by type, parse each row strictly, keep all with metadata";
  for (const int count : {10, 1000, 10000}) {
    const auto key = Host::KeyOfInstances(static_cast<std::size_t>(count));
    RegisterRead(roads, "instances/" + std::to_string(count), kDoes, key, count);
  }
  RegisterRead(roads, "instances/10000-rewritten",
               "the same after each row was replaced ten times, in random order", Host::kRewritten,
               10000);
}

}  // namespace Benchmarks
