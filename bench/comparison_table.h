// The table that the benchmarks end in.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace Benchmarks {

/// Collects the repetitions of both sides of each comparison and prints their medians side by side.
class ComparisonTable : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

  /// True when a benchmark failed.
  bool HasFailures() const { return failed_; }

 private:
  double Median(const std::string& name) const;
  void PrintPerItem() const;

  std::map<std::string, std::vector<double>> samples_;
  bool failed_ = false;
};

}  // namespace Benchmarks
