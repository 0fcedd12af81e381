#include "tarnconfigstore/apply_next_boot.h"

#include "platform/logger.h"

#include "objects/division.h"
#include "objects/schema_lookup.h"
#include "persistence/boot_flags.h"
#include "persistence/connection.h"
#include "persistence/delete_config.h"
#include "persistence/next_boot_records.h"
#include "persistence/write_by_context.h"
#include "store/staged_content.h"
#include "store/under_transaction.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace TarnConfigStore {
namespace {

// A staged change on its way.
struct Change {
  ConfigStoreObjectId id;
  NextBootAction action;
  SchemaHandle schema;                 // of content, when its type is installed
  ObjectHandle content;                // where it is to be divided
  std::optional<ColumnValues> layers;  // of it, where it is written as it was staged
  std::vector<ErrorInfo> findings;
};

// Changes of one type follow each other, so that each is looked up once.
class Types {
 public:
  const SchemaHandle& Of(const ConfigStoreObjectId& id) {
    if (!known_ || !IsSameType(*known_, id)) {
      schema_ = FindSchema(cache_, id);
      known_ = id;
    }
    return schema_;
  }

 private:
  std::shared_ptr<TarnSchemaStore::SchemaObjectCache> cache_ =
      TarnSchemaStore::SchemaStore::GetCache();
  std::optional<ConfigStoreObjectId> known_;
  SchemaHandle schema_;
};

std::vector<Change> ReadAndJudge(const DBStore::ConnectionHandle& connection) {
  std::vector<Change> changes;
  Types types;
  ForEachStagedChange(connection, [&](const RowMap& row) {
    Change& change =
        changes.emplace_back(Change{IdFromRow(row), ActionFromRow(row), {}, {}, {}, {}});
    if (change.action == NextBootAction::SET) {
      change.schema = types.Of(change.id);
      change.content = JudgeStagedContent(row, change.id, change.schema, change.findings);
      const auto only =
          change.content ? row.FindOnly({"UserValue", "VitalValue", "CachedValue"}) : std::nullopt;
      if (only) {
        change.layers = PlaceText(std::string(*only), *change.schema, EXTERNAL);
      }
      if (change.layers) {
        change.content = nullptr;  // there may be many
      }
    }
    for (const ErrorInfo& finding : change.findings) {
      CSLogger::Log(CSLogger::kProblem, "Cannot be applied, %s: %s: %s",
                    change.id.toString().c_str(), finding.field.c_str(), finding.error.c_str());
    }
  });
  return changes;
}

void Apply(const Change& change, const DBStore::ConnectionHandle& connection) {
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
    std::vector<Change> changes = ReadAndJudge(connection);
    const auto fits = [](const Change& change) { return change.findings.empty(); };
    const bool applies = options.applyRest || std::all_of(changes.begin(), changes.end(), fits);
    for (Change& change : changes) {
      if (applies && fits(change)) {
        Apply(change, connection);
        result.applied.push_back({std::move(change.id), change.action});
      } else {
        result.staged.push_back({std::move(change.id), change.action, std::move(change.findings)});
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
