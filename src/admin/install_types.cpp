#include "tarnconfigstore/type_administration.h"

#include "platform/logger.h"

#include "admin/shipped_objects.h"
#include "admin/stored_rows.h"
#include "admin/type_reports.h"
#include "errors/platform_failures.h"
#include "persistence/connection.h"
#include "store/under_transaction.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

namespace TarnConfigStore {
namespace {

using Files = std::vector<TypeFiles::TypeFile>;
using Reports = std::vector<TypeReport>;

Reports MakeReports(const Files& files) {
  Reports reports;
  reports.reserve(files.size());
  for (const TypeFiles::TypeFile& file : files) {
    reports.push_back(MakeReport(file));
  }
  return reports;
}

bool AnyInvalid(const Reports& reports) {
  return std::any_of(reports.begin(), reports.end(), [](const TypeReport& report) {
    return report.outcome == TypeOutcome::INVALID;
  });
}

// Nothing was written: good files are no more than good.
void OnlyChecked(Reports& reports) {
  for (TypeReport& report : reports) {
    if (report.outcome != TypeOutcome::INVALID) {
      report.outcome = TypeOutcome::VALID;
    }
  }
}

// A file on its way into the store.
struct Installation {
  const TypeFiles::TypeFile& file;
  std::optional<TypeFiles::KeptType> installed;
  RowPlan rows;
};

using Installations = std::vector<Installation>;

template <class Read>
Installations Prepare(const Files& files, const Read& readInstalled) {
  Installations installations;
  installations.reserve(files.size());
  for (const TypeFiles::TypeFile& file : files) {
    installations.push_back({file, readInstalled(file.type.name), {}});
  }
  return installations;
}

// The type that is installed, as far as it can still be read: what is damaged is to be replaced.
SchemaHandle LoadInstalled(const std::optional<TypeFiles::KeptType>& type) {
  try {
    return type ? TypeFiles::Load(*type) : nullptr;
  } catch (const std::runtime_error& damaged) {
    CSLogger::Log(1, "The installed type is damaged: %s", damaged.what());
    return nullptr;
  }
}

// Of a type that is about to change, what is stored and staged has a say, too.
void JudgeRows(Installation& installation, const DBStore::ConnectionHandle& connection, bool force,
               TypeReport& report) {
  const ConfigStoreObjectId type = IdOf(installation.file.type.name);
  if (CountStoredInstances(type, connection) == 0 && ReadStagedOfType(type, connection).empty()) {
    return;
  }
  RowPlan& plan = installation.rows;
  plan = PlanInstallation(type, LoadInstalled(installation.installed),
                          TypeFiles::Load(installation.file.type), connection);
  report.misfits = std::move(plan.misfits);
  if (!report.misfits.empty() && !force) {
    report.outcome = TypeOutcome::INVALID;
  } else {
    report.divided = std::move(plan.reports);
  }
}

void Judge(Installations& installations, const DBStore::ConnectionHandle& connection, bool force,
           Reports& reports) {
  for (std::size_t i = 0; i < installations.size(); ++i) {
    Installation& installation = installations[i];
    JudgeInstallation(installation.file, installation.installed, force, reports[i]);
    if (reports[i].outcome != TypeOutcome::INVALID &&
        reports[i].outcome != TypeOutcome::UNCHANGED) {
      JudgeRows(installation, connection, force, reports[i]);
    }
  }
}

void JudgeWithoutWriting(const Files& files, bool force, Reports& reports) {
  std::map<TarnSchemaStore::TypeName, TypeFiles::KeptType> installed;
  for (TypeFiles::KeptType& type : TypeFiles::ReadAll()) {
    installed.emplace(type.name, std::move(type));
  }
  Installations installations = Prepare(files, [&](const TarnSchemaStore::TypeName& name) {
    const auto found = installed.find(name);
    return found == installed.end() ? std::nullopt : std::optional(found->second);
  });
  Judge(installations, GetDBStore(DBStore::Type::CURRENT_STORE, true), force, reports);
  OnlyChecked(reports);
}

// Answers whether anything was put.
bool PutChangedTypes(const Files& files, const Reports& reports, TypeFiles::TypeWriter& writer) {
  bool changes = false;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (reports[i].outcome != TypeOutcome::UNCHANGED) {
      writer.Put(files[i].type);
      changes = true;
    }
  }
  return changes;
}

void WriteRows(const Installations& installations, const DBStore::ConnectionHandle& connection) {
  for (const auto& [file, installed, rows] : installations) {
    const ConfigStoreObjectId type = IdOf(file.type.name);
    WriteChanges(type, rows, connection);
    ReplaceDefaultRows(type, file.type.version, DivideShippedObjects(file), connection);
  }
}

// The schemas are written, but not committed, before the rows: the schema store is then locked
// against other installations, so that what was judged still holds, and most of what can go wrong
// has gone wrong before anything is committed. The store is locked while its objects are judged, so
// that none is written beside that. A failure between the two commits leaves the old types with rows
// that are divided by the new ones, which read the same, and with new shipped objects; installing
// again mends that, and divides again what the old types made of the rows meanwhile.
void Install(const Files& files, bool force, Reports& reports) {
  TypeFiles::TypeWriter writer;
  Installations installations = Prepare(
      files, [&writer](const TarnSchemaStore::TypeName& name) { return writer.Read(name); });
  bool changes = false;
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  RunUnderTransaction(connection, "InstallTypes", [&] {
    Judge(installations, connection, force, reports);
    if (AnyInvalid(reports)) {
      return;
    }
    changes = PutChangedTypes(files, reports, writer);
    WriteRows(installations, connection);
  });
  if (AnyInvalid(reports)) {
    OnlyChecked(reports);
  } else if (changes) {
    writer.Commit();
  }
}

}  // namespace

std::vector<TypeReport> InstallTypes(const std::vector<std::string>& paths,
                                     const InstallOptions& options) {
  const Files files = ReadTypeFiles(paths);
  Reports reports = MakeReports(files);
  if (files.empty()) {
    return reports;
  }
  WithStoreFailures([&] {
    if (options.checkOnly || AnyInvalid(reports)) {
      JudgeWithoutWriting(files, options.force, reports);
    } else {
      Install(files, options.force, reports);
    }
  });
  return reports;
}

std::vector<TypeReport> CheckTypes(const std::vector<std::string>& paths, UnreadFile unread) {
  return MakeReports(ReadTypeFiles(paths, unread));
}

}  // namespace TarnConfigStore
