#include "comparison_table.h"

#include "comparison.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace Benchmarks {
namespace {

constexpr double kNothing = 0;

std::string Formatted(double value, const char* unit) {
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%.2f %s", value, unit);
  return text.data();
}

std::string Plain(double value) {
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), "%.2f", value);
  return text.data();
}

std::string Readable(double value, Unit unit) {
  if (value == kNothing) {
    return "-";
  }
  if (unit == Unit::BYTES) {
    return value < 1e4 ? Formatted(value, "B") : Formatted(value / 1e6, "MB");
  }
  if (value < 1e3) {
    return Formatted(value, "ns");
  }
  return value < 1e6 ? Formatted(value / 1e3, "us") : Formatted(value / 1e6, "ms");
}

std::string Target(const Comparison& comparison) {
  return comparison.targetRatio > 0 ? Formatted(comparison.targetRatio, "x")
                                    : Readable(comparison.targetValue, comparison.unit);
}

std::string Count(double value) {
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), value == std::floor(value) ? "%.0f" : "%.1f", value);
  return std::isnan(value) ? "-" : text.data();
}

double MedianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// What is measured in children takes none of this process's time.
bool HasCpuTime(const Comparison& comparison) {
  return comparison.unit == Unit::TIME && !comparison.ownClock;
}

const char* Verdict(const Comparison& comparison, double library, double floor) {
  if (comparison.targetRatio == 0 && comparison.targetValue == 0) {
    return comparison.targetInstructions > 0 ? "" : "for information";
  }
  if (library == kNothing || floor == kNothing) {
    return "not measured";
  }
  const bool reached = comparison.targetRatio > 0 ? library / floor <= comparison.targetRatio
                                                  : library <= comparison.targetValue;
  return reached ? "ok" : "over";
}

std::string VerdictOfInstructions(const Comparison& comparison, double library) {
  const double target = comparison.targetInstructions;
  return target == 0 || std::isnan(library)
             ? ""
             : "target " + Count(target) + (library <= target ? "  ok" : "  over");
}

}  // namespace

bool ComparisonTable::ReportContext(const Context& context) {
  std::printf("%d CPUs, %.0f MHz; medians of repetitions in random order\n\n",
              context.cpu_info.num_cpus, context.cpu_info.cycles_per_second / 1e6);
  return true;
}

void ComparisonTable::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    const std::string& name = run.run_name.function_name;
    if (run.error_occurred) {
      std::printf("%s failed: %s\n", name.c_str(), run.error_message.c_str());
      failed_ = true;
    } else if (run.run_type == Run::RT_Iteration) {
      const auto bytes = run.counters.find(kBytes);
      samples_[name].results.push_back(bytes == run.counters.end() ? run.GetAdjustedRealTime()
                                                                   : bytes->second.value);
      samples_[name].cpuTimes.push_back(run.GetAdjustedCPUTime());
    }
  }
}

double ComparisonTable::Median(const std::string& name) const {
  const auto found = samples_.find(name);
  return found == samples_.end() ? kNothing : MedianOf(found->second.results);
}

double ComparisonTable::CpuRatio(const std::string& name) const {
  const auto library = samples_.find(name + kLibrarySide);
  const auto floor = samples_.find(name + kFloorSide);
  if (library == samples_.end() || floor == samples_.end()) {
    return NAN;
  }
  return MedianOf(library->second.cpuTimes) / MedianOf(floor->second.cpuTimes);
}

double ComparisonTable::Instructions(const std::string& name) const {
  const auto found = instructions_.find(name);
  return found == instructions_.end() ? NAN : found->second;
}

void ComparisonTable::Finalize() {
  PrintRatios();
  PrintCounts();
  PrintPerItem();
  PrintSiblings();
}

void ComparisonTable::Save(const std::string& path) const {
  std::ofstream file(path);
  file << "name\tunit\titems\tlibrary\tfloor\ttarget\n";
  for (const Comparison& comparison : Comparisons()) {
    const double library = Median(comparison.name + kLibrarySide);
    const double floor = Median(comparison.name + kFloorSide);
    if (library > kNothing && floor > kNothing) {
      file << comparison.name << '\t' << (comparison.unit == Unit::BYTES ? "B" : "ns") << '\t'
           << comparison.items << '\t' << library << '\t' << floor << '\t' << comparison.targetRatio
           << '\n';
    }
  }
  if (!file.flush()) {
    throw std::runtime_error("cannot write " + path);
  }
}

void ComparisonTable::PrintRatios() const {
  std::printf("%-26s %11s %11s %7s %7s %9s\n", "operation", "library", "floor", "ratio", "cpu",
              "target");
  for (const Comparison& comparison : Comparisons()) {
    const double library = Median(comparison.name + kLibrarySide);
    const double floor = Median(comparison.name + kFloorSide);
    if (library == kNothing && floor == kNothing) {
      continue;
    }
    std::printf("%-26s %11s %11s %7.2f %7s %9s  %s\n    %s\n", comparison.name.c_str(),
                Readable(library, comparison.unit).c_str(),
                Readable(floor, comparison.unit).c_str(), floor > 0 ? library / floor : NAN,
                HasCpuTime(comparison) ? Plain(CpuRatio(comparison.name)).c_str() : "-",
                Target(comparison).c_str(), Verdict(comparison, library, floor),
                comparison.does.c_str());
  }
}

void ComparisonTable::PrintCounts() const {
  std::printf("\n%-26s %13s %13s %7s %13s %11s\n", "of one operation", "instructions", "floor's",
              "ratio", "allocations", "floor's");
  for (const Comparison& comparison : Comparisons()) {
    const std::string library = comparison.name + kLibrarySide;
    const std::string floor = comparison.name + kFloorSide;
    if (const double ratio = Instructions(library) / Instructions(floor);
        !std::isnan(ratio) || !std::isnan(KeptAllocations(library))) {
      std::printf("%-26s %13s %13s %7s %13s %11s  %s\n", comparison.name.c_str(),
                  Count(Instructions(library)).c_str(), Count(Instructions(floor)).c_str(),
                  std::isnan(ratio) ? "-" : Plain(ratio).c_str(),
                  Count(KeptAllocations(library)).c_str(), Count(KeptAllocations(floor)).c_str(),
                  VerdictOfInstructions(comparison, Instructions(library)).c_str());
    }
  }
}

void ComparisonTable::PrintPerItem() const {
  std::printf("\n");
  for (const Comparison& comparison : Comparisons()) {
    const double library = Median(comparison.name + kLibrarySide);
    const double floor = Median(comparison.name + kFloorSide);
    if (comparison.items > 1 && library > 0 && floor > 0) {
      std::printf("%-26s %11s %11s  for each of %d\n", comparison.name.c_str(),
                  Readable(library / comparison.items, comparison.unit).c_str(),
                  Readable(floor / comparison.items, comparison.unit).c_str(), comparison.items);
    }
  }
}

void ComparisonTable::PrintSiblings() const {
  for (const Comparison& comparison : Comparisons()) {
    const double library = Median(comparison.sibling + kLibrarySide);
    const double floor = Median(comparison.sibling + kFloorSide);
    if (library == kNothing || floor == kNothing) {
      continue;
    }
    const double ratio = Median(comparison.name + kLibrarySide) / library;
    std::printf("\n%s against %s: library %.2f, floor %.2f, target %.2f  %s\n",
                comparison.name.c_str(), comparison.sibling.c_str(), ratio,
                Median(comparison.name + kFloorSide) / floor, comparison.siblingRatio,
                ratio <= comparison.siblingRatio ? "ok" : "over");
  }
}

}  // namespace Benchmarks
