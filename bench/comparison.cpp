#include "comparison.h"

#include <cmath>
#include <map>
#include <utility>

namespace Benchmarks {
namespace {

std::vector<Comparison>& All() {
  static std::vector<Comparison> all;
  return all;
}

std::map<std::string, double>& Allocations() {
  static std::map<std::string, double> allocations;
  return allocations;
}

std::string& Measured() {
  static std::string side;
  return side;
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
  benchmark::internal::Benchmark* side = benchmark::RegisterBenchmark(
      name.c_str(), [name, measured = std::move(body)](benchmark::State& state) {
        Measured() = name;
        measured(state);
      });
  return comparison.ownClock ? side->UseManualTime() : side->UseRealTime();
}

}  // namespace

Sides Compare(const Comparison& comparison, Body library, Body floor) {
  All().push_back(comparison);
  return {Register(comparison, kLibrarySide, std::move(library)),
          Register(comparison, kFloorSide, std::move(floor))};
}

bool WantsAllocations() {
  return !Allocations().contains(Measured());
}

void KeepAllocations(double count) {
  Allocations()[Measured()] = count;
}

double KeptAllocations(const std::string& side) {
  const auto found = Allocations().find(side);
  return found == Allocations().end() ? NAN : found->second;
}

const std::vector<Comparison>& Comparisons() {
  return All();
}

}  // namespace Benchmarks
