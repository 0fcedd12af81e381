// Comparisons whose sides run in processes of their own.
#pragma once

#include "child_process.h"
#include "comparison.h"

#include <string>

namespace Benchmarks {

/// Each repetition is a child, which answers with nanoseconds, or with bytes where that is the comparison's unit.
void CompareInChildren(Comparison comparison, const ChildTask& library, const ChildTask& floor,
                       const std::string& root, int children);

}  // namespace Benchmarks
