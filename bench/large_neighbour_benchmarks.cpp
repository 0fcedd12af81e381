// Small objects beside a large one, against the same without it: both by the library.
#include "benchmarks.h"
#include "comparison.h"
#include "measured_host.h"
#include "samples.h"

#include <algorithm>
#include <memory>
#include <random>
#include <utility>

namespace Benchmarks {
namespace {

using TarnConfigStore::ConfigStoreObject;

// What one repetition comes to, on both sides: pages are read once, so who does more of them comes
// to a better mean.
constexpr int kTurns = 400;

// Some of the small ones, in the same random order on both sides.
std::vector<std::string> IdsInRandomOrder() {
  std::vector<std::string> ids;
  for (std::size_t i = 0; i < Host::kNeighbours; ++i) {
    ids.push_back(InstanceId(i));
  }
  std::shuffle(ids.begin(), ids.end(), std::mt19937(1));
  ids.resize(kTurns);
  return ids;
}

Body Gets(Roads& roads, const char* key) {
  return [&roads, key](benchmark::State& state) {
    std::vector<TarnConfigStore::ConfigStoreObjectId> ids;
    for (const std::string& id : IdsInRandomOrder()) {
      ids.push_back(IdOf(key, id));
    }
    std::size_t turn = 0;
    Measure(state, [&] { return roads.library->Get(ids[++turn % ids.size()]); });
  };
}

Body Sets(Roads& roads, const char* key) {
  return [&roads, key](benchmark::State& state) {
    std::vector<std::shared_ptr<ConfigStoreObject>> objects;
    static unsigned variant = 0;
    ++variant;
    for (const std::string& id : IdsInRandomOrder()) {
      objects.push_back(std::make_shared<ConfigStoreObject>(IdOf(key, id)));
      objects.back()->SetData(ObjectText(variant, id).c_str());
    }
    TarnConfigStore::ConfigStoreTransaction transaction(roads.library);
    std::size_t turn = 0;
    Measure(state, [&] {
      roads.library->Set(objects[++turn % objects.size()], TarnConfigStore::EXTERNAL);
      return turn;
    });
    transaction.Commit();
  };
}

void Register(const char* name, const char* does, Body beside, Body without) {
  constexpr double kTarget = 1.2;
  constexpr int kRepetitions = 101;
  const Sides sides = Compare({.name = name, .does = does, .targetRatio = kTarget},
                              std::move(beside), std::move(without));
  for (benchmark::internal::Benchmark* side : {sides.library, sides.floor}) {
    side->Iterations(kTurns)->Repetitions(kRepetitions);
  }
}

}  // namespace

void RegisterLargeNeighbours(Roads& roads) {
  Register("get/beside-4MB",
           "Get of one of 10,000 instances among which one has 4 MB, against the same without it",
           Gets(roads, Host::kBesideLarge), Gets(roads, Host::kWithoutLarge));
  Register("set/beside-4MB", "Set of one of them, in a transaction",
           Sets(roads, Host::kBesideLarge), Sets(roads, Host::kWithoutLarge));
}

}  // namespace Benchmarks
