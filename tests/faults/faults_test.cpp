// Every operation of the library survives every fault: what it did is done or undone, nothing is kept
// locked, the next call works, and nobody's process ends.
#include "faults/sweep.h"
#include "support/sanitized.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace Faults {
namespace {

// What there is has the counts printed, too; "places" is what is done where nothing is asked.
std::string Asked() {
  const char* const extent = std::getenv("TARN_FAULTS");
  return extent == nullptr ? "" : extent;
}

Extent ExtentAsked() {
  return Asked() == "whole"        ? Extent::WHOLE
         : Asked() == "bounded"    ? Extent::BOUNDED
         : TestSupport::kSanitized ? Extent::QUICK
                                   : Extent::PLACES;
}

class EveryCallFails : public testing::TestWithParam<OperationGroup> {};

TEST_P(EveryCallFails, AndLeavesTheHostAsBeforeOrAsAfter) {
  Sweep sweep(ExtentAsked());
  ASSERT_EQ(sweep.Failure(), "");
  const char* const only = std::getenv("TARN_FAULTS_OPERATION");
  for (const Operation& operation : GetParam().operations) {
    if (only != nullptr && std::string(only) != operation.name) {
      continue;
    }
    const SharedReference reference = sweep.Learn(operation);
    ASSERT_TRUE(reference) << operation.name << " fails by itself";
    for (const Sort& sort : kSorts) {
      // A sanitizer takes memory of its own where a thread starts, and ends the process without.
      if (TestSupport::kSanitized && operation.startsAThread && sort.kind == Kind::ALLOCATION) {
        continue;
      }
      Tally sum;
      for (const Start start : {Start::WARM, Start::FRESH}) {
        for (const bool stays : {false, true}) {
          if ((stays && !sort.mayStay) || (start == Start::WARM && operation.leaves)) {
            continue;
          }
          const Tally tally = sweep.Run(operation, **reference, sort, stays, start);
          EXPECT_TRUE(tally.problems.empty()) << tally.problems;
          sum.points += tally.points;
          sum.before += tally.before;
          sum.after += tally.after;
        }
      }
      EXPECT_TRUE(sum.points > 0 || sort.kind != Kind::ALLOCATION) << operation.name;
      if (!Asked().empty()) {
        std::printf("%-30s %-12s %6u points %6u before %6u after\n", operation.name, sort.name,
                    sum.points, sum.before, sum.after);
        std::fflush(stdout);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Of, EveryCallFails, testing::ValuesIn(Groups()),
                         [](const auto& group) { return std::string(group.param.name); });

}  // namespace

// In a test's name.
void PrintTo(const OperationGroup& group, std::ostream* out) {
  *out << group.name;
}

}  // namespace Faults
