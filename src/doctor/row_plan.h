// One stored row: what is wrong with it, and what becomes of it in a repair.
#pragma once

#include "tarnconfigstore/doctor.h"

#include "platform/host_repair.h"

#include "objects/handles.h"
#include "persistence/type_rows.h"

#include <vector>

namespace TarnConfigStore {

/// What examining and repairing do with a part of the store: told by the one, done by the other.
struct MendPlan {
  std::vector<DoctorFinding> findings;
  std::vector<DoctorAction> actions;          ///< of what is mendable
  std::vector<HostRepair::LostRow> putAside;  ///< what the actions take out of the store
};

/// Adds to the plan what it finds in a row, and makes the row what it should be.
/// \param type  empty for one that is not installed
/// \return whether the row changes
bool PlanRow(const ConfigStoreObjectId& id, const SchemaHandle& type, StoredRow& row,
             MendPlan& plan);

}  // namespace TarnConfigStore
