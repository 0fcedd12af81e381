// How often memory is allocated, which no other process has a say in.
#pragma once

#include <cstdint>

namespace Benchmarks {

/// Allocations of this thread so far, those of SQLite and of the C++ library included.
std::uint64_t CountAllocations() noexcept;

/// Allocations of one operation, as a mean of a few.
template <class Prepare, class Operation>
double AllocationsOf(Prepare prepare, Operation operation) {
  constexpr int kRuns = 2;
  std::uint64_t counted = 0;
  for (int i = 0; i < kRuns; ++i) {
    prepare();
    const std::uint64_t before = CountAllocations();
    operation();
    counted += CountAllocations() - before;
  }
  return static_cast<double>(counted) / kRuns;
}

}  // namespace Benchmarks
