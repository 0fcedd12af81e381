// Measures the library against the same road written by hand, on a host of its own under the
// current directory. Takes Google Benchmark's arguments, and ours (arguments.h).
#include "arguments.h"
#include "benchmarks.h"
#include "child_process.h"
#include "comparison_table.h"
#include "conditions.h"
#include "contention.h"
#include "counting_process.h"
#include "instruction_count.h"
#include "measured_host.h"
#include "roads.h"
#include "sharing.h"
#include "whole_process.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>
#include <map>
#include <string>
#include <utility>

namespace {

int RunAll(const Benchmarks::Arguments& arguments) {
  using namespace Benchmarks;
  const Host host;
  ComparisonTable table;
  if (arguments.countsInstructions) {
    std::map<std::string, double> counts = CountInstructions(host.Root(), arguments.choice);
    counts.merge(CountWholeProcesses(host.Root()));
    table.SetInstructions(std::move(counts));
  }
  Roads roads(host.Root());
  CheckSameAnswers(roads);
  bool holds = CheckConditions(roads, host.Root());
  RegisterAll(roads, host.Root(), arguments.extent);
  benchmark::RunSpecifiedBenchmarks(&table);
  if (!arguments.results.empty()) {
    table.Save(arguments.results);
  }
  if (arguments.extent == Extent::ALL) {
    holds &= MeasureSharing(host.Root());
  }
  return holds && !table.HasFailures() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (Benchmarks::ServeAsChild(argc, argv)) {
      return 0;
    }
    const Benchmarks::Arguments arguments(argc, argv);
    if (!arguments.countedRoot.empty()) {
      return Benchmarks::ServeAsCounter(arguments.countedRoot);
    }
    if (arguments.contends) {
      const Benchmarks::Host host;
      return Benchmarks::MeasureContention(host.Root()) ? 0 : 1;
    }
    if (arguments.shares) {
      const Benchmarks::Host host;
      return Benchmarks::MeasureSharing(host.Root()) ? 0 : 1;
    }
    return RunAll(arguments);
  } catch (const Benchmarks::WrongArguments&) {
    return 2;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "tarn_bench: %s\n", failure.what());
    return 1;
  }
}
