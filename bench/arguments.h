// The benchmarks' command line.
#pragma once

#include <exception>
#include <string>
#include <vector>

namespace Benchmarks {

/// Raised once the fault has been told on standard error.
struct WrongArguments : std::exception {};

/// Ours are read here, the others handed on to Google Benchmark.
struct Arguments {
  Arguments(int argc, char** argv);

  bool contends = false;  ///< --contention: only many writers at once, who tell of nothing else
  bool countsInstructions = false;  ///< --instructions: beside the times
  std::string countedRoot;          ///< in the process that counts, the root of the host
  std::vector<std::string> choice;  ///< those that choose benchmarks
};

}  // namespace Benchmarks
