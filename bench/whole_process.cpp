#include "whole_process.h"

#include "benchmarks.h"
#include "child_process.h"
#include "comparison.h"
#include "instruction_count.h"
#include "measured_host.h"

#include <exception>
#include <stdexcept>
#include <vector>

namespace Benchmarks {
namespace {

constexpr const char* kName = "process/tarnctl-get";

std::vector<std::string> CommandOfTool(const std::string& root) {
  return {TARN_TOOL, "--root", root, "get", std::string("tarn/bench/") + Host::kPlain};
}

std::vector<std::string> CommandOfFloor(const std::string& root) {
  return {TARN_FLOOR_GET, root, "tarn", "bench", Host::kPlain};
}

void RunToItsEnd(const std::vector<std::string>& command) {
  if (RunProgram(command) != 0) {
    throw std::runtime_error("failed: " + command[0]);
  }
}

Body Running(const std::vector<std::string>& command) {
  return [command](benchmark::State& state) {
    // Not by Measure, which would count what this process allocates.
    try {
      RunToItsEnd(command);
      for ([[maybe_unused]] auto iteration : state) {
        RunToItsEnd(command);
      }
    } catch (const std::exception& failure) {
      state.SkipWithError(failure.what());
    }
  };
}

}  // namespace

void RegisterWholeProcess(const std::string& root) {
  constexpr double kHalfOfOnce = 5.4e6;
  constexpr int kRepetitions = 101;
  const Sides sides = Compare(
      {.name = kName,
       .does = "a process that prints one object; by hand without a command line to speak of",
       .targetInstructions = kHalfOfOnce,
       .inChildren = true},
      Running(CommandOfTool(root)), Running(CommandOfFloor(root)));
  for (benchmark::internal::Benchmark* side : {sides.library, sides.floor}) {
    side->Repetitions(kRepetitions);
  }
}

std::map<std::string, double> CountWholeProcesses(const std::string& root) {
  return {{std::string(kName) + kLibrarySide, CountWholeProcess(CommandOfTool(root))},
          {std::string(kName) + kFloorSide, CountWholeProcess(CommandOfFloor(root))}};
}

}  // namespace Benchmarks
