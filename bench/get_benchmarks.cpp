#include "benchmarks.h"
#include "comparison.h"
#include "measured_host.h"
#include "samples.h"

namespace Benchmarks {
namespace {

void RegisterGet(Roads& roads, const char* name, const char* does, const char* key, double target) {
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(key);
  Compare(
      {.name = name, .does = does, .targetRatio = target},
      [&roads, id](benchmark::State& state) {
        Measure(state, [&] { return roads.library->Get(id); });
      },
      [&roads, id](benchmark::State& state) {
        Measure(state, [&] { return roads.floor.Get(id); });
      });
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
}

}  // namespace Benchmarks
