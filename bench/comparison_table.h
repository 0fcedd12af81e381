// The table that the benchmarks end in.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Benchmarks {

/// Collects the repetitions of both sides of each comparison and prints their medians side by side.
/// Results are real time; the ratio of processor time stands beside it, since other processes
/// lengthen the real time of whatever takes longer than its turn.
class ComparisonTable : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

  /// What CountInstructions told, to be printed beside the times.
  void SetInstructions(std::map<std::string, double> instructions) {
    instructions_ = std::move(instructions);
  }

  /// Writes the medians, one line of fields between tabs for each comparison, in nanoseconds or
  /// bytes. Raises std::runtime_error when it cannot.
  void Save(const std::string& path) const;

  /// True when a benchmark failed.
  bool HasFailures() const { return failed_; }

 private:
  struct Samples {
    std::vector<double> results;
    std::vector<double> cpuTimes;
  };

  double Median(const std::string& name) const;
  double CpuRatio(const std::string& name) const;
  double Instructions(const std::string& name) const;
  void PrintRatios() const;
  void PrintCounts() const;
  void PrintPerItem() const;
  void PrintSiblings() const;

  std::map<std::string, Samples> samples_;
  std::map<std::string, double> instructions_;
  bool failed_ = false;
};

}  // namespace Benchmarks
