#include "tarnconfigstore/documents.h"

#include "failure.h"
#include "given/given_document.h"
#include "json/utf8.h"
#include "shown/progress.h"
#include "store/stored_objects.h"
#include "verbs/option_names.h"
#include "verbs/verbs.h"

#include <algorithm>
#include <functional>

namespace tarnctl {
namespace {

using TarnConfigStore::ApplyConfigOptions;
using TarnConfigStore::DocumentReport;
using TarnConfigStore::ImportMode;
using TarnConfigStore::ImportOptions;

constexpr const char* kReplaceAll = "--replace-all";
constexpr const char* kPrune = "--prune";
constexpr const char* kNextBoot = "--next-boot";

using Bring = std::function<DocumentReport(std::string_view document, std::size_t longest)>;

Findings TakeFindings(DocumentReport& report) {
  Findings findings = std::move(report.findings);
  for (auto& object : report.objects) {
    findings.insert(findings.end(), object.findings.begin(), object.findings.end());
  }
  return findings;
}

void AddLines(const GivenData& document, DocumentReport& report) {
  report.findings = document.WithLines(std::move(report.findings));
  for (auto& object : report.objects) {
    object.findings = document.WithLines(std::move(object.findings));
  }
}

// Lines for people: what has changed, and beside the data how much has not.
void PrintChanges(const Json::Value& objects, bool isCheck, const Output& output) {
  std::string lines;
  std::size_t changed = 0;
  for (const Json::Value& object : objects.GetArray()) {
    const std::string_view outcome = Json::Text(*Json::FindMember(object, "outcome"));
    if (outcome != "unchanged") {
      ++changed;
      const std::string_view name = Json::Text(*Json::FindMember(object, "object"));
      lines.append(outcome).append(" ").append(Json::Utf8::WithoutControls(name)).append("\n");
    }
  }
  output.PrintText(lines);
  Say((isCheck ? "nothing was written; to change: " : "changed: ") + std::to_string(changed) +
      ", unchanged: " + std::to_string(objects.Size() - changed));
}

void Print(DocumentReport& report, bool isCheck, const Output& output) {
  const bool fits = report.Fits();
  JsonMaker make;
  const Json::Value objects = make.Parse(report.ToJson());
  if (output.AsData()) {
    output.PrintLenient(objects);
  } else if (fits) {
    PrintChanges(objects, isCheck, output);
  } else {
    PrintFindings(TakeFindings(report), output);
  }
  if (!fits) {
    throw ToolError({ExitCode::INVALID, TarnConfigStore::CS_GENERIC, kRefused, {}, true});
  }
}

void BringDocument(const Given& given, const Output& output, YamlNull null, const char* doing,
                   const Bring& bring) {
  RequireStore();
  const std::string& path = given.Text(kFile);
  const std::size_t limit = LimitOf(given);
  GivenData document;
  DocumentReport report;
  {
    const Progress progress(std::string(doing) + " " + NameOfInput(path));
    document = ReadDocument(path, null, limit);
    // The limit is of the file; as JSON it may have become longer.
    LocateInDocument(document, kRefused, [&] {
      report = bring(document.Text(), std::max(limit, document.Text().size()));
    });
  }
  AddLines(document, report);
  Print(report, given.Has(kCheck), output);
}

void Import(const Given& given, const Output& output) {
  ImportOptions options;
  options.mode = given.Has(kReplaceAll) ? ImportMode::REPLACE_ALL
                 : given.Has(kReplace)  ? ImportMode::REPLACE_NAMED
                                        : ImportMode::MERGE;
  options.check = given.Has(kCheck);
  // Laid over what is stored, a null removes a member.
  const YamlNull null = options.mode == ImportMode::MERGE ? YamlNull::ALWAYS : YamlNull::OF_TYPE;
  BringDocument(given, output, null, "importing",
                [&options](std::string_view document, std::size_t longest) {
                  options.longest = longest;
                  return TarnConfigStore::ImportConfig(document, options);
                });
}

void ApplyDocument(const Given& given, const Output& output) {
  ApplyConfigOptions options;
  options.prune = given.Has(kPrune);
  options.stage = given.Has(kNextBoot);
  options.check = given.Has(kCheck);
  BringDocument(given, output, YamlNull::OF_TYPE, "applying",
                [&options](std::string_view document, std::size_t longest) {
                  options.longest = longest;
                  return TarnConfigStore::ApplyConfig(document, options);
                });
}

Argument FileArgument() {
  return {.name = kFile,
          .help =
              "A document: JSON, YAML where it ends in .yaml or .yml, - for JSON on standard "
              "input",
          .isRequired = true};
}

constexpr const char* kNote =
    "All of the document is written, or nothing. A line for each object that changed goes to "
    "standard output.";

}  // namespace

Verb ImportVerb() {
  return {
      .name = "import",
      .help = "Bring a document into the store: lay its objects over what is stored",
      .arguments = {FileArgument(), Flag(kReplace, "Replace the objects that the document names"),
                    Flag(kReplaceAll, "The same, and remove what the document does not name",
                         {kReplace}),
                    CheckArgument("Say what would change, or be refused; write nothing"),
                    LimitArgument()},
      .note = kNote,
      .run = Import,
      .writes = true};
}

Verb ApplyVerb() {
  return {.name = "apply",
          .help = "Make the store what a document says, and write only what differs",
          .arguments = {FileArgument(),
                        Flag(kPrune,
                             "Remove the instances that the document does not name, of the types "
                             "that it names"),
                        Flag(kNextBoot, "Stage what changes of types that need a reboot"),
                        CheckArgument("Say what would change, or be refused; write nothing"),
                        LimitArgument()},
          .note = kNote,
          .run = ApplyDocument,
          .writes = true};
}

}  // namespace tarnctl
