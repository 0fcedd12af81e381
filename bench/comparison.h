// One operation, measured on the library's road and on the floor's.
#pragma once

#include <benchmark/benchmark.h>

#include <exception>
#include <functional>
#include <string>
#include <vector>

namespace Benchmarks {

enum class Unit { TIME, BYTES };

/// What is measured, and what it should come to.
struct Comparison {
  std::string name;
  std::string does;        ///< what both sides do
  double targetRatio = 0;  ///< of library to floor; 0 where another target is given
  double targetValue = 0;  ///< of the library, in bytes
  Unit unit = Unit::TIME;
  int items = 1;            ///< objects that one operation handles
  bool ownClock = false;    ///< the bodies tell how long each iteration took
  std::string sibling{};    ///< a comparison that this one should stay close to, on both sides
  double siblingRatio = 0;  ///< how close
};

using Body = std::function<void(benchmark::State&)>;

/// The two benchmarks of a comparison, to be configured further.
struct Sides {
  benchmark::internal::Benchmark* library;
  benchmark::internal::Benchmark* floor;
};

/// Registers both sides, as "NAME/library" and "NAME/floor"; the table puts them side by side
/// again.
Sides Compare(const Comparison& comparison, Body library, Body floor);

/// All comparisons so far, in the order of their registration.
const std::vector<Comparison>& Comparisons();

/// The counter that carries the result of a comparison in bytes.
constexpr const char* kBytes = "bytes";

constexpr const char* kLibrarySide = "/library";
constexpr const char* kFloorSide = "/floor";

/// Runs one operation again and again, and fails the benchmark if it throws. The first run is not
/// measured: whatever was measured before may have taken the pages out of the caches.
template <class Operation>
void Measure(benchmark::State& state, Operation operation) {
  try {
    operation();
    for ([[maybe_unused]] auto iteration : state) {
      auto result = operation();
      benchmark::DoNotOptimize(result);
    }
  } catch (const std::exception& failure) {
    state.SkipWithError(failure.what());
  }
}

}  // namespace Benchmarks
