#include "tarnconfigstore/apply_next_boot.h"

#include "failure.h"
#include "given/object_name.h"
#include "shown/descriptions.h"
#include "verbs/verbs.h"

#include <algorithm>
#include <string>

namespace tarnctl {
namespace {

using TarnConfigStore::AppliedChange;
using TarnConfigStore::ApplyOptions;
using TarnConfigStore::ApplyResult;
using TarnConfigStore::ConflictDecision;
using TarnConfigStore::UnappliedChange;

constexpr const char* kRest = "--rest";
constexpr const char* kMerge = "--merge";
constexpr const char* kStaged = "--staged";
constexpr const char* kCurrent = "--current";

// What the entry BOOT_MODE says when nothing is staged.
constexpr const char* kNothingStaged = "0";

ApplyOptions OptionsOf(const Given& given) {
  const bool merges = given.Has(kMerge);
  if (!merges && (given.Has(kStaged) || given.Has(kCurrent))) {
    throw ToolError(ExitCode::USAGE, std::string(kStaged) + " and " + kCurrent +
                                         " decide the conflicts of " + kMerge);
  }
  ApplyOptions options;
  options.applyRest = given.Has(kRest);
  options.bootModeWhenDone = kNothingStaged;
  options.merge = merges ? TarnConfigStore::ApplyMerge::MERGE : TarnConfigStore::ApplyMerge::NONE;
  options.conflicts = given.Has(kStaged)    ? ConflictDecision::STAGED
                      : given.Has(kCurrent) ? ConflictDecision::CURRENT
                                            : ConflictDecision::NONE;
  return options;
}

// What merging has to say is left out where nobody asked for it.
Json::Value DescribeResult(const ApplyResult& result, bool merges, JsonMaker& make) {
  const auto beginning = [&make](const auto& change) {
    return make.Object("object", FormatObject(change.id), "action", NameAction(change.action));
  };
  Json::Value applied = make.List(result.applied, [&](const AppliedChange& change) {
    Json::Value described = beginning(change);
    if (merges) {
      make.Add(described, "merged", change.merged);
      make.Add(described, "decided", DescribeConflicts(change.decided, make));
      make.Add(described, "takenBack", change.takenBack);
    }
    return described;
  });
  Json::Value staged = make.List(result.staged, [&](const UnappliedChange& change) {
    Json::Value described = beginning(change);
    make.Add(described, "findings", ListFindings(change.findings, make));
    if (merges) {
      make.Add(described, "conflicts", DescribeConflicts(change.conflicts, make));
    }
    return described;
  });
  return make.Object("applied", std::move(applied), "staged", std::move(staged));
}

// What keeps changes staged, and what can be done about it.
Failure DescribeRefusal(const ApplyResult& result, const ApplyOptions& options) {
  const auto count = [&result](const auto& holds) {
    return std::count_if(result.staged.begin(), result.staged.end(), holds);
  };
  const auto unfit = count([](const UnappliedChange& change) { return !change.findings.empty(); });
  const auto conflicting = count([&options](const UnappliedChange& change) {
    return !change.conflicts.empty() && options.conflicts == ConflictDecision::NONE;
  });
  const std::string all =
      " of " + std::to_string(result.applied.size() + result.staged.size()) + " staged changes ";
  std::string text = unfit == 0 ? "" : std::to_string(unfit) + all + "cannot be applied";
  if (conflicting != 0) {
    text += (text.empty() ? "" : "; ") + std::to_string(conflicting) + all;
    text.append("conflict with what was written since they were staged: ").append(kStaged);
    text.append(" or ").append(kCurrent).append(" decides");
  }
  if (!options.applyRest) {
    text.append("; nothing was applied: ").append(kRest).append(" applies the others");
  }
  return {
      unfit != 0 ? ExitCode::INVALID : ExitCode::CONFLICT, TarnConfigStore::CS_GENERIC, text, {}};
}

void SayNotMerged(const ApplyResult& result) {
  for (const AppliedChange& change : result.applied) {
    if (!change.merged) {
      Say(FormatObject(change.id) +
          " was applied as it was staged: there is no telling what was changed since");
    }
  }
}

// Makes the staged changes current, and ends the boot mode that staging began when nothing stays
// staged.
void ApplyStaged(const Given& given, const Output& output) {
  const ApplyOptions options = OptionsOf(given);
  const bool merges = given.Has(kMerge);
  const ApplyResult result = TarnConfigStore::ApplyNextBootConfig(options);
  JsonMaker make;
  output.PrintLenient(DescribeResult(result, merges, make));
  if (merges) {
    SayNotMerged(result);
  }
  if (!result.staged.empty()) {
    Failure refusal = DescribeRefusal(result, options);
    refusal.isTold = output.AsJson();
    throw ToolError(std::move(refusal));
  }
}

}  // namespace

Verb BootApplyVerb() {
  return {.name = "apply",
          .help = "Make the staged changes current: all of them, or none",
          .arguments = {Flag(kRest, "Apply those that fit even when others do not"),
                        Flag(kMerge,
                             "Keep what was changed since a change was staged, in other members "
                             "than the change itself"),
                        Flag(kStaged, "With --merge: what is staged counts where both changed"),
                        Flag(kCurrent, "With --merge: what is current counts where both changed",
                             {kStaged})},
          .note =
              "Ends with 4 where changes do not fit their types and stay staged, and with 5 where "
              "they only conflict with what was changed since.",
          .run = ApplyStaged,
          .writes = true};
}

}  // namespace tarnctl
