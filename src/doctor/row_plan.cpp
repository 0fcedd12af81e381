#include "doctor/row_plan.h"

#include "platform/host_paths.h"

#include "admin/misfits.h"
#include "admin/row_division.h"
#include "admin/row_views.h"
#include "doctor/findings.h"
#include "json/instance_ids.h"
#include "json/json.h"

#include <optional>
#include <string>
#include <utility>

namespace TarnConfigStore {
namespace {

constexpr const char* kTable = "Config";

class Planner {
 public:
  Planner(const ConfigStoreObjectId& id, const SchemaHandle& type, StoredRow& row, MendPlan& plan)
      : id_(id), type_(type), row_(row), plan_(plan) {}

  bool Run() {
    for (const ValueColumn& column : kValueColumns) {
      if (row_.*column.text) {
        CheckText(column);
      }
    }
    if (!type_) {
      Tell(DoctorSeverity::WARNING, "row-unknown-type", "",
           "its type is not installed: nobody can read or change it",
           "install the type (`tarnctl doctor --repair --types PATH...`)", false);
    } else {
      CheckFit();
      CheckParts();
    }
    TellWhatWaits();
    return changes_;
  }

 private:
  void Tell(DoctorSeverity severity, const char* kind, const std::string& pointer,
            const std::string& message, const std::string& advice, bool mendable) {
    plan_.findings.push_back(RowFinding(severity, kind, kTable, id_, message, advice, mendable));
    plan_.findings.back().pointer = pointer;
  }

  void Keep(const ValueColumn& column, const char* reason) {
    plan_.putAside.push_back({HostPaths::kStore,
                              kTable,
                              reason,
                              {{"Component", id_.component},
                               {"ConfigGroup", id_.group},
                               {"Name", id_.key},
                               {"Identifier", id_.instanceId},
                               {column.name, row_.*column.text}}});
  }

  void CheckText(const ValueColumn& column) {
    Json::Document document;
    const Json::ParseResult result = Json::Parse(*(row_.*column.text), document);
    if (!result || !document.IsObject()) {
      const std::string reason =
          result ? "is no JSON object"
                 : "is not JSON at byte " + std::to_string(result.offset) + ": " +
                       (result.forLogs != nullptr ? std::string(result.forLogs) : result.message);
      Tell(DoctorSeverity::FAULT, "row-not-json", column.name, column.name + (" " + reason),
           "`tarnctl doctor --repair` puts the text aside, so that the rest of the object, and the "
           "other objects of its type, can be read again",
           true);
      Keep(column, "it is no JSON object");
      plan_.actions.push_back(RowAction(
          "row-not-json", id_, std::string(column.name) + " was taken out of its row",
          std::string("its text is in ") + kPutAside + "; the other values are where they were"));
      (row_.*column.text).reset();
      changes_ = true;
    } else if (type_) {
      CheckId(column, document);
    }
  }

  // The row's own id is what everybody finds it by.
  void CheckId(const ValueColumn& column, Json::Document& document) {
    const std::string_view member = type_->GetSchemaPlace().InstanceIdMember();
    const std::optional<std::string_view> id = Json::InstanceIdOf(document, member);
    if (!id || *id == id_.instanceId) {
      return;
    }
    Tell(DoctorSeverity::FAULT, "row-other-id", std::string("/").append(member),
         std::string(column.name) + " has the id \"" + std::string(*id) + "\" of another instance",
         "`tarnctl doctor --repair` gives it the id of its row", true);
    Keep(column, "it had the id of another instance");
    plan_.actions.push_back(
        RowAction("row-other-id", id_, std::string(column.name) + " was given the id of its row",
                  std::string("all other members are where they were; the text as it was is in ") +
                      kPutAside));
    *Json::FindMember(static_cast<Json::Value&>(document), member) =
        Json::Copy(id_.instanceId, document.GetAllocator());
    Json::Serialize(document, *(row_.*column.text));
    changes_ = true;
  }

  void CheckFit() {
    std::vector<Misfit> misfits;
    JudgeRow(row_, id_, type_, misfits);
    for (Misfit& misfit : misfits) {
      Tell(DoctorSeverity::FAULT, "row-misfit", misfit.pointer, misfit.error,
           "look at it (`tarnctl get`), and set what fits; it stays as it is until then", false);
    }
    fits_ = misfits.empty();
  }

  void CheckParts() {
    const RowDivider::Result result = RowDivider(nullptr, type_).Divide(id_, row_);
    if (result == RowDivider::Result::AS_IT_IS) {
      return;
    }
    const bool mendable = result != RowDivider::Result::NOT;
    Tell(DoctorSeverity::WARNING, "row-parts", "",
         mendable
             ? "members of it stand in another part than their type says"
             : "members of it stand in another part than their type says, and moving them would "
               "change what is read",
         mendable ? "`tarnctl doctor --repair` moves them"
                  : "once what waits in it is confirmed or dropped, they can be moved",
         mendable);
    if (mendable) {
      plan_.actions.push_back(
          RowAction("row-parts", id_,
                    result == RowDivider::Result::DIVIDED
                        ? "its members were moved to their parts"
                        : "its members were moved to their parts, but for what waits",
                    "in its row: whoever reads the object reads the same as before"));
      if (result == RowDivider::Result::DIVIDED && fits_) {
        row_.version = type_->GetVersion();
      }
      changes_ = true;
    }
  }

  void TellWhatWaits() {
    if (row_.pending) {
      Tell(DoctorSeverity::NOTE, "row-pending", "DesiredValue", "a value waits for the next boot",
           "`tarnctl boot accept` or `tarnctl boot reject`, once the host has booted", false);
    }
    if (!row_.confirmed) {
      Tell(DoctorSeverity::NOTE, "row-unconfirmed", "Success",
           "it was written during an upgrade that nobody has confirmed yet",
           "`tarnctl boot accept`, once the upgrade went well", false);
    }
  }

  const ConfigStoreObjectId& id_;
  const SchemaHandle& type_;
  StoredRow& row_;
  MendPlan& plan_;
  bool changes_ = false;
  bool fits_ = true;
};

}  // namespace

bool PlanRow(const ConfigStoreObjectId& id, const SchemaHandle& type, StoredRow& row,
             MendPlan& plan) {
  return Planner(id, type, row, plan).Run();
}

}  // namespace TarnConfigStore
