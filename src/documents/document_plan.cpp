#include "documents/document_plan.h"

#include "admin/row_views.h"
#include "objects/access.h"
#include "objects/generated_ids.h"
#include "objects/schema_lookup.h"
#include "persistence/boot_flags.h"
#include "persistence/delete_config.h"
#include "persistence/next_boot_records.h"
#include "persistence/prefix_rows.h"
#include "persistence/statements.h"
#include "persistence/write_config.h"
#include "store/boot_context.h"
#include "validation/guards.h"

#include <algorithm>
#include <unordered_set>

namespace TarnConfigStore {
namespace {

// Asking for each row costs more than reading all of a type once there are so many.
constexpr std::size_t kFewRows = 8;

bool HoldsNothing(const StoredRow& row) {
  return !row.user && !row.automatic && !row.vital && !row.cached && !row.pending;
}

bool SaysTheSame(const StoredRow& a, const StoredRow& b, bool withIds) {
  const auto same = [withIds](const auto& text, const auto& other) {
    return HoldTheSame(text, other, withIds);
  };
  return a.confirmed == b.confirmed && same(a.user, b.user) && same(a.automatic, b.automatic) &&
         same(a.vital, b.vital) && same(a.cached, b.cached) && same(a.pending, b.pending);
}

// What a change that is staged makes current.
bool SaysTheSame(const ObjectHandle& a, const ObjectHandle& b) {
  return a && b &&
         EqualButForGeneratedIds(Internal::Access::Of(*a).GetRoot(),
                                 Internal::Access::Of(*b).GetRoot());
}

ConfigStoreObjectId InstanceOf(const ConfigStoreObjectId& type, const std::string& instanceId) {
  return {type.key, type.group, type.component, instanceId};
}

}  // namespace

DocumentPlan::DocumentPlan(const ConfigDocument& document, const DocumentMode& mode)
    : document_(document), mode_(mode) {
  report_.findings = document.findings;
  if (mode.import == ImportMode::MERGE && !document.IsOfUserOnly()) {
    report_.findings.push_back({"/metadata/parts",
                                "documents of more than the user's part are not merged into what "
                                "is stored: they replace it"});
  }
}

void DocumentPlan::Judge() {
  if (mode_.import == ImportMode::MERGE && !document_.IsOfUserOnly()) {
    return;  // there is no plan for it
  }
  plans_.reserve(document_.types.size());
  for (const NamedType& type : document_.types) {
    std::vector<ObjectPlan>& plans = plans_.emplace_back();
    plans.reserve(type.objects.size());
    for (const NamedObject& object : type.objects) {
      plans.emplace_back(document_, type, object, mode_).Judge();
    }
  }
}

void DocumentPlan::Work(const DBStore::ConnectionHandle& connection) {
  upgradeContext_ = ReadUpgradeContext();
  std::size_t objects = 0;
  for (const std::vector<ObjectPlan>& plans : plans_) {
    objects += plans.size();
  }
  report_.objects.reserve(objects);
  for (std::size_t i = 0; i < plans_.size(); ++i) {
    if (document_.types[i].schema) {
      WorkOnType(document_.types[i], plans_[i], connection);
    }
  }
  if (document_.speaksOfStaged && mode_.import != ImportMode::MERGE) {
    WorkOnRecords(connection);
  }
  // What others hold is safe as long as it is not known what the document means.
  if (mode_.import == ImportMode::REPLACE_ALL && report_.Fits()) {
    RemoveOthers(connection);
  }
}

bool DocumentPlan::Stages(const NamedType& type) const {
  return mode_.stage && type.schema->IsRebootRequired();
}

DocumentPlan::Rows DocumentPlan::ReadRows(const NamedType& type, std::vector<ObjectPlan>& plans,
                                          const DBStore::ConnectionHandle& connection) const {
  Rows rows;
  rows.ofObjects.resize(plans.size());
  const bool prunes = mode_.prune && type.inConfig;
  if (!prunes && plans.size() <= kFewRows) {
    for (std::size_t i = 0; i < plans.size(); ++i) {
      VisitStoredRow(type.objects[i].id, connection, [&](const StoredRow& row) {
        plans[i].Meet({row.instanceId, row.user, row.confirmed});
        rows.ofObjects[i] = std::make_shared<const StoredRow>(row);
        ++rows.count;
      });
    }
    return rows;
  }
  std::optional<std::size_t> place;
  std::size_t next = 0;
  const auto wants = [&](const RowTexts& row) {
    ++rows.count;
    place = type.places.Find(row.instanceId, next);
    next = place ? *place + 1 : next;
    // Others as far as a document of the user's part could name them.
    return place ? !plans[*place].Meet(row) || Stages(type) : prunes && row.user && row.confirmed;
  };
  const auto keep = [&](StoredRow&& row) {
    auto kept = std::make_shared<const StoredRow>(std::move(row));
    place ? rows.ofObjects[*place] = std::move(kept) : rows.others.emplace_back(std::move(kept));
  };
  rows.isWholeType = TakeStoredRows(type.id, connection, wants, keep) == 0;
  return rows;
}

DocumentPlan::Staged DocumentPlan::ReadStaged(const NamedType& type,
                                              const DBStore::ConnectionHandle& connection) const {
  Staged staged;
  if (Stages(type)) {
    for (std::shared_ptr<RowMap>& row : ReadStagedOfType(type.id, connection)) {
      staged.emplace(row->Text("Identifier"), std::move(row));
    }
  }
  return staged;
}

void DocumentPlan::WorkOnType(const NamedType& type, std::vector<ObjectPlan>& plans,
                              const DBStore::ConnectionHandle& connection) {
  Rows rows = ReadRows(type, plans, connection);
  const Staged staged = ReadStaged(type, connection);
  // Steps are large: they are not moved again and again.
  const std::size_t before = steps_.size();
  const auto changed = static_cast<std::size_t>(std::count_if(
      plans.begin(), plans.end(), [](const ObjectPlan& plan) { return !plan.StaysAsItIs(); }));
  if (before + changed > steps_.capacity()) {
    steps_.reserve(std::max(before + changed, 2 * before));
  }
  for (std::size_t i = 0; i < plans.size(); ++i) {
    const NamedObject& object = type.objects[i];
    if (!IsUnder(mode_.prefix, object.id)) {
      continue;
    }
    if (plans[i].StaysAsItIs() && !Stages(type)) {
      Say(object.id, ObjectOutcome::UNCHANGED);
      continue;
    }
    const Row& stored = rows.ofObjects[i];
    if (std::optional<StoredRow> after = plans[i].After(stored.get(), upgradeContext_)) {
      Decide(type, object, plans[i], stored, std::move(*after), staged);
    } else {
      Say(object.id, ObjectOutcome::REFUSED, plans[i].TakeFindings());
    }
  }
  if (mode_.prune && type.inConfig && type.schema->IsNonSingleton()) {
    Prune(type, rows, staged);
  }
  ClearFirst(before, rows);
}

// Replacing rows one by one costs more than deleting all of them at once, where none is to stay as it
// is. What a row keeps, it is given.
void DocumentPlan::ClearFirst(std::size_t firstStep, const Rows& rows) {
  const auto first = steps_.begin() + static_cast<std::ptrdiff_t>(firstStep);
  const auto replaces = [](const PlannedStep& step) {
    return step.step == Step::WRITE && step.before;
  };
  const auto replaced = static_cast<std::size_t>(std::count_if(first, steps_.end(), replaces));
  if (!rows.isWholeType || replaced <= kFewRows || replaced != rows.count) {
    return;
  }
  for (auto step = first; step != steps_.end(); ++step) {
    if (replaces(*step)) {
      step->info.created = step->before->creationTime;
      step->info.revision = step->before->revision + 1;
    }
  }
  first->clearsFirst = true;
}

void DocumentPlan::Decide(const NamedType& type, const NamedObject& object, const ObjectPlan& plan,
                          const Row& stored, StoredRow after, const Staged& staged) {
  const bool differs = stored == nullptr || plan.DiffersFromRow() ||
                       !SaysTheSame(*stored, after, !document_.IsOfUserOnly());
  if (Stages(type)) {
    const auto record = staged.find(object.id.instanceId);
    const bool waits =
        record == staged.end()
            ? !differs && staged.find("") == staged.end()
            : ActionFromRow(*record->second) == NextBootAction::SET &&
                  SaysTheSame(MergeParts(*record->second, "UserValue", object.id, type.schema),
                              MergeSetView(after, &StoredRow::user, object.id, type.schema));
    Say(object.id, waits ? ObjectOutcome::UNCHANGED : ObjectOutcome::STAGED);
    if (!waits) {
      steps_.push_back({Step::STAGE, object.id, type.schema, stored, std::move(after)});
    }
    return;
  }
  if (stored == nullptr && HoldsNothing(after)) {
    Say(object.id, ObjectOutcome::UNCHANGED);
    return;
  }
  Say(object.id, !differs            ? ObjectOutcome::UNCHANGED
                 : stored == nullptr ? ObjectOutcome::CREATED
                                     : ObjectOutcome::REPLACED);
  if (differs) {
    steps_.push_back({Step::WRITE, object.id, type.schema, stored, std::move(after), object.info});
  }
}

void DocumentPlan::Prune(const NamedType& type, Rows& rows, const Staged& staged) {
  std::sort(rows.others.begin(), rows.others.end(),
            [](const Row& a, const Row& b) { return a->instanceId < b->instanceId; });
  for (Row& row : rows.others) {
    const ConfigStoreObjectId id = InstanceOf(type.id, row->instanceId);
    const auto record = staged.find(id.instanceId);
    if (!Stages(type)) {
      Say(id, ObjectOutcome::REMOVED);
      steps_.push_back({Step::REMOVE, id, type.schema, std::move(row)});
    } else if (record != staged.end() && ActionFromRow(*record->second) != NextBootAction::SET) {
      Say(id, ObjectOutcome::UNCHANGED);
    } else {
      Say(id, ObjectOutcome::STAGED);
      steps_.push_back({Step::STAGE_REMOVAL, id, type.schema, std::move(row)});
    }
  }
}

void DocumentPlan::RemoveOthers(const DBStore::ConnectionHandle& connection) {
  std::unordered_set<ConfigStoreObjectId> named;
  for (const NamedType& type : document_.types) {
    for (const NamedObject& object : type.objects) {
      named.insert(object.id);
    }
  }
  const bool userOnly = document_.IsOfUserOnly();
  std::vector<ConfigStoreObjectId> others;
  ForEachRowUnder(mode_.prefix, LIST_STORED, connection, [&](const RowMap& row) {
    ConfigStoreObjectId id = IdFromRow(row);
    // What a document of the user's part cannot name, it does not remove either.
    const bool isMeant = !userOnly || (row.Text("HasUser") == "1" && row.Text("Success") == "1");
    if (isMeant && named.count(id) == 0) {
      others.push_back(std::move(id));
    }
  });
  for (const ConfigStoreObjectId& id : others) {
    VisitStoredRow(id, connection, [&](const StoredRow& row) {
      PlannedStep step{Step::REMOVE, id, FindSchema(id), std::make_shared<const StoredRow>(row)};
      if (userOnly) {
        step.row = row;
        step.row.user.reset();
        step.row.pending.reset();
        step.row.confirmed = true;
        step.step = HoldsNothing(step.row) ? Step::REMOVE : Step::WRITE;
      }
      Say(id, ObjectOutcome::REMOVED);
      steps_.push_back(std::move(step));
    });
  }
}

bool DocumentPlan::StagesAnything() const {
  return !records_.empty() ||
         std::any_of(steps_.begin(), steps_.end(), [](const PlannedStep& step) {
           return step.step == Step::STAGE || step.step == Step::STAGE_REMOVAL;
         });
}

void DocumentPlan::RequireAllowed(const DBStore::ConnectionHandle& connection) const {
  SchemaHandle checked;
  for (const PlannedStep& step : steps_) {
    if (step.step != Step::WRITE || !step.row.user || step.schema == checked) {
      continue;
    }
    checked = step.schema;
    if (checked && IsClosedDuringBoot(checked, connection)) {
      checkUserContext(true, EXTERNAL);
    }
  }
  if (StagesAnything()) {
    RequireNextBootStore(connection);
    RequireNoRemediation(connection);
  }
}

void DocumentPlan::Write(const DBStore::ConnectionHandle& connection) const {
  std::optional<ImportedRows> rows;
  bool stages = false;
  const auto stage = [&](const ConfigStoreObjectId& id, NextBootAction action,
                         const std::string& version, const ColumnValues& values) {
    WriteStagedRecord(id, action, version, values, connection);
    stages = true;
  };
  for (const PlannedStep& step : steps_) {
    if (step.clearsFirst) {
      DeleteInstancesInternal({step.id.key, step.id.group, step.id.component}, connection);
    }
    switch (step.step) {
      case Step::WRITE:
        if (!rows) {
          rows.emplace(connection);
        }
        rows->Write(step.id, step.row, step.info.created, step.info.revision.value_or(1));
        break;
      case Step::REMOVE:
        DeleteInternal(step.id, connection);
        break;
      case Step::STAGE:
        stage(step.id, NextBootAction::SET, step.schema->GetVersion(), step.row);
        break;
      case Step::STAGE_REMOVAL:
        stage(step.id, NextBootAction::DELETE_INSTANCE, step.schema->GetVersion(), {});
        break;
    }
  }
  for (const PlannedRecord& record : records_) {
    if (record.change == nullptr) {
      RemoveStagedChange(record.id, connection);
    } else {
      stage(record.id, record.change->action, record.version, record.values);
    }
  }
  if (stages) {
    AnnounceStagedChanges(connection);
  }
}

std::vector<ErrorInfo> DocumentPlan::Findings() const {
  std::vector<ErrorInfo> findings = report_.findings;
  for (const ObjectResult& result : report_.objects) {
    findings.insert(findings.end(), result.findings.begin(), result.findings.end());
  }
  return findings;
}

std::vector<ConfigStoreObjectId> DocumentPlan::Changed() const {
  std::vector<ConfigStoreObjectId> changed;
  for (const PlannedStep& step : steps_) {
    if (step.step == Step::WRITE || step.step == Step::REMOVE) {
      changed.push_back(step.id);
    }
  }
  return changed;
}

}  // namespace TarnConfigStore
