#include "tarnconfigstore/file.h"
#include "tarnconfigstore/host.h"
#include "tarnconfigstore/type_administration.h"

#include "failure.h"
#include "shown/descriptions.h"
#include "store/stored_objects.h"
#include "table/record_list.h"
#include "verbs/option_names.h"
#include "verbs/verbs.h"

#include <algorithm>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::RowOutcome;
using TarnConfigStore::RowReport;
using TarnConfigStore::TypeOutcome;
using TarnConfigStore::TypeReport;

constexpr const char* kPath = "PATH";

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

// What the reports have in one of their lists, with the files' paths.
Findings Listed(const std::vector<TypeReport>& reports, Findings TypeReport::*list) {
  Findings findings;
  for (const TypeReport& report : reports) {
    for (const auto& finding : report.*list) {
      findings.push_back({report.path + "#" + finding.field, finding.error});
    }
  }
  return findings;
}

// Told beside what the verb is asked for, and never a reason to fail.
void Warn(const std::vector<TypeReport>& reports, const Output& output) {
  if (const Findings warnings = Listed(reports, &TypeReport::warnings); !warnings.empty()) {
    Report({ExitCode::DONE, TarnConfigStore::CS_GENERIC,
            std::to_string(warnings.size()) + (warnings.size() == 1 ? " warning" : " warnings"),
            warnings},
           output.AsJson());
  }
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
  Findings findings = Listed(reports, &TypeReport::errors);
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

const char* Name(RowOutcome outcome) {
  switch (outcome) {
    case RowOutcome::RENEWED:
      return "renewed";
    case RowOutcome::DIVIDED:
      return "divided";
    case RowOutcome::PARTLY_DIVIDED:
      return "partly-divided";
    case RowOutcome::LEFT:
      return "left";
    case RowOutcome::UNFIT:
      break;
  }
  return "unfit";
}

bool IsLeftOver(const RowReport& row) {
  return row.outcome == RowOutcome::PARTLY_DIVIDED || row.outcome == RowOutcome::LEFT;
}

Json::Value DescribeRows(const std::vector<RowReport>& rows, JsonMaker& make) {
  return make.List(rows, [&](const RowReport& row) {
    const Findings misfits(row.misfits.begin(), row.misfits.end());
    return make.Object("object", FormatObject(row.object), "version", row.version, "outcome",
                       Name(row.outcome), "misfits", ListFindings(misfits, make));
  });
}

// Rows that wait for their boot cannot be divided yet without changing what is read.
void WarnOfRowsLeft(const std::vector<RowReport>& rows) {
  const auto left = std::count_if(rows.begin(), rows.end(), IsLeftOver);
  if (left > 0) {
    Say(std::to_string(left) + (left == 1 ? " stored object" : " stored objects") +
        " with members that moved to another part " + (left == 1 ? "waits" : "wait") +
        ": run \"schema upgrade-rows\" once the boot is accepted or rejected");
  }
}

void Print(const std::vector<TypeReport>& reports, const Output& output) {
  JsonMaker make;
  output.PrintLenient(make.List(reports, [&](const TypeReport& report) {
    return make.Object("path", report.path, "type",
                       FormatObject({report.key, report.group, report.component}), "version",
                       report.version, "outcome", Name(report.outcome), "divided",
                       DescribeRows(report.divided, make));
  }));
  for (const TypeReport& report : reports) {
    WarnOfRowsLeft(report.divided);
  }
}

void UpgradeStoredRows(const Given& given, const Output& output) {
  const std::string& text = given.Text(kType);
  const ConfigStoreObjectId type = text.empty() ? ConfigStoreObjectId("", "", "") : ParseType(text);
  RequireStore();
  const auto rows =
      TarnConfigStore::UpgradeRows(type.component, type.group, type.key, given.Has(kCheck));
  JsonMaker make;
  output.PrintLenient(DescribeRows(rows, make));
  Findings misfits;
  for (const RowReport& row : rows) {
    misfits.insert(misfits.end(), row.misfits.begin(), row.misfits.end());
  }
  if (!misfits.empty()) {
    throw ToolError(ExitCode::INVALID, kMisfits, TarnConfigStore::CS_GENERIC, std::move(misfits));
  }
  WarnOfRowsLeft(rows);
  if (std::any_of(rows.begin(), rows.end(), IsLeftOver)) {
    throw ToolError(ExitCode::CONFLICT, "not all stored objects could be brought up to date");
  }
}

// Type files can be checked where there is no host at all.
bool IsHost() {
  constexpr const char* kSchemaStore = "/etc/kestrel/configstore/schema-store-1";
  return TarnConfigStore::FileExists(TarnConfigStore::GetHostRoot() + kSchemaStore);
}

void Install(const Given& given, const Output& output) {
  TarnConfigStore::InstallOptions options;
  options.checkOnly = given.Has(kCheck);
  options.force = given.Has(kForce);
  const auto reports = TarnConfigStore::InstallTypes(given.Texts(kPath), options);
  RefuseInvalid(reports, options.checkOnly);
  if (const Findings misfits = ListMisfits(reports); !misfits.empty()) {
    Report({ExitCode::DONE, TarnConfigStore::CS_GENERIC, kMisfits, misfits}, output.AsJson());
  }
  Warn(reports, output);
  Print(reports, output);
}

void CheckFiles(const Given& given, const Output& output) {
  if (IsHost()) {
    RequireStore();
  }
  const auto reports =
      TarnConfigStore::CheckTypes(given.Texts(kPath), TarnConfigStore::UnreadFile::IS_INVALID);
  Warn(reports, output);
  const Findings errors = Listed(reports, &TypeReport::errors);
  if (errors.empty()) {
    Print(reports, output);
  } else {
    PrintFindings(errors, output);
  }
}

const Columns kTypeColumns = {{"type"}, {"version"}, {"instances"}, {"flags"}};

void ListInstalled(const Given& given, const Output& output) {
  RecordList list(given, output, kTypeColumns);
  RequireStore();
  for (const auto& type : TarnConfigStore::ListTypes()) {
    JsonMaker make;
    list.Add(Describe(type, make));
  }
  list.End();
}

void Show(const Given& given, const Output& output) {
  const ConfigStoreObjectId id = ParseType(given.Text(kType));
  RequireStore();
  JsonMaker make;
  output.Print(make.Parse(TarnConfigStore::GetTypeFile(id.component, id.group, id.key)));
}

void ExportTypes(const Given& /*given*/, const Output& output) {
  RequireStore();
  JsonMaker make;
  output.Print(make.Parse(TarnConfigStore::ExportDocumentSchema()));
}

void Remove(const Given& given, const Output& /*output*/) {
  const ConfigStoreObjectId id = ParseType(given.Text(kType));
  TarnConfigStore::RemoveType(id.component, id.group, id.key, given.Has(kForce));
}

}  // namespace

