#include "tarnconfigstore/pending.h"

#include "platform/logger.h"

#include "documents/difference.h"
#include "documents/reference_drift.h"
#include "documents/sections.h"
#include "objects/access.h"
#include "objects/named_places.h"
#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/next_boot_records.h"
#include "persistence/prefix_rows.h"
#include "persistence/staged_base_row.h"
#include "persistence/statements.h"
#include "store/staged_content.h"
#include "store/staged_merge.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

namespace TarnConfigStore {
namespace {

const char* PartName(Json::SchemaPlace place) {
  const auto name = [](Section section) { return kPartNames[static_cast<std::size_t>(section)]; };
  switch (place.IsMixed() ? place.OwnKind() : place.WholeKind()) {
    case Json::Kind::VITAL:
      return name(Section::VITAL);
    case Json::Kind::CACHED:
      return name(Section::CACHED);
    case Json::Kind::USER:
      break;
  }
  return name(Section::USER);
}

MemberChange MemberChangeOf(const ChangedMeanwhile& changed, const char* part, bool reveal) {
  ChangeConflict told = DescribeMeanwhile(changed, reveal);
  return {std::move(told.pointer),
          std::move(told.base),
          std::move(told.staged),
          std::move(told.current),
          part,
          changed.conflicts};
}

// One that cannot be read hides nothing: it keeps everybody from reading the object.
ObjectHandle AutomaticOf(const RowMap& row, const ConfigStoreObjectId& id,
                         const SchemaHandle& type) {
  try {
    return MakeObjectFromRow(row, "AutoConfValue", id, type);
  } catch (const InvalidArgumentException&) {
    return nullptr;
  }
}

// What waits under a prefix.
class PendingList {
 public:
  PendingList(const PendingOptions& options, const DBStore::ConnectionHandle& connection)
      : options_(options), connection_(connection) {}

  void Read() {
    ForEachRowUnder(options_.prefix, LIST_STORED, connection_, [this](const RowMap& row) {
      const bool isPending = row.Text("HasPending") == "1";
      const bool isConfirmed = row.Text("Success") == "1";
      if (isPending || !isConfirmed) {
        PendingChange& change = ChangeOf(IdFromRow(row));
        change.pendingValue = isPending;
        change.unconfirmed = !isConfirmed;
      }
    });
    ForEachRowUnder(options_.prefix, READ_STAGED_RECORDS, connection_, [this](const RowMap& row) {
      PendingChange& change = ChangeOf(IdFromRow(row));
      change.staged = true;
      change.action = ActionFromRow(row);
      HoldAgainstStore(row, change);
    });
    for (auto& [id, change] : changes_) {
      FindDifference(change);
    }
  }

  std::vector<PendingChange> Take() {
    std::vector<PendingChange> changes;
    changes.reserve(changes_.size());
    for (auto& [id, change] : changes_) {
      changes.push_back(std::move(change));
    }
    return changes;
  }

 private:
  PendingChange& ChangeOf(const ConfigStoreObjectId& id) {
    return changes_
        .try_emplace(id, PendingChange{id, false, {}, false, false, {}, false, {}, {}, {}})
        .first->second;
  }

  void HoldAgainstStore(const RowMap& row, PendingChange& change) {
    const SchemaHandle type = FindSchema(types_, change.id);
    const bool setsContent = change.action == NextBootAction::SET;
    const ObjectHandle content =
        setsContent ? JudgeStagedContent(row, change.id, type, change.findings) : nullptr;
    // What applies after the deletion of all has nothing left to be merged with.
    if ((setsContent && !content) || (deleted_ && IsSameType(*deleted_, change.id))) {
      change.hasBase = ReadStagedBaseRow(change.id, connection_).has_value();
      return;
    }
    bool conflicts = false;
    const MergedChange merged =
        MergeStagedChange(change.id, change.action, type, content, false, connection_,
                          [&](const ChangedMeanwhile& changed) {
                            conflicts = conflicts || changed.conflicts;
                            change.meanwhile.push_back(
                                MemberChangeOf(changed, PartName(changed.place), options_.reveal));
                          });
    change.hasBase = merged.hasBase;
    if (change.action == NextBootAction::DELETE && !conflicts) {
      deleted_ = change.id;
    }
    change.mergedFindings = merged.content ? merged.findings : change.findings;
    if (merged.content && !conflicts) {
      JudgeContent(merged.content, type, change.mergedFindings);
    }
    if (!merged.findings.empty()) {
      change.mergedFindings = merged.findings;
    } else if (content && merged.hasBase) {
      FindHiddenChanges(*content, type, change);
    }
  }

