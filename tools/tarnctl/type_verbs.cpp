#include "type_verbs.h"

#include "tarnconfigstore/file.h"
#include "tarnconfigstore/host.h"
#include "tarnconfigstore/type_administration.h"

#include "failure.h"
#include "findings.h"
#include "object_name.h"
#include "store_access.h"
#include "type_flags.h"

#include <algorithm>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::TypeOutcome;
using TarnConfigStore::TypeReport;

const char* Name(TypeOutcome outcome) {
  switch (outcome) {
    case TypeOutcome::VALID:
      return "valid";
    case TypeOutcome::INSTALLED:
      return "installed";
    case TypeOutcome::UPGRADED:
      return "upgraded";
    case TypeOutcome::DOWNGRADED:
      return "downgraded";
    case TypeOutcome::UNCHANGED:
      return "unchanged";
    case TypeOutcome::INVALID:
      break;
  }
  return "invalid";
}

Findings ListErrors(const std::vector<TypeReport>& reports) {
  Findings errors;
  for (const TypeReport& report : reports) {
    for (const auto& error : report.errors) {
      errors.push_back({report.path + "#" + error.field, error.error});
    }
  }
  return errors;
}

Findings ListMisfits(const std::vector<TypeReport>& reports) {
  Findings misfits;
  for (const TypeReport& report : reports) {
    misfits.insert(misfits.end(), report.misfits.begin(), report.misfits.end());
  }
  return misfits;
}

constexpr const char* kMisfits = "stored objects no longer fit";

void RefuseInvalid(const std::vector<TypeReport>& reports, bool checkOnly) {
  const auto invalid = std::count_if(reports.begin(), reports.end(), [](const TypeReport& report) {
    return report.outcome == TypeOutcome::INVALID;
  });
  if (invalid == 0) {
    return;
  }
  Findings findings = ListErrors(reports);
  const Findings misfits = ListMisfits(reports);
  std::string message = std::to_string(invalid) + " of " + std::to_string(reports.size()) +
                        " type files cannot be taken";
  if (!checkOnly) {
    message += "; nothing was installed";
  }
  if (!misfits.empty()) {
    message.append("; ").append(kMisfits);
    message += findings.empty() ? ": --force installs all the same" : "";
  }
  findings.insert(findings.end(), misfits.begin(), misfits.end());
  throw ToolError(ExitCode::INVALID, std::move(message), TarnConfigStore::CS_GENERIC,
                  std::move(findings));
}

void Print(const std::vector<TypeReport>& reports, const Output& output) {
  Json list = Json::array();
  for (const TypeReport& report : reports) {
    list.push_back({{"path", report.path},
                    {"type", FormatObject({report.key, report.group, report.component})},
                    {"version", report.version},
                    {"outcome", Name(report.outcome)}});
  }
  output.Print(list);
}

// Type files can be checked where there is no host at all.
bool IsHost() {
  constexpr const char* kSchemaStore = "/etc/kestrel/configstore/schema-store-1";
  return TarnConfigStore::FileExists(TarnConfigStore::GetHostRoot() + kSchemaStore);
}

}  // namespace

void InstallTypes(const std::vector<std::string>& paths, bool checkOnly, bool force,
                  const Output& output) {
  TarnConfigStore::InstallOptions options;
  options.checkOnly = checkOnly;
  options.force = force;
  const auto reports = TarnConfigStore::InstallTypes(paths, options);
  RefuseInvalid(reports, checkOnly);
  if (const Findings misfits = ListMisfits(reports); !misfits.empty()) {
    Report({ExitCode::DONE, TarnConfigStore::CS_GENERIC, kMisfits, misfits}, output.AsJson());
  }
  Print(reports, output);
}

void CheckTypes(const std::vector<std::string>& paths, const Output& output) {
  if (IsHost()) {
    RequireStore();
  }
  const auto reports = TarnConfigStore::CheckTypes(paths);
  const Findings errors = ListErrors(reports);
  if (errors.empty()) {
    Print(reports, output);
  } else {
    PrintFindings(errors, output);
  }
}

void ListTypes(const Output& output) {
  RequireStore();
  Json list = Json::array();
  for (const auto& type : TarnConfigStore::ListTypes()) {
    list.push_back({{"type", FormatObject({type.key, type.group, type.component})},
                    {"version", type.version},
                    {"instances", type.hasInstances},
                    {"flags", SplitFlags(type.flags)}});
  }
  output.Print(list);
}

void ShowType(const std::string& type, const Output& output) {
  const ConfigStoreObjectId id = ParseType(type);
  RequireStore();
  output.Print(Json::parse(TarnConfigStore::GetTypeFile(id.component, id.group, id.key)));
}

void RemoveType(const std::string& type, bool force) {
  const ConfigStoreObjectId id = ParseType(type);
  TarnConfigStore::RemoveType(id.component, id.group, id.key, force);
}

}  // namespace tarnctl
