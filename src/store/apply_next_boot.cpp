#include "tarnconfigstore/apply_next_boot.h"

#include "platform/logger.h"

#include "persistence/boot_flags.h"
#include "persistence/connection.h"
#include "persistence/delete_config.h"
#include "persistence/next_boot_records.h"
#include "persistence/write_by_context.h"
#include "store/judged_changes.h"
#include "store/under_transaction.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace TarnConfigStore {
namespace {

void Apply(const JudgedChange& change, const DBStore::ConnectionHandle& connection) {
  if (change.drops) {
    return;
  }
  if (change.isRecordedAnew) {
    WriteStagedRecord(change.id, change.action, change.schema->GetVersion(), *change.layers,
                      connection);
  }
  switch (change.action) {
    case NextBootAction::SET:
      // Divided by the type of today, whatever it was when the change was staged; in the context that
      // also confirms the row.
      if (change.layers) {
        WriteLayersByContext(change.id, *change.layers, change.schema->GetVersion(),
                             UPDATE_DURING_UPGRADE, connection);
      } else {
        SetByContextInternal(change.content, change.schema, UPDATE_DURING_UPGRADE, connection);
      }
      break;
    case NextBootAction::DELETE:
      DeleteInstancesInternal(change.id, connection);
      break;
    case NextBootAction::DELETE_INSTANCE:
      DeleteInternal(change.id, connection);
      break;
  }
}

// What was applied is staged no longer.
void Unstage(const ApplyResult& result, const DBStore::ConnectionHandle& connection) {
  if (result.staged.empty()) {
    RemoveStagedChanges(connection);
    return;
  }
  for (const AppliedChange& change : result.applied) {
    RemoveStagedChange(change.id, connection);
  }
}

}  // namespace

ApplyResult ApplyNextBootConfig(const ApplyOptions& options) {
  CSLogger::Log(CSLogger::kWriteCall, "%s invoked", "ApplyNextBootConfig");
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  ApplyResult result;
  RunUnderTransaction(connection, "ApplyNextBootConfig", [&] {
    RequireNoRemediation(connection);
    std::vector<JudgedChange> changes = JudgeStagedChanges(options, connection);
    const auto fits = [](const JudgedChange& change) { return change.fits; };
    const bool applies = options.applyRest || std::all_of(changes.begin(), changes.end(), fits);
    for (JudgedChange& change : changes) {
      if (applies && fits(change)) {
        Apply(change, connection);
        result.applied.push_back({std::move(change.id), change.action, change.merged,
                                  std::move(change.conflicts), change.drops});
      } else {
        result.staged.push_back({std::move(change.id), change.action, std::move(change.findings),
                                 std::move(change.conflicts)});
      }
    }
    Unstage(result, connection);
    if (result.staged.empty() && !options.bootModeWhenDone.empty()) {
      WriteBootMode(options.bootModeWhenDone, connection);
    }
  });
  CSLogger::Log(CSLogger::kOutcome, "ApplyNextBootConfig: %zu applied, %zu stay staged",
                result.applied.size(), result.staged.size());
  return result;
}

}  // namespace TarnConfigStore
