// Measures the library against the same road written by hand, on a host of its own under the
// current directory. Takes Google Benchmark's arguments; or --contention alone, for many writers at
// once, who tell of nothing but themselves.
#include "benchmarks.h"
#include "child_process.h"
#include "comparison_table.h"
#include "conditions.h"
#include "contention.h"
#include "measured_host.h"
#include "roads.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

namespace {

// Many repetitions, each shorter than the time that the kernel gives a process in one go: one that
// another process interrupts is an outlier that the median drops, and both sides see the same
// noise. Ours come first: the caller's win.
std::vector<char*> WithDefaults(int argc, char** argv) {
  static std::string defaults[] = {"--benchmark_repetitions=401", "--benchmark_min_time=0.0005",
                                   "--benchmark_enable_random_interleaving=true"};
  std::vector<char*> arguments = {argv[0]};
  for (std::string& argument : defaults) {
    arguments.push_back(argument.data());
  }
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  arguments.push_back(nullptr);
  return arguments;
}

int RunAll() {
  using namespace Benchmarks;
  const Host host;
  Roads roads(host.Root());
  CheckSameAnswers(roads);
  const bool holds = CheckConditions(roads, host.Root());
  RegisterGets(roads);
  RegisterSets(roads, host.Root());
  RegisterInstances(roads);
  RegisterBulkWrites(roads, host.Root());
  RegisterNotifications(roads);
  RegisterStagedChanges(roads);
  RegisterDocuments(roads, host.Root());
  RegisterFreshProcess(host.Root());
  RegisterHeldMemory(host.Root());
  RegisterLargeObjects();
  RegisterLargeNeighbours(roads);
  RegisterValidation();
  ComparisonTable table;
  benchmark::RunSpecifiedBenchmarks(&table);
  return holds && !table.HasFailures() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (Benchmarks::ServeAsChild(argc, argv)) {
      return 0;
    }
    if (argc == 2 && std::strcmp(argv[1], "--contention") == 0) {
      const Benchmarks::Host host;
      return Benchmarks::MeasureContention(host.Root()) ? 0 : 1;
    }
    std::vector<char*> arguments = WithDefaults(argc, argv);
    int count = static_cast<int>(arguments.size()) - 1;
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
      return 2;
    }
    return RunAll();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "tarn_bench: %s\n", failure.what());
    return 1;
  }
}