Verb TypeVerbs() {
  const Argument path{.name = kPath,
                      .help = "Type files, or directories of them",
                      .takes = Takes::TEXTS,
                      .isRequired = true};
  Argument optionalType = TypeArgument();
  optionalType.isRequired = false;
  return {
      .name = "schema",
      .help = "Install, show and remove configuration types",
      .verbs = {
          {.name = "install",
           .help = "Install types: all of those given, or none",
           .arguments = {path, CheckArgument("Check everything, install nothing"),
                         Flag(kForce,
                              "Allow an older version than the installed one, and stored objects "
                              "that no longer fit")},
           .run = Install,
           .writes = true},
          {.name = "check",
           .help = "Check type files without a store, and list all that is wrong",
           .arguments = {path},
           .run = CheckFiles},
          {.name = "list",
           .help = "List the installed types",
           .arguments = {ColumnsArgument(NamesOf(kTypeColumns))},
           .run = ListInstalled},
          {.name = "show",
           .help = "Print the type file of a type",
           .arguments = {TypeArgument()},
           .run = Show},
          {.name = "export",
           .help = "Print one JSON Schema (draft-07) of documents of all types, for editors",
           .run = ExportTypes},
          GenerateCppVerb(),
          {.name = "upgrade-rows",
           .help = "Bring stored objects up to date with the parts that their types have now",
           .arguments = {optionalType, CheckArgument("Only tell what would be done")},
           .run = UpgradeStoredRows,
           .writes = true},
          {.name = "remove",
           .help = "Remove a type and its shipped objects",
           .arguments = {TypeArgument(),
                         Flag(
                             kForce,
                             "Even if objects of the type are stored, which stay, or changes of it "
                             "staged, which go")},
           .run = Remove,
           .writes = true}}};
}

}  // namespace tarnctl
