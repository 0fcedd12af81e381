#include "tarnconfigstore/doctor.h"

#include "doctor/findings.h"
#include "json/json.h"
#include "json/print.h"

#include <algorithm>
#include <array>

namespace TarnConfigStore {
namespace {

constexpr std::array<const char*, 4> kSeverities = {"note", "warning", "fault", "damage"};

class Writer {
 public:
  std::string Write(const DoctorReport& report) {
    Json::Value root(rapidjson::kObjectType);
    root.AddMember("healthy", report.IsHealthy(), pool_);
    AddFindings(root, "findings", report.findings);
    if (!report.keepingPlace.empty() || !report.actions.empty()) {
      AddFindings(root, "before", report.before);
      AddActions(root, report.actions);
      AddText(root, "keepingPlace", report.keepingPlace);
    }
    std::string text;
    // Names in it may be bytes of any kind.
    Json::Print(root, Json::Layout::ONE_LINE, Json::BadText::REPAIRED, text);
    return text;
  }

 private:
  void AddText(Json::Value& to, const char* name, const std::string& text) {
    if (!text.empty()) {
      to.AddMember(Json::Reference(name), Json::Copy(text, pool_), pool_);
    }
  }

  void AddObject(Json::Value& to, const ConfigStoreObjectId& id) {
    if (!id.key.empty()) {
      AddText(to, "object", NameOfObject(id));
    }
  }

  void AddFindings(Json::Value& to, const char* name, const std::vector<DoctorFinding>& findings) {
    Json::Value list(rapidjson::kArrayType);
    for (const DoctorFinding& finding : findings) {
      Json::Value made(rapidjson::kObjectType);
      made.AddMember("severity",
                     Json::Reference(kSeverities[static_cast<std::size_t>(finding.severity)]),
                     pool_);
      AddText(made, "kind", finding.kind);
      AddText(made, "file", finding.file);
      AddText(made, "table", finding.table);
      AddObject(made, finding.object);
      AddText(made, "pointer", finding.pointer);
      AddText(made, "message", finding.message);
      AddText(made, "advice", finding.advice);
      made.AddMember("mendable", finding.mendable, pool_);
      list.PushBack(made, pool_);
    }
    to.AddMember(Json::Reference(name), list, pool_);
  }

  void AddActions(Json::Value& to, const std::vector<DoctorAction>& actions) {
    Json::Value list(rapidjson::kArrayType);
    for (const DoctorAction& action : actions) {
      Json::Value made(rapidjson::kObjectType);
      made.AddMember("done", action.done, pool_);
      AddText(made, "kind", action.kind);
      AddText(made, "file", action.file);
      AddObject(made, action.object);
      AddText(made, "message", action.message);
      AddText(made, "where", action.where);
      list.PushBack(made, pool_);
    }
    to.AddMember("actions", list, pool_);
  }

  Json::Allocator pool_;
};

}  // namespace

bool DoctorReport::IsHealthy() const {
  return std::all_of(findings.begin(), findings.end(),
                     [](const DoctorFinding& finding) {
                       return finding.severity == DoctorSeverity::NOTE;
                     }) &&
         std::all_of(actions.begin(), actions.end(),
                     [](const DoctorAction& action) { return action.done; });
}

bool DoctorReport::IsDamaged() const {
  return std::any_of(findings.begin(), findings.end(), [](const DoctorFinding& finding) {
    return finding.severity == DoctorSeverity::DAMAGE;
  });
}

std::string DoctorReport::ToJson() const {
  return Writer().Write(*this);
}

}  // namespace TarnConfigStore
