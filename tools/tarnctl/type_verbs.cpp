#include "type_verbs.h"

#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/file.h"
#include "tarnconfigstore/host.h"
#include "tarnconfigstore/type_administration.h"

#include "failure.h"
#include "object_name.h"

#include <cstddef>
#include <sstream>

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

void RefuseInvalid(const std::vector<TypeReport>& reports, const char* consequence) {
  Findings findings;
  std::size_t invalid = 0;
  for (const TypeReport& report : reports) {
    if (report.outcome != TypeOutcome::INVALID) {
      continue;
    }
    ++invalid;
    for (const auto& error : report.errors) {
      findings.push_back({report.path + "#" + error.field, error.error});
    }
  }
  if (invalid != 0) {
    throw ToolError(ExitCode::INVALID,
                    std::to_string(invalid) + " of " + std::to_string(reports.size()) +
                        " type files cannot be taken" + consequence,
                    TarnConfigStore::CS_GENERIC, std::move(findings));
  }
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

Json SplitFlags(const std::string& flags) {
  Json list = Json::array();
  std::istringstream words(flags);
  for (std::string flag; words >> flag;) {
    list.push_back(flag);
  }
  return list;
}

// A host that has lost its store says so whatever it is asked, before anybody takes its types for a
// host in good order.
void RequireStore() {
  TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
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
  RefuseInvalid(reports, checkOnly ? "" : "; nothing was installed");
  Print(reports, output);
}

void CheckTypes(const std::vector<std::string>& paths, const Output& output) {
  if (IsHost()) {
    RequireStore();
  }
  const auto reports = TarnConfigStore::CheckTypes(paths);
  RefuseInvalid(reports, "");
  Print(reports, output);
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
