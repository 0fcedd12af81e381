#include "doctor/store_plan.h"

#include "platform/host_paths.h"

#include "admin/misfits.h"
#include "admin/type_reports.h"
#include "doctor/findings.h"
#include "persistence/boot_flags.h"
#include "persistence/next_boot_records.h"
#include "persistence/row_objects.h"

#include <algorithm>
#include <array>
#include <exception>
#include <iterator>
#include <new>
#include <optional>
#include <utility>

namespace TarnConfigStore {
namespace {

const ConfigStoreObjectId kNoObject{"", "", ""};
constexpr const char* kStaged = "DesiredUserConfig";

HostRepair::LostRow Kept(const RowMap& change, const char* reason) {
  HostRepair::LostRow row{HostPaths::kStore, kStaged, reason, {}};
  // As the listing names them, and as the table does.
  constexpr std::array<std::pair<const char*, const char*>, 9> kColumns = {
      {{"Component", "Component"},
       {"ConfigGroup", "ConfigGroup"},
       {"Name", "Name"},
       {"Identifier", "Identifier"},
       {"Version", "Version"},
       {"UserValue", "Value"},
       {"VitalValue", "VitalValue"},
       {"CachedValue", "CachedValue"},
       {"BootAction", "BootAction"}}};
  for (const auto& [name, column] : kColumns) {
    const auto text = change.Find(name);
    row.cells.push_back({column, text ? std::optional<std::string>(*text) : std::nullopt});
  }
  return row;
}

}  // namespace

StorePlan::StorePlan(const KnownTypes& types, const DBStore::ConnectionHandle& connection)
    : types_(types), connection_(connection) {
  Try("Config", [this] { PlanRows(); });
  Try(kStaged, [this] { PlanStaged(); });
  Try("DefaultConfig", [this] { PlanDefaults(); });
}

// What keeps one table from being read says nothing of the others.
template <class Steps>
void StorePlan::Try(const char* table, const Steps& steps) {
  try {
    steps();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& failure) {
    plan_.findings.push_back(RowFinding(
        DoctorSeverity::FAULT, "rows-not-read", table, kNoObject,
        std::string("not all of its rows could be looked at: ") + failure.what(),
        "what else is found of the database says why; run `tarnctl doctor` again after the repair",
        false));
  }
}

void StorePlan::PlanRows() {
  std::vector<ConfigStoreObjectId> types;
  ForEachStoredType(connection_, [&types](const ConfigStoreObjectId& id) { types.push_back(id); });
  for (const ConfigStoreObjectId& type : types) {
    const SchemaHandle schema = types_.Find(type);
    ForEachStoredRow(type, connection_, [&](const StoredRow& stored) {
      const ConfigStoreObjectId id(type.key, type.group, type.component, stored.instanceId);
      PlanStoredRow(id, schema, stored);
    });
  }
}

// A row that cannot be judged keeps no other from being.
void StorePlan::PlanStoredRow(const ConfigStoreObjectId& id, const SchemaHandle& type,
                              StoredRow row) {
  MendPlan plan;
  try {
    if (PlanRow(id, type, row, plan)) {
      rows_.emplace_back(id, std::move(row));
    }
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& failure) {
    plan = MendPlan();
    plan.findings.push_back(RowFinding(
        DoctorSeverity::FAULT, "row-not-judged", "Config", id,
        std::string("it could not be held against its type: ") + failure.what(),
        "look at it (`tarnctl get`), and set what fits; it stays as it is until then", false));
  }
  const auto append = [](auto& to, auto& from) {
    to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
  };
  append(plan_.findings, plan.findings);
  append(plan_.actions, plan.actions);
  append(plan_.putAside, plan.putAside);
}

bool StorePlan::IsStored(const ConfigStoreObjectId& id, bool wholeType) const {
  if (wholeType) {
    return CountStoredInstances(ConfigStoreObjectId(id.key, id.group, id.component), connection_) >
           0;
  }
  bool isStored = false;
  VisitStoredRow(id, connection_, [&isStored](const StoredRow&) { isStored = true; });
  return isStored;
}

void StorePlan::PlanStaged() {
  // What the next boot finds is not ours to change then.
  const bool mayChange = !IsRemediatedInternal(connection_);
  std::vector<std::shared_ptr<RowMap>> changes;
  ForEachStagedChange(connection_, [&changes](const RowMap& change) {
    changes.push_back(std::make_shared<RowMap>(change));
  });
  for (const auto& change : changes) {
    PlanStagedChange(*change, mayChange);
  }
}

void StorePlan::PlanStagedChange(const RowMap& change, bool mayChange) {
  const ConfigStoreObjectId id = IdFromRow(change);
  const auto putAside = [&](const char* kind, const std::string& message, const char* reason) {
    plan_.findings.push_back(RowFinding(
        kind == std::string("staged-orphan") ? DoctorSeverity::WARNING : DoctorSeverity::FAULT,
        kind, kStaged, id, message,
        mayChange ? "`tarnctl doctor --repair` puts the change aside"
                  : "repair it once the host is no longer being remediated",
        mayChange));
    if (mayChange) {
      plan_.putAside.push_back(Kept(change, reason));
      plan_.actions.push_back(RowAction(kind, id, "the staged change was taken back",
                                        std::string("all of it is in ") + kPutAside));
      staged_.push_back(id);
    }
  };
  const std::optional<NextBootAction> action = FindAction(change);
  if (!action) {
    putAside("staged-unknown-action",
             "a change is staged whose action is \"" + std::string(change.Text("BootAction")) +
                 "\": nothing that is staged can be listed or applied for it",
             "its action is unknown");
    return;
  }
  const SchemaHandle type = types_.Find(id);
  // Where its type is damaged, or all types are lost, it is the types that have to come back.
  const bool isTypeGone = !types_.All().empty() &&
                          types_.All().count({id.component, id.group, id.key}) == 0 &&
                          !IsStored(id, true);
  if (!type && !isTypeGone) {
    plan_.findings.push_back(
        RowFinding(DoctorSeverity::WARNING, "staged-unknown-type", kStaged, id,
                   "a change of a type is staged that is not installed: it cannot be applied",
                   "install the type (`tarnctl doctor --repair --types PATH...`)", false));
  } else if (!type) {
    putAside(
        "staged-orphan",
        "a change is staged of a type that is not installed, and of which nothing is stored: it "
        "can never be applied",
        "its type is gone");
  } else if (*action != NextBootAction::SET && !IsStored(id, *action == NextBootAction::DELETE)) {
    putAside("staged-orphan", "the deletion of an object is staged that is not stored any more",
             "its object is gone");
  } else {
    std::vector<Misfit> misfits;
    JudgeStaged(change, type, misfits);
    for (Misfit& misfit : misfits) {
      plan_.findings.push_back(RowFinding(
          DoctorSeverity::FAULT, "staged-misfit", kStaged, id, misfit.error,
          "stage what fits, or take it back (`tarnctl next-boot reset`); it stays until then",
          false));
      plan_.findings.back().pointer = std::move(misfit.pointer);
    }
  }
}

void StorePlan::PlanDefaults() {
  for (const auto& [name, type] : types_.All()) {
    if (!type.schema) {
      continue;
    }
    const TypeFiles::TypeFile file = TypeFiles::Check(NameOfObject(IdOf(name)), type.kept.text);
    if (!file.Good()) {
      continue;  // it was installed under other rules
    }
    std::vector<DefaultRow> rows = DivideShippedObjects(file);
    if (!AreDefaultRows(IdOf(name), file.type.version, rows, connection_)) {
      plan_.findings.push_back(RowFinding(
          DoctorSeverity::FAULT, "defaults-differ", "DefaultConfig", IdOf(name),
          "the objects that the type brings along are not in the store as the type has them",
          "`tarnctl doctor --repair` writes them again", true));
      plan_.actions.push_back(
          RowAction("defaults-differ", IdOf(name),
                    "the objects that the type brings along were written again",
                    "in the store, as the type has them; what was there before is in the copies"));
      defaults_.push_back({IdOf(name), file.type.version, std::move(rows)});
    }
  }
  ForEachTypeWithDefaults(connection_, [this](const ConfigStoreObjectId& id) {
    if (types_.All().count({id.component, id.group, id.key}) == 0) {
      plan_.findings.push_back(RowFinding(
          DoctorSeverity::WARNING, "defaults-unknown-type", "DefaultConfig", id,
          "there are objects that a type brought along which is not installed: nobody reads them",
          "install the type again (`tarnctl doctor --repair --types PATH...`)", false));
    }
  });
}

void StorePlan::Carry(const DBStore::ConnectionHandle& connection) const {
  for (const auto& [id, row] : rows_) {
    RedivideRow(id, row, connection);
  }
  for (const ConfigStoreObjectId& id : staged_) {
    RemoveStagedChange(id, connection);
  }
  for (const Defaults& defaults : defaults_) {
    ReplaceDefaultRows(defaults.type, defaults.version, defaults.rows, connection);
  }
}

}  // namespace TarnConfigStore
