// What the store is used with: the allowlist, and the daemon that is told of changes.
#pragma once

#include "tarnconfigstore/doctor.h"

#include "platform/db_store.h"

#include "doctor/known_types.h"

#include <vector>

namespace TarnConfigStore {

/// \param types       null where they cannot be read
/// \param connection  empty where the store cannot be read
void CheckSurroundings(const KnownTypes* types, const DBStore::ConnectionHandle& connection,
                       std::vector<DoctorFinding>& findings);

}  // namespace TarnConfigStore
