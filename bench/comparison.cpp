#include "comparison.h"

#include <utility>

namespace Benchmarks {
namespace {

std::vector<Comparison>& All() {
  static std::vector<Comparison> all;
  return all;
}

benchmark::internal::Benchmark* Register(const std::string& name, bool ownClock, Body body) {
  benchmark::internal::Benchmark* side =
      benchmark::RegisterBenchmark(name.c_str(), std::move(body));
  return ownClock ? side->UseManualTime() : side->UseRealTime();
}

}  // namespace

Sides Compare(const Comparison& comparison, Body library, Body floor) {
  All().push_back(comparison);
  return {Register(comparison.name + kLibrarySide, comparison.ownClock, std::move(library)),
          Register(comparison.name + kFloorSide, comparison.ownClock, std::move(floor))};
}

const std::vector<Comparison>& Comparisons() {
  return All();
}

}  // namespace Benchmarks
