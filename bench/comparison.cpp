#include "comparison.h"

#include <utility>

namespace Benchmarks {
namespace {

std::vector<Comparison>& All() {
  static std::vector<Comparison> all;
  return all;
}

// Counting is slow, and what many take tells no more than what fewer do.
bool IsCounted(const Comparison& comparison) {
  constexpr int kMostItems = 1000;
  return comparison.unit == Unit::TIME && !comparison.inChildren && comparison.items <= kMostItems;
}

benchmark::internal::Benchmark* Register(const Comparison& comparison, const char* whose,
                                         Body body) {
  const std::string name = comparison.name + whose;
  if (InstructionCount::IsTaken()) {
    body = [name, items = comparison.items, isCounted = IsCounted(comparison),
            measured = std::move(body)](benchmark::State& state) {
      if (isCounted && InstructionCount::Announce(name, items)) {
        measured(state);
      } else {
        state.SkipWithError(InstructionCount::kTaken);
      }
    };
  }
  benchmark::internal::Benchmark* side =
      benchmark::RegisterBenchmark(name.c_str(), std::move(body));
  return comparison.ownClock ? side->UseManualTime() : side->UseRealTime();
}

}  // namespace

Sides Compare(const Comparison& comparison, Body library, Body floor) {
  All().push_back(comparison);
  return {Register(comparison, kLibrarySide, std::move(library)),
          Register(comparison, kFloorSide, std::move(floor))};
}

const std::vector<Comparison>& Comparisons() {
  return All();
}

}  // namespace Benchmarks
