#include "comparison.h"

#include <utility>

namespace Benchmarks {
namespace {

std::vector<Comparison>& All() {
  static std::vector<Comparison> all;
  return all;
}

benchmark::internal::Benchmark* Register(const std::string& name, Body body) {
  return benchmark::RegisterBenchmark(name.c_str(), std::move(body))->UseRealTime();
}

}  // namespace

Sides Compare(const Comparison& comparison, Body library, Body floor) {
  All().push_back(comparison);
  return {Register(comparison.name + kLibrarySide, std::move(library)),
          Register(comparison.name + kFloorSide, std::move(floor))};
}

const std::vector<Comparison>& Comparisons() {
  return All();
}

}  // namespace Benchmarks
