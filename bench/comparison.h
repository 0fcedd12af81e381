// One operation, measured on the library's road and on the floor's.
#pragma once

#include "allocation_count.h"
#include "instruction_count.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <exception>
#include <functional>
#include <string>
#include <vector>

namespace Benchmarks {

enum class Unit { TIME, BYTES };

/// What is measured, and what it should come to.
struct Comparison {
  std::string name;
  std::string does;               ///< what both sides do
  double targetRatio = 0;         ///< of library to floor; 0 where another target is given
  double targetValue = 0;         ///< of the library, in bytes
  double targetInstructions = 0;  ///< of the library
  Unit unit = Unit::TIME;
  int items = 1;            ///< objects that one operation handles
  bool ownClock = false;    ///< the bodies tell how long each iteration took
  bool inChildren = false;  ///< the bodies start processes, which are what is measured
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

/// How often the side that is measured allocates memory in one operation. One count is enough: they don't differ.
bool WantsAllocations();
void KeepAllocations(double count);
/// The same of any side; not a number where it was not counted.
double KeptAllocations(const std::string& side);

template <class Prepare, class Operation>
void CountAllocationsOnce(Prepare prepare, Operation operation) {
  if (WantsAllocations()) {
    KeepAllocations(AllocationsOf(prepare, operation));
  }
}

/// Runs one operation again and again, and fails the benchmark if it throws. The first run is not
/// measured: whatever was measured before may have taken the pages out of the caches.
template <class Operation>
void Measure(benchmark::State& state, Operation operation) {
  try {
    operation();
    if (InstructionCount::IsTaken()) {
      // Keeping a count takes longer than a tick of the clock: what is done once in a tick is done before.
      InstructionCount::Take(
          state, [&] { operation(); }, operation);
      return;
    }
    CountAllocationsOnce([] {}, operation);
    for ([[maybe_unused]] auto iteration : state) {
      auto result = operation();
      benchmark::DoNotOptimize(result);
    }
  } catch (const std::exception& failure) {
    state.SkipWithError(failure.what());
  }
}

/// The same for an operation that wants something prepared each time, which is not measured. Of a
/// comparison whose bodies have a clock of their own.
template <class Prepare, class Operation>
void MeasurePrepared(benchmark::State& state, Prepare prepare, Operation operation) {
  using Clock = std::chrono::steady_clock;
  try {
    if (InstructionCount::IsTaken()) {
      InstructionCount::Take(state, prepare, operation);
      return;
    }
    CountAllocationsOnce(prepare, operation);
    for ([[maybe_unused]] auto iteration : state) {
      prepare();
      const Clock::time_point start = Clock::now();
      operation();
      state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    }
  } catch (const std::exception& failure) {
    state.SkipWithError(failure.what());
  }
}

}  // namespace Benchmarks
