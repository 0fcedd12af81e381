#include "store/judged_changes.h"

#include "platform/logger.h"

#include "objects/schema_lookup.h"
#include "persistence/next_boot_records.h"
#include "store/staged_content.h"
#include "store/staged_merge.h"

#include <string>

namespace TarnConfigStore {
namespace {

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

class Judge {
 public:
  Judge(const ApplyOptions& options, const DBStore::ConnectionHandle& connection)
      : options_(options), connection_(connection) {}

  void JudgeChange(const RowMap& row, JudgedChange& change) {
    const bool setsContent = change.action == NextBootAction::SET;
    const bool merges = options_.merge == ApplyMerge::MERGE;
    if (setsContent || merges) {
      change.schema = types_.Of(change.id);
    }
    if (setsContent) {
      change.content = JudgeStagedContent(row, change.id, change.schema, change.findings);
      CheckOrder(change);
    }
    if (merges && (change.content || !setsContent) && !IsOfDeletedType(change.id)) {
      Merge(change);
    }
    change.fits = change.findings.empty() && IsDecided(change);
    if (change.action == NextBootAction::DELETE && !change.drops) {
      (change.fits ? deleted_ : kept_) = change.id;
    }
    if (setsContent && !change.isRecordedAnew) {
      const auto only =
          change.content ? row.FindOnly({"UserValue", "VitalValue", "CachedValue"}) : std::nullopt;
      if (only) {
        change.layers = PlaceText(std::string(*only), *change.schema, EXTERNAL);
      }
    }
    if (change.layers) {
      change.content = nullptr;  // there may be many
    }
  }

 private:
  bool IsDecided(const JudgedChange& change) const {
    return change.conflicts.empty() || options_.conflicts != ConflictDecision::NONE;
  }

  // Its instances are all deleted by then: there is nothing left to be merged with.
  bool IsOfDeletedType(const ConfigStoreObjectId& id) const {
    return deleted_ && IsSameType(*deleted_, id);
  }

  // Applied later, the deletion would take the instance with the others.
  void CheckOrder(JudgedChange& change) const {
    if (kept_ && IsSameType(*kept_, change.id)) {
      change.findings.push_back(
          {"/", "The deletion of all instances comes first, and stays staged."});
    }
  }

  void Merge(JudgedChange& change) {
    const MergedChange merged =
        MergeStagedChange(change.id, change.action, change.schema, change.content,
                          options_.conflicts == ConflictDecision::CURRENT, connection_,
                          [&change](const ChangedMeanwhile& changed) {
                            if (changed.conflicts) {
                              change.conflicts.push_back(DescribeMeanwhile(changed, false));
                            }
                          });
    change.merged = merged.hasBase;
    change.drops = merged.drops;
    if (change.drops) {
      change.findings.clear();  // of what nobody will apply
    }
    change.findings.insert(change.findings.end(), merged.findings.begin(), merged.findings.end());
    // What is merged is of no use while nobody decides.
    if (merged.content && IsDecided(change)) {
      RecordAnew(change, merged.content);
    }
  }

  void RecordAnew(JudgedChange& change, const ObjectHandle& content) const {
    change.findings.clear();
    CheckOrder(change);
    JudgeContent(content, change.schema, change.findings);
    if (change.findings.empty()) {
      GiveGeneratedIds(*content, *change.schema);
      change.layers = DivideObject(*content, *change.schema, EXTERNAL).values;
    }
    change.isRecordedAnew = true;
  }

  const ApplyOptions& options_;
  const DBStore::ConnectionHandle& connection_;
  Types types_;
  // Types of which a deletion of all instances is applied, and stays staged.
  std::optional<ConfigStoreObjectId> deleted_;
  std::optional<ConfigStoreObjectId> kept_;
};

void LogWhatIsWrong(const JudgedChange& change) {
  for (const ErrorInfo& finding : change.findings) {
    CSLogger::Log(CSLogger::kProblem, "Cannot be applied, %s: %s: %s", change.id.toString().c_str(),
                  finding.field.c_str(), finding.error.c_str());
  }
  for (const ChangeConflict& conflict : change.conflicts) {
    CSLogger::Log(CSLogger::kProblem, "Changed since it was staged, %s: %s",
                  change.id.toString().c_str(), conflict.pointer.c_str());
  }
}

}  // namespace

std::vector<JudgedChange> JudgeStagedChanges(const ApplyOptions& options,
                                             const DBStore::ConnectionHandle& connection) {
  std::vector<JudgedChange> changes;
  Judge judge(options, connection);
  ForEachStagedChange(connection, [&](const RowMap& row) {
    JudgedChange& change = changes.emplace_back(JudgedChange{IdFromRow(row), ActionFromRow(row)});
    judge.JudgeChange(row, change);
    LogWhatIsWrong(change);
  });
  return changes;
}

}  // namespace TarnConfigStore
