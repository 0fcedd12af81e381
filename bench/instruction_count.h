// How many instructions an operation takes, which no other process has a say in: counted by valgrind's
// callgrind in a process of its own, which runs on the same host.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace Benchmarks {

class InstructionCount {
 public:
  /// True in the process that counts, where nothing is timed.
  static bool IsTaken();

  /// Counts a few runs under the name of the side that is measured, and ends the benchmark.
  template <class Prepare, class Operation>
  static void Take(benchmark::State& state, Prepare prepare, Operation operation) {
    Begin();
    for (int i = 0; i < Runs(); ++i) {
      Clear();
      prepare();
      BeginRun();
      operation();
      EndRun();
    }
    state.SkipWithError(kTaken);
  }

  /// What a benchmark that was counted "fails" with.
  static constexpr const char* kTaken = "counted";

  /// Names what is counted next. False when it has been counted.
  static bool Announce(const std::string& name, int items);

 private:
  static int Runs();
  static void Begin();
  static void Clear();
  static void BeginRun();
  static void EndRun();
};

/// Starts a process that counts, and returns the instructions of one operation by the names of the
/// sides. Raises std::runtime_error where valgrind is not there, or that process failed.
/// \param filter  arguments of Google Benchmark's that choose benchmarks
std::map<std::string, double> CountInstructions(const std::string& root,
                                                const std::vector<std::string>& filter);

/// The instructions of a process from its start to its end. Raises as the above.
double CountWholeProcess(const std::vector<std::string>& command);

/// The mark of such a process; its first argument, before the host's root.
constexpr const char* kCountInstructions = "--count-instructions";

}  // namespace Benchmarks