  // What automatic configuration changed of members that what is staged gives, and hides thereby.
  void FindHiddenChanges(const ConfigStoreObject& content, const SchemaHandle& type,
                         PendingChange& change) const {
    const ObjectHandle base =
        AutomaticOf(*ReadStagedBaseRow(change.id, connection_), change.id, type);
    const ObjectHandle current =
        AutomaticOf(ReadRowMap(connection_, READ_TABLE_CONFIG, change.id), change.id, type);
    if (!current) {
      return;
    }
    const Json::Value empty(rapidjson::kObjectType);
    const Json::SchemaPlace root = type->GetSchemaPlace();
    FindDifferences(
        base ? &Internal::Access::Of(*base).GetRoot() : &empty,
        &Internal::Access::Of(*current).GetRoot(), root, "",
        [&](const std::string& pointer, const Json::Value* before, const Json::Value* now,
            Json::SchemaPlace place) {
          const Json::Value* staged =
              FindByIds(Internal::Access::Of(content).GetRoot(), root, pointer);
          if (now != nullptr && staged != nullptr && !IsId(pointer, root)) {
            change.meanwhile.push_back(MemberChangeOf(
                {pointer, {before, staged, now}, place, false},
                kPartNames[static_cast<std::size_t>(Section::AUTOMATIC)], options_.reveal));
          }
        });
  }

  static bool IsId(const std::string& pointer, Json::SchemaPlace root) {
    return !pointer.empty() && root.IsIdMember(std::string_view(pointer).substr(1));
  }

  void FindDifference(PendingChange& change) {
    if (!FindSchema(types_, change.id)) {
      return;  // nobody knows what of it is secret
    }
    const bool deletesAll = change.staged && change.action == NextBootAction::DELETE;
    // What is staged besides the deletion of a type is applied after it, and comes after it here.
    if (!drifted_ || !drifted_->instanceId.empty() || !IsSameType(*drifted_, change.id)) {
      drift_ = FindDriftFrom(ReferenceState::NEXT_BOOT, change.id, options_.reveal, connection_);
      drifted_ = change.id;
    }
    std::copy_if(drift_.begin(), drift_.end(), std::back_inserter(change.difference),
                 [&](const DriftObject& object) {
                   return object.GetConfigStoreObjectId() == change.id ||
                          (deletesAll && object.GetKind() == DriftKind::EXTRA &&
                           changes_.count(object.GetConfigStoreObjectId()) == 0);
                 });
  }

  const PendingOptions& options_;
  const DBStore::ConnectionHandle& connection_;
  SchemaCacheHandle types_ = TarnSchemaStore::SchemaStore::GetCache();
  std::map<ConfigStoreObjectId, PendingChange, InOrderOfIds> changes_;
  std::optional<ConfigStoreObjectId> deleted_;  // the type of which all goes
  std::vector<DriftObject> drift_;              // under drifted_
  std::optional<ConfigStoreObjectId> drifted_;
};

}  // namespace

std::vector<PendingChange> ListPendingChanges(const PendingOptions& options) {
  CSLogger::Log(CSLogger::kTrace, "%s invoked", "ListPendingChanges");
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  PendingList list(options, connection);
  ReadAtOneMoment(connection, [&list] { list.Read(); });
  return list.Take();
}

}  // namespace TarnConfigStore
