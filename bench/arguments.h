// The benchmarks' command line.
#pragma once

#include "benchmarks.h"

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
  bool shares = false;    ///< --sharing: only processes that share the store
  Extent extent = Extent::USUAL;    ///< --all: what takes minutes, too
  bool countsInstructions = false;  ///< --instructions: beside the times
  std::string results;              ///< --results=FILE: where the medians go, for plot.py
  std::string countedRoot;          ///< in the process that counts, the root of the host
  std::vector<std::string> choice;  ///< those that choose benchmarks
};

}  // namespace Benchmarks
