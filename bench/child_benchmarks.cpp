#include "child_benchmarks.h"

#include <exception>

namespace Benchmarks {
namespace {

Body MeasuringChildren(const ChildTask& task, const std::string& root, Unit unit) {
  return [&task, root, unit](benchmark::State& state) {
    constexpr double kNanosecondsPerSecond = 1e9;
    try {
      for ([[maybe_unused]] auto iteration : state) {
        const double answer = MeasureInChild(task, root);
        if (unit == Unit::BYTES) {
          state.counters[kBytes] = answer;
        } else {
          state.SetIterationTime(answer / kNanosecondsPerSecond);
        }
      }
    } catch (const std::exception& failure) {
      state.SkipWithError(failure.what());
    }
  };
}

}  // namespace

void CompareInChildren(Comparison comparison, const ChildTask& library, const ChildTask& floor,
                       const std::string& root, int children) {
  comparison.ownClock = true;
  comparison.inChildren = true;
  const Sides sides = Compare(comparison, MeasuringChildren(library, root, comparison.unit),
                              MeasuringChildren(floor, root, comparison.unit));
  for (benchmark::internal::Benchmark* side : {sides.library, sides.floor}) {
    side->Iterations(1)->Repetitions(children);
  }
}

}  // namespace Benchmarks
