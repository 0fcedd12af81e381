// The part of a plan that is about records of staged changes.

#include "documents/document_plan.h"
#include "documents/staged_parts.h"
#include "json/secrets.h"
#include "objects/schema_lookup.h"
#include "persistence/next_boot_records.h"
#include "persistence/prefix_rows.h"
#include "persistence/statements.h"
#include "store/staged_content.h"
#include "validation/object_validation.h"

#include <utility>

namespace TarnConfigStore {
namespace {

bool IsStored(const NamedChange& change, const std::string& version, const ColumnValues& values,
              const RowMap* stored) {
  if (stored == nullptr || ActionFromRow(*stored) != change.action ||
      stored->Text("Version") != version) {
    return false;
  }
  for (std::size_t i = 0; i < kStagedParts.size(); ++i) {
    const auto text = stored->Find(kStagedParts[i].column);
    const std::optional<std::string>& given = (values.*kStagedParts[i].text);
    if (text.has_value() != given.has_value() || (text && *text != *given)) {
      return false;
    }
  }
  return true;
}

}  // namespace

void DocumentPlan::WorkOnRecords(const DBStore::ConnectionHandle& connection) {
  std::unordered_map<ConfigStoreObjectId, std::shared_ptr<RowMap>> stored;
  ForEachRowUnder(mode_.prefix, READ_STAGED_RECORDS, connection, [&stored](const RowMap& row) {
    stored.emplace(IdFromRow(row), std::make_shared<RowMap>(row));
  });
  for (const NamedChange& change : document_.staged) {
    if (!IsUnder(mode_.prefix, change.id)) {
      continue;
    }
    const auto found = stored.find(change.id);
    WorkOnRecord(change, found == stored.end() ? nullptr : found->second, FindSchema(change.id));
    if (found != stored.end()) {
      stored.erase(found);
    }
  }
  if (mode_.import != ImportMode::REPLACE_ALL) {
    return;
  }
  for (const auto& [id, row] : stored) {
    Say(id, ObjectOutcome::REMOVED);
    records_.push_back({id, nullptr, row});
  }
}

void DocumentPlan::WorkOnRecord(const NamedChange& change, const std::shared_ptr<RowMap>& stored,
                                const SchemaHandle& type) {
  std::vector<ErrorInfo> findings;
  ColumnValues values;
  if (type && !type->IsRebootRequired()) {
    findings.push_back({"/", "changes of the type do not wait for the next boot"});
  } else if (type && change.action == NextBootAction::SET) {
    for (std::size_t i = 0; i < kStagedParts.size(); ++i) {
      const Json::Value* given = change.parts[i];
      if (given == nullptr) {
        continue;
      }
      JsonDoc part;
      Json::Value& value = *part.GetJsonValuePtr();
      value.CopyFrom(*given, part.GetAllocator());
      JsonDoc known;
      const auto text = !stored ? std::nullopt : stored->Find(kStagedParts[i].column);
      const bool isKnown = text && known.Parse(*text, Json::Origin::STORED);
      std::string pointer = change.pointer + "/" + kStagedParts[i].name;
      Json::RestoreSecrets(
          value, isKnown ? known.GetJsonValuePtr() : nullptr, type->GetSchemaPlace(),
          part.GetAllocator(), pointer,
          {[this](const std::string& masked) { return document_.redacted.count(masked) != 0; },
           [this](const std::string& masked, const char* reason) {
             report_.findings.push_back({masked, reason});
           }});
      Json::Serialize(value, (values.*kStagedParts[i].text).emplace());
    }
    JudgeStagedContent(StagedContentRow(values), change.id, type, findings);
  } else if (!type || change.action == NextBootAction::DELETE_INSTANCE) {
    ValidateIdentity(type, change.id, findings);
  } else if (!change.id.instanceId.empty()) {
    findings.push_back({std::string("/") + kInstanceName, "a deletion of everything names none"});
  }
  for (ErrorInfo& finding : findings) {
    finding.field = finding.field == "/" ? change.pointer : change.pointer + finding.field;
  }
  if (!findings.empty()) {
    Say(change.id, ObjectOutcome::REFUSED, std::move(findings));
    return;
  }
  const std::string version = change.version.empty() ? type->GetVersion() : change.version;
  if (IsStored(change, version, values, stored.get())) {
    Say(change.id, ObjectOutcome::UNCHANGED);
    return;
  }
  Say(change.id, ObjectOutcome::STAGED);
  records_.push_back({change.id, &change, stored, version, std::move(values)});
}

}  // namespace TarnConfigStore
