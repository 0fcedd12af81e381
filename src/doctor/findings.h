// Making findings and actions.
#pragma once

#include "tarnconfigstore/doctor.h"

#include "platform/host_repair.h"

#include <string>

namespace TarnConfigStore {

/// "COMPONENT/GROUP/KEY[/INSTANCE]", as people write it.
std::string NameOfObject(const ConfigStoreObjectId& id);

DoctorFinding FindingFrom(HostRepair::Finding finding);
DoctorAction ActionFrom(HostRepair::Action action);

/// About a row of the store, or a type.
DoctorFinding RowFinding(DoctorSeverity severity, const char* kind, const char* table,
                         const ConfigStoreObjectId& id, std::string message, std::string advice,
                         bool mendable);

/// Done with a row of the store.
DoctorAction RowAction(const char* kind, const ConfigStoreObjectId& id, std::string message,
                       std::string where);

/// Where what was put aside is.
inline constexpr const char* kPutAside = "put-aside.json, in the directory that the repair made";

}  // namespace TarnConfigStore
