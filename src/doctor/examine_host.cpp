#include "tarnconfigstore/doctor.h"

#include "platform/host_paths.h"
#include "platform/host_repair.h"
#include "platform/store_error.h"
#include "platform/type_files.h"

#include "doctor/findings.h"
#include "doctor/known_types.h"
#include "doctor/store_plan.h"
#include "doctor/surroundings.h"
#include "persistence/prefix_rows.h"

#include <optional>
#include <stdexcept>
#include <utility>

namespace TarnConfigStore {
namespace {

DoctorFinding NotLookedAt(const char* file, std::string message) {
  DoctorFinding finding;
  finding.severity = DoctorSeverity::NOTE;
  finding.kind = "rows-not-examined";
  finding.file = file;
  finding.message = std::move(message);
  finding.advice = "what else is found of the databases says why";
  return finding;
}

std::optional<KnownTypes> ReadTypes(std::vector<DoctorFinding>& findings) {
  try {
    KnownTypes types(TypeFiles::ReadAll());
    types.TellDamaged(findings);
    return types;
  } catch (const std::runtime_error& failure) {
    findings.push_back(NotLookedAt(HostPaths::kSchemaStore, failure.what()));
    return std::nullopt;
  }
}

}  // namespace

DoctorReport ExamineHost() {
  DoctorReport report;
  HostRepair::Examination files = HostRepair::Examine();
  for (HostRepair::Finding& finding : files.findings) {
    report.findings.push_back(FindingFrom(std::move(finding)));
  }
  std::optional<KnownTypes> types;
  if (files.canReadTypes) {
    types = ReadTypes(report.findings);
  }
  // For reading only, so that its end writes nothing back.
  const DBStore::ConnectionHandle connection =
      files.canReadStore ? DBStore::GetConnection(DBStore::Type::CURRENT_STORE, false) : nullptr;
  if (connection && types) {
    const StorePlan plan(*types, connection);
    const std::vector<DoctorFinding>& found = plan.Content().findings;
    report.findings.insert(report.findings.end(), found.begin(), found.end());
  } else {
    report.findings.push_back(NotLookedAt(
        HostPaths::kStore, connection ? "no row was held against its type: the types cannot be read"
                                      : "no row was looked at: the store cannot be read"));
  }
  CheckSurroundings(types ? &*types : nullptr, connection, report.findings);
  // What was found is told; it is no failure.
  DBStore::ClearLastError();
  return report;
}

}  // namespace TarnConfigStore
