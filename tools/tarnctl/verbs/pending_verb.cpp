#include "tarnconfigstore/pending.h"

#include "failure.h"
#include "given/object_name.h"
#include "shown/pending_text.h"
#include "store/prefix_contents.h"
#include "store/stored_objects.h"
#include "table/change_tables.h"
#include "verbs/verbs.h"

#include <string>
#include <unistd.h>

namespace tarnctl {
namespace {

using TarnConfigStore::PendingChange;

void ShowPending(const Given& given, const Output& output) {
  const std::string& prefix = given.Text(kPrefix);
  TarnConfigStore::PendingOptions options;
  options.prefix = ParsePrefixIfGiven(prefix);
  options.reveal = Reveals(given);
  auto table = ColumnTable::If(given, output, kPendingColumns);
  RequireStore();
  const auto changes = TarnConfigStore::ListPendingChanges(options);
  // Nothing waits under a misspelled name either.
  if (changes.empty() && !prefix.empty() && !HoldsAnything(options.prefix)) {
    throw ToolError(ExitCode::NOT_FOUND, "there is nothing under " + prefix);
  }
  for (const PendingChange& change : changes) {
    if (table) {
      AddPending(change, *table);
    }
  }
  // A terminal gets the table where nothing of it would be cut.
  if (table && table->IsWanted() && !changes.empty()) {
    table->End();
    return;
  }
  if (!output.AsData()) {
    const Terminal terminal = Terminal::Of(STDOUT_FILENO);
    std::string lines;
    for (const PendingChange& change : changes) {
      lines += DescribePending(change, terminal);
    }
    output.PrintText(lines);
    return;
  }
  JsonMaker make;
  output.PrintLenient(
      make.List(changes, [&make](const PendingChange& change) { return Describe(change, make); }));
}

}  // namespace

Verb PendingVerb() {
  return {
      .name = "pending",
      .help =
          "Show what waits for the next boot, what it will change, and what was changed "
          "meanwhile",
      .arguments = {PrefixArgument(), RevealArgument(), ColumnsArgument(NamesOf(kPendingColumns))},
      .note =
          "Members are shown as diff does: ~ (now -> then), + and -. Lines with ! are what "
          "was changed since the change was staged, and what keeps it from being applied.",
      .run = ShowPending};
}

}  // namespace tarnctl
