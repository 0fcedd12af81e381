// One operation, measured on the library's road and on the floor's.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace Benchmarks {

enum class Unit { TIME, BYTES };

/// What is measured, and what it should come to.
struct Comparison {
  std::string name;
  std::string does;        ///< what both sides do
  double targetRatio = 0;  ///< of library to floor; 0 where another target is given
  double targetValue = 0;  ///< of the library, in bytes
  Unit unit = Unit::TIME;
  int items = 1;          ///< objects that one operation handles
  bool ownClock = false;  ///< the bodies tell how long each iteration took
};

using Body = std::function<void(benchmark::State&)>;

/// Registers both sides as benchmarks "NAME/library" and "NAME/floor", which the table puts side by
/// side again. The returned ones can be configured further.
struct Sides {
  benchmark::internal::Benchmark* library;
  benchmark::internal::Benchmark* floor;
};
Sides Compare(const Comparison& comparison, Body library, Body floor);

/// All comparisons so far, in the order of their registration.
const std::vector<Comparison>& Comparisons();

/// The counter that carries the result of a comparison in bytes.
constexpr const char* kBytes = "bytes";

constexpr const char* kLibrarySide = "/library";
constexpr const char* kFloorSide = "/floor";

/// Runs one operation again and again, and fails the benchmark if it throws.
template <class Operation>
void Measure(benchmark::State& state, Operation operation) {
  try {
    for ([[maybe_unused]] auto iteration : state) {
      auto result = operation();
      benchmark::DoNotOptimize(result);
    }
  } catch (const std::exception& failure) {
    state.SkipWithError(failure.what());
  }
}

}  // namespace Benchmarks
