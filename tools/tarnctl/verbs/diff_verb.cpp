#include "tarnconfigstore/drift.h"
#include "tarnconfigstore/host.h"

#include "failure.h"
#include "given/given_document.h"
#include "given/object_name.h"
#include "shown/drift_text.h"
#include "shown/progress.h"
#include "store/prefix_contents.h"
#include "store/stored_objects.h"
#include "table/change_tables.h"
#include "verbs/verbs.h"

#include <algorithm>
#include <optional>
#include <unistd.h>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::DriftObject;
using TarnConfigStore::DriftOptions;
using TarnConfigStore::ReferenceState;

constexpr const char* kWith = "--with";
constexpr const char* kComplete = "--complete";

constexpr std::string_view kRootWord = "root:";

using Differences = std::vector<DriftObject>;

std::optional<ReferenceState> StateNamed(std::string_view name) {
  return name == "defaults"  ? std::optional(ReferenceState::DEFAULTS)
         : name == "shipped" ? std::optional(ReferenceState::SHIPPED)
         : name == "staged"  ? std::optional(ReferenceState::NEXT_BOOT)
                             : std::nullopt;
}

// Makes another host's root this process's, for as long as it lives.
class OtherRoot {
 public:
  explicit OtherRoot(const std::string& root) { TarnConfigStore::SetHostRoot(root); }
  ~OtherRoot() { TarnConfigStore::SetHostRoot(own_); }
  OtherRoot(const OtherRoot&) = delete;
  OtherRoot& operator=(const OtherRoot&) = delete;

 private:
  const std::string own_ = TarnConfigStore::GetHostRoot();
};

// What is not compared must not pass for equal.
struct Compared {
  Differences differences;
  Findings leftOut;
};

Compared CompareWithState(ReferenceState state, const DriftOptions& options) {
  Compared compared{TarnConfigStore::ComputeDriftFrom(state, options), {}};
  AddObjects(FindUnknown(options.prefix), kNotInstalled, compared.leftOut);
  return compared;
}

Compared CompareWithRoot(const std::string& root, DriftOptions options) {
  if (root.empty()) {  // an unset variable must not mean the real host
    throw ToolError(ExitCode::USAGE, std::string(kRootWord) + " takes the name of a directory");
  }
  Compared compared;
  std::string document;
  try {
    const OtherRoot other(root);
    RequireStore();
    TarnConfigStore::ExportOptions exported;
    exported.reveal = true;  // what is masked says nothing
    const auto report = TarnConfigStore::ExportConfig(
        options.prefix, exported, [&](std::string_view piece) { document += piece; });
    AddObjects(report.unconfirmed, "under " + root + ", no boot has confirmed it",
               compared.leftOut);
  } catch (...) {
    Failure failure = DescribeCurrentException();
    failure.message = "under " + root + ": " + failure.message;
    throw ToolError(std::move(failure));
  }
  options.complete = true;
  options.longest = std::max(options.longest, document.size());
  LocateInDocument(
      {}, "what is stored under " + root + " does not fit the types of this host",
      [&] { compared.differences = TarnConfigStore::ComputeDrift(document, options); });
  return compared;
}

Compared CompareWithFile(const std::string& path, DriftOptions options) {
  const GivenData document = ReadDocument(path, YamlNull::OF_TYPE, options.longest);
  options.longest = std::max(options.longest, document.Text().size());
  Compared compared;
  LocateInDocument(document, kRefused, [&] {
    compared.differences = TarnConfigStore::ComputeDrift(document.Text(), options);
  });
  return compared;
}

Compared Compare(const std::string& with, const DriftOptions& options) {
  const Progress progress("comparing with " + with);
  if (const auto state = StateNamed(with)) {
    return CompareWithState(*state, options);
  }
  return with.starts_with(kRootWord) ? CompareWithRoot(with.substr(kRootWord.size()), options)
                                     : CompareWithFile(with, options);
}

// A terminal gets the table where nothing of it would be cut: what differs may stand at the end of a
// value.
void Print(const Differences& differences, std::optional<ColumnTable> table, const Output& output) {
  if (table) {
    AddDrift(differences, *table);
  }
  if (table && table->IsWanted() && !differences.empty()) {
    table->End();
    return;
  }
  if (!output.AsData()) {
    const Terminal terminal = Terminal::Of(STDOUT_FILENO);
    std::string lines;
    for (const DriftObject& object : differences) {
      lines += DescribeDrift(object, terminal);
    }
    output.PrintText(lines);
    return;
  }
  JsonMaker make;
  output.PrintLenient(make.List(
      differences, [&make](const DriftObject& object) { return Describe(object, make); }));
}

void Diff(const Given& given, const Output& output) {
  const std::string& prefix = given.Text(kPrefix);
  DriftOptions options;
  options.prefix = ParsePrefixIfGiven(prefix);
  options.complete = given.Has(kComplete);
  options.reveal = Reveals(given);
  options.longest = LimitOf(given);
  auto table = ColumnTable::If(given, output, kDriftColumns);
  RequireStore();
  const Compared compared = Compare(given.Text(kWith), options);
  // A misspelled name has no differences either.
  if (compared.differences.empty() && !prefix.empty() && !HoldsAnything(options.prefix)) {
    throw ToolError(ExitCode::NOT_FOUND, "there is nothing under " + prefix + " to compare");
  }
  Print(compared.differences, std::move(table), output);
  if (!compared.leftOut.empty()) {
    throw ToolError(compared.differences.empty() ? ExitCode::FAILED : ExitCode::CONFLICT,
                    "not everything was compared", TarnConfigStore::CS_GENERIC, compared.leftOut);
  }
  if (!compared.differences.empty()) {
    throw ToolError({ExitCode::CONFLICT, TarnConfigStore::CS_GENERIC, "not equal", {}, true});
  }
}

}  // namespace

Verb DiffVerb() {
  return {
      .name = "diff",
      .help = "Show in what the store differs from something else",
      .arguments = {PrefixArgument(),
                    {.name = kWith,
                     .help = "A document (JSON, YAML where it ends in .yaml or .yml, - for "
                             "standard input), defaults, shipped, staged (what the next boot "
                             "makes of it), or root:DIR for another host's root; ./defaults "
                             "for a file of such a name",
                     .isRequired = true,
                     .valueName = "WHAT"},
                    Flag(kComplete, "The document has everything: show what it does not name, too"),
                    RevealArgument(),
                    ColumnsArgument(NamesOf(kDriftColumns)),
                    LimitArgument()},
      .note =
          "Lines begin with ~ (what is found -> what is expected), + (expected, and not "
          "there) or - (there, and not expected). Ends with 0 when there are none, and "
          "with 5 when there are.",
      .run = Diff};
}

}  // namespace tarnctl
