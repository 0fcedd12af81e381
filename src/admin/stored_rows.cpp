#include "admin/stored_rows.h"

#include "platform/type_files.h"

#include "admin/misfits.h"
#include "admin/row_division.h"

#include <memory>
#include <utility>

namespace TarnConfigStore {
namespace {

using Divided = RowDivider::Result;

ConfigStoreObjectId InstanceOf(const ConfigStoreObjectId& type, const StoredRow& row) {
  return {type.key, type.group, type.component, row.instanceId};
}

RowOutcome OutcomeOf(Divided result) {
  switch (result) {
    case Divided::DIVIDED:
      return RowOutcome::DIVIDED;
    case Divided::PARTLY:
      return RowOutcome::PARTLY_DIVIDED;
    case Divided::NOT:
      return RowOutcome::LEFT;
    case Divided::AS_IT_IS:
      break;
  }
  return RowOutcome::RENEWED;
}

// One row, divided where it can be, and judged.
struct JudgedRow {
  StoredRow row;
  Divided division = Divided::AS_IT_IS;
  std::vector<Misfit> misfits;
};

JudgedRow Judge(const ConfigStoreObjectId& id, const StoredRow& row, const RowDivider& divider,
                const SchemaHandle& type) {
  JudgedRow judged{row, Divided::AS_IT_IS, {}};
  if (JudgeRow(row, id, type, judged.misfits)) {
    judged.division = divider.Divide(id, judged.row);
  }
  return judged;
}

}  // namespace

RowPlan PlanInstallation(const ConfigStoreObjectId& type, const SchemaHandle& installed,
                         const SchemaHandle& coming, const DBStore::ConnectionHandle& connection) {
  RowPlan plan;
  const RowDivider divider(installed, coming);
  ForEachStoredRow(type, connection, [&](const StoredRow& stored) {
    const ConfigStoreObjectId id = InstanceOf(type, stored);
    JudgedRow judged = Judge(id, stored, divider, coming);
    if (judged.division != Divided::AS_IT_IS) {
      plan.reports.push_back({id, OutcomeOf(judged.division), stored.version, {}});
    }
    if (judged.division == Divided::DIVIDED && judged.misfits.empty()) {
      judged.row.version = coming->GetVersion();
    }
    if (judged.division == Divided::DIVIDED || judged.division == Divided::PARTLY) {
      plan.changes.push_back(std::move(judged.row));
    }
    plan.misfits.insert(plan.misfits.end(), std::make_move_iterator(judged.misfits.begin()),
                        std::make_move_iterator(judged.misfits.end()));
  });
  for (const std::shared_ptr<RowMap>& change : ReadStagedOfType(type, connection)) {
    JudgeStaged(*change, coming, plan.misfits);
  }
  return plan;
}

RowPlan PlanUpgrade(const ConfigStoreObjectId& type, const SchemaHandle& installed,
                    const DBStore::ConnectionHandle& connection) {
  RowPlan plan;
  const RowDivider divider(nullptr, installed);
  ForEachStoredRow(type, connection, [&](const StoredRow& stored) {
    const ConfigStoreObjectId id = InstanceOf(type, stored);
    JudgedRow judged = Judge(id, stored, divider, installed);
    if (judged.division == Divided::AS_IT_IS &&
        !IsOutdated(stored.version, installed->GetVersion())) {
      return;
    }
    if (!judged.misfits.empty()) {
      plan.reports.push_back({id, RowOutcome::UNFIT, stored.version, std::move(judged.misfits)});
      return;
    }
    plan.reports.push_back({id, OutcomeOf(judged.division), stored.version, {}});
    if (judged.division == Divided::AS_IT_IS || judged.division == Divided::DIVIDED) {
      judged.row.version = installed->GetVersion();
    }
    if (judged.division != Divided::NOT) {
      plan.changes.push_back(std::move(judged.row));
    }
  });
  return plan;
}

void WriteChanges(const ConfigStoreObjectId& type, const RowPlan& plan,
                  const DBStore::ConnectionHandle& connection) {
  for (const StoredRow& row : plan.changes) {
    RedivideRow(type, row, connection);
  }
}

bool IsOutdated(std::string_view version, std::string_view installed) {
  return TypeFiles::CompareVersions(version, installed) != 0;
}

}  // namespace TarnConfigStore
