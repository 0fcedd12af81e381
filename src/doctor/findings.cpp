#include "doctor/findings.h"

#include "platform/host_paths.h"

#include <utility>

namespace TarnConfigStore {

std::string NameOfObject(const ConfigStoreObjectId& id) {
  std::string name = id.component;
  name.append("/").append(id.group).append("/").append(id.key);
  return id.instanceId.empty() ? name : name.append("/").append(id.instanceId);
}

DoctorFinding FindingFrom(HostRepair::Finding finding) {
  static_assert(
      static_cast<int>(DoctorSeverity::DAMAGE) == static_cast<int>(HostRepair::Weight::DAMAGE) &&
      static_cast<int>(DoctorSeverity::FAULT) == static_cast<int>(HostRepair::Weight::FAULT) &&
      static_cast<int>(DoctorSeverity::WARNING) == static_cast<int>(HostRepair::Weight::WARNING));
  DoctorFinding made;
  made.severity = static_cast<DoctorSeverity>(finding.weight);
  made.kind = std::move(finding.kind);
  made.file = std::move(finding.place);
  made.table = std::move(finding.table);
  made.message = std::move(finding.message);
  made.advice = std::move(finding.advice);
  made.mendable = finding.mendable;
  return made;
}

DoctorAction ActionFrom(HostRepair::Action action) {
  DoctorAction made;
  made.done = action.done;
  made.kind = std::move(action.kind);
  made.file = std::move(action.place);
  made.message = std::move(action.message);
  made.where = std::move(action.where);
  return made;
}

DoctorFinding RowFinding(DoctorSeverity severity, const char* kind, const char* table,
                         const ConfigStoreObjectId& id, std::string message, std::string advice,
                         bool mendable) {
  DoctorFinding made;
  made.severity = severity;
  made.kind = kind;
  made.file = HostPaths::kStore;
  made.table = table;
  made.object = id;
  made.message = std::move(message);
  made.advice = std::move(advice);
  made.mendable = mendable;
  return made;
}

DoctorAction RowAction(const char* kind, const ConfigStoreObjectId& id, std::string message,
                       std::string where) {
  DoctorAction made;
  made.done = true;
  made.kind = kind;
  made.file = HostPaths::kStore;
  made.object = id;
  made.message = std::move(message);
  made.where = std::move(where);
  return made;
}

}  // namespace TarnConfigStore
