#include "tarnconfigstore/doctor.h"
#include "tarnconfigstore/type_administration.h"

#include "platform/host_paths.h"
#include "platform/host_repair.h"
#include "platform/type_files.h"

#include "doctor/findings.h"
#include "doctor/known_types.h"
#include "doctor/put_aside.h"
#include "doctor/store_plan.h"
#include "errors/platform_failures.h"
#include "persistence/connection.h"
#include "store/under_transaction.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

namespace TarnConfigStore {
namespace {

class Repair {
 public:
  Repair(const RepairOptions& options, DoctorReport& report)
      : options_(options), report_(report), putAside_(report.keepingPlace) {}

  void Run() {
    Add({HostRepair::KeepCopies(report_.keepingPlace)});
    Try("files", HostPaths::kStore, [this] { Add(HostRepair::MendFiles(report_.keepingPlace)); });
    Try("databases", HostPaths::kStore, [this] {
      Add(HostRepair::MendDatabases(report_.keepingPlace, HasGoodTypes(),
                                    [this](const std::vector<HostRepair::LostRow>& rows) {
                                      putAside_.SetRecovered(rows);
                                      putAside_.Write();
                                    }));
    });
    const HostRepair::Examination state = HostRepair::Examine();
    if (state.canReadStore && state.canReadTypes) {
      Try("types", HostPaths::kSchemaStore, [this] { InstallMissingTypes(); });
      Try("rows", HostPaths::kStore, [this] { MendRows(); });
    }
  }

 private:
  void Add(std::vector<HostRepair::Action> actions) {
    for (HostRepair::Action& action : actions) {
      report_.actions.push_back(ActionFrom(std::move(action)));
    }
  }

  // What one step cannot do keeps no other from what it can.
  template <class Steps>
  void Try(const char* kind, const char* file, const Steps& steps) {
    try {
      steps();
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& failure) {
      DoctorAction action;
      action.kind = kind;
      action.file = file;
      action.message = failure.what();
      action.where = "where it was: this step changed nothing";
      report_.actions.push_back(std::move(action));
    }
  }

  bool HasGoodTypes() const {
    const std::vector<TypeReport> files = CheckTypes(options_.typePaths);
    return std::any_of(files.begin(), files.end(),
                       [](const TypeReport& file) { return file.outcome != TypeOutcome::INVALID; });
  }

  // Forced, since a type that is lost is better than none, whatever its objects hold: those that do
  // not fit are found.
  void InstallMissingTypes() {
    if (options_.typePaths.empty()) {
      return;
    }
    const KnownTypes known(TypeFiles::ReadAll());
    std::vector<std::string> paths;
    for (const TypeReport& file : CheckTypes(options_.typePaths)) {
      const ConfigStoreObjectId id(file.key, file.group, file.component);
      if (known.Find(id)) {
        continue;
      }
      if (file.outcome == TypeOutcome::INVALID) {
        TellType(file, id, false,
                 file.path + " is no good type file: " +
                     (file.errors.empty()
                          ? std::string()
                          : file.errors.front().field + ": " + file.errors.front().error));
      } else {
        paths.push_back(file.path);
      }
    }
    InstallOptions options;
    options.force = true;
    for (const TypeReport& installed : InstallTypes(paths, options)) {
      TellType(installed, {installed.key, installed.group, installed.component},
               installed.outcome != TypeOutcome::INVALID,
               installed.outcome != TypeOutcome::INVALID
                   ? "the type was installed from " + installed.path
                   : installed.path + " cannot be installed");
    }
  }

  void TellType(const TypeReport& type, const ConfigStoreObjectId& id, bool done,
                std::string message) {
    DoctorAction action;
    action.done = done;
    action.kind = "type-installed";
    action.file = HostPaths::kSchemaStore;
    action.object = id;
    action.message = std::move(message);
    action.where = done ? "its objects are where they were, members in the parts that version " +
                              type.version + " says"
                        : "";
    report_.actions.push_back(std::move(action));
  }

  // As types are changed: the right to write them first, so that they stay what the rows are held
  // against; what is taken out of the store is on the disk before it is gone from there.
  void MendRows() {
    WithStoreFailures([this] {
      std::vector<TarnSchemaStore::TypeName> names;
      for (const TypeFiles::KeptType& type : TypeFiles::ReadAll()) {
        names.push_back(type.name);
      }
      const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
      TypeFiles::TypeWriter writer;
      std::vector<TypeFiles::KeptType> kept;
      for (const TarnSchemaStore::TypeName& name : names) {
        if (auto type = writer.Read(name)) {
          kept.push_back(std::move(*type));
        }
      }
      const KnownTypes types(std::move(kept));
      std::vector<DoctorAction> actions;
      RunUnderTransaction(connection, "RepairHost", [&] {
        const StorePlan plan(types, connection);
        if (plan.Changes()) {
          putAside_.SetTaken(plan.Content().putAside);
          putAside_.Write();
          plan.Carry(connection);
          actions = plan.Content().actions;
        }
      });
      report_.actions.insert(report_.actions.end(), actions.begin(), actions.end());
    });
  }

  const RepairOptions& options_;
  DoctorReport& report_;
  PutAside putAside_;
};

bool IsWorthIt(const DoctorReport& report, const RepairOptions& options) {
  if (std::any_of(report.findings.begin(), report.findings.end(),
                  [](const DoctorFinding& finding) { return finding.mendable; })) {
    return true;
  }
  if (options.typePaths.empty()) {
    return false;
  }
  // Type files mend what nothing else does.
  const HostRepair::Examination state = HostRepair::Examine();
  if (!state.canReadTypes) {
    return state.typesAreLost;
  }
  const KnownTypes known(TypeFiles::ReadAll());
  const std::vector<TypeReport> files = CheckTypes(options.typePaths);
  return std::any_of(files.begin(), files.end(), [&known](const TypeReport& file) {
    return !known.Find({file.key, file.group, file.component});
  });
}

}  // namespace

DoctorReport RepairHost(const RepairOptions& options) {
  // A path that cannot be read shows before anything is done.
  CheckTypes(options.typePaths);
  DoctorReport report = ExamineHost();
  if (!WithStoreFailures([&] { return IsWorthIt(report, options); })) {
    return report;
  }
  report.before = std::move(report.findings);
  report.findings.clear();
  WithStoreFailures([&] {
    report.keepingPlace = HostRepair::MakeKeepingPlace();
    Repair(options, report).Run();
  });
  report.findings = ExamineHost().findings;
  return report;
}

}  // namespace TarnConfigStore
