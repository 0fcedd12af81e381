#include "tarnconfigstore/doctor.h"
#include "tarnconfigstore/host.h"

#include "advice/advice.h"
#include "failure.h"
#include "json/utf8.h"
#include "verbs/verbs.h"

#include <array>
#include <cstddef>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::DoctorAction;
using TarnConfigStore::DoctorFinding;
using TarnConfigStore::DoctorReport;

constexpr const char* kRepair = "--repair";
constexpr const char* kTypes = "--types";

// The place in the order in which one looks for it: file, table, object, member.
std::string PlaceOf(const std::string& file, const std::string& table,
                    const ConfigStoreObjectId& object, const std::string& pointer) {
  std::string place = file;
  const auto add = [&place](const std::string& part) {
    if (!part.empty()) {
      place.append(" ").append(part);
    }
  };
  add(table);
  if (!object.key.empty()) {
    std::string name = object.component;
    name.append("/").append(object.group).append("/").append(object.key);
    add(object.instanceId.empty() ? name : name.append("/").append(object.instanceId));
  }
  add(pointer);
  return place;
}

std::string Line(const std::string& text) {
  return Json::Utf8::WithoutControls(text) + "\n";
}

std::string Lines(const DoctorFinding& finding) {
  constexpr std::array<const char*, 4> kWords = {"note", "warning", "fault", "damage"};
  const std::string head = kWords[static_cast<std::size_t>(finding.severity)];
  return Line(head + " " + finding.kind + ": " +
              PlaceOf(finding.file, finding.table, finding.object, finding.pointer) + ": " +
              finding.message) +
         Line("  " + finding.advice);
}

std::string Lines(const DoctorAction& action) {
  std::string text = Line((action.done ? "done " : "not done ") + action.kind + ": " +
                          PlaceOf(action.file, "", action.object, "") + ": " + action.message);
  return action.where.empty() ? text : text + Line("  " + action.where);
}

std::string TextOf(const DoctorReport& report) {
  std::string text;
  for (const DoctorAction& action : report.actions) {
    text += Lines(action);
  }
  if (!report.keepingPlace.empty()) {
    text += Line("kept in " + report.keepingPlace);
  }
  for (const DoctorFinding& finding : report.findings) {
    text += Lines(finding);
  }
  return text.empty() ? "nothing was found\n" : text;
}

// What is wrong with files is not to be had on a copy: what a repair would do is what the examination
// says that it mends.
void ShowRepair(const Given& given, const Output& output) {
  if (given.Has(kTypes)) {
    throw ToolError(ExitCode::USAGE,
                    "a dry run says nothing of --types; `schema install --dry-run` does");
  }
  DoctorReport report = TarnConfigStore::ExamineHost();
  if (output.AsData()) {
    JsonMaker make;
    output.PrintLenient(make.Parse(report.ToJson()));
  }
  std::string mended;
  std::vector<DoctorFinding> left;
  for (DoctorFinding& finding : report.findings) {
    if (finding.mendable) {
      mended += "would mend " + Lines(finding);
    } else {
      left.push_back(std::move(finding));
    }
  }
  report.findings = std::move(left);
  if (!output.AsData()) {
    output.PrintText(
        UnderRoot(mended + (mended.empty() || !report.findings.empty() ? TextOf(report) : ""),
                  TarnConfigStore::GetHostRoot()));
    Say("nothing was written: this was a dry run");
  }
  if (!report.IsHealthy()) {
    throw ToolError({report.IsDamaged() ? ExitCode::CORRUPT : ExitCode::INVALID,
                     TarnConfigStore::CS_GENERIC,
                     "not everything can be mended: see above",
                     {},
                     output.AsData()});
  }
}

void Examine(const Given& given, const Output& output) {
  const bool isRepair = given.Has(kRepair);
  for (const char* const ofRepair : {kTypes, kDryRun}) {
    if (!isRepair && given.Has(ofRepair)) {
      throw ToolError(ExitCode::USAGE, std::string(ofRepair) + " is for --repair (see --help)");
    }
  }
  if (given.Has(kDryRun)) {
    ShowRepair(given, output);
    return;
  }
  const DoctorReport report = isRepair ? TarnConfigStore::RepairHost({given.Texts(kTypes)})
                                       : TarnConfigStore::ExamineHost();
  if (output.AsData()) {
    JsonMaker make;
    output.PrintLenient(make.Parse(report.ToJson()));
  } else {
    output.PrintText(UnderRoot(TextOf(report), TarnConfigStore::GetHostRoot()));
  }
  if (!report.IsHealthy()) {
    throw ToolError({report.IsDamaged() ? ExitCode::CORRUPT : ExitCode::INVALID,
                     TarnConfigStore::CS_GENERIC,
                     isRepair ? "not everything is as it should be: see above"
                              : "not everything is as it should be; see above, and `tarnctl doctor "
                                "--repair`",
                     {},
                     output.AsData()});
  }
}

}  // namespace

Verb DoctorVerb() {
  return {
      .name = "doctor",
      .help = "Look for what is wrong with the stores, and mend it",
      .arguments = {Flag(kRepair, "Mend what can be mended without losing a value, after a backup"),
                    {.name = kTypes,
                     .help = "Type files for types that are lost",
                     .takes = Takes::REST,
                     .valueName = "PATH..."},
                    Flag(kDryRun, "With --repair: say what it would mend, and write nothing")},
      .note =
          "Without --repair nothing is written. The exit code is 0 when all is well, 4 when "
          "there is something to be looked after, 8 when a store is damaged; after a "
          "repair, as things are then.",
      .run = Examine};
}

}  // namespace tarnctl
