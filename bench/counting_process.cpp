#include "counting_process.h"

#include "tarnconfigstore/host.h"

#include "benchmarks.h"
#include "instruction_count.h"
#include "roads.h"

#include <benchmark/benchmark.h>

#include <cstdio>

namespace Benchmarks {
namespace {

// Tells of what failed; the counts go another way.
class FailureReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& /*context*/) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred && run.error_message != InstructionCount::kTaken) {
        std::fprintf(stderr, "%s could not be counted: %s\n", run.run_name.function_name.c_str(),
                     run.error_message.c_str());
        failed_ = true;
      }
    }
  }
  bool HasFailures() const { return failed_; }

 private:
  bool failed_ = false;
};

}  // namespace

int ServeAsCounter(const std::string& root) {
  TarnConfigStore::SetHostRoot(root);
  Roads roads(root);
  RegisterAll(roads, root, Extent::USUAL);
  FailureReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  return reporter.HasFailures() ? 1 : 0;
}

}  // namespace Benchmarks
