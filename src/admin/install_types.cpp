#include "tarnconfigstore/type_administration.h"

#include "admin/misfits.h"
#include "admin/shipped_objects.h"
#include "admin/type_reports.h"
#include "errors/platform_failures.h"
#include "persistence/connection.h"
#include "store/under_transaction.h"

#include <algorithm>
#include <map>

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

// Of the types that are about to change, the stored objects have a say, too.
void JudgeStoredObjects(const Files& files, const DBStore::ConnectionHandle& connection, bool force,
                        Reports& reports) {
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (reports[i].outcome != TypeOutcome::INVALID &&
        reports[i].outcome != TypeOutcome::UNCHANGED) {
      JudgeStoredObjects(files[i], connection, force, reports[i]);
    }
  }
}

void JudgeWithoutWriting(const Files& files, bool force, Reports& reports) {
  std::map<TarnSchemaStore::TypeName, TypeFiles::KeptType> installed;
  for (TypeFiles::KeptType& type : TypeFiles::ReadAll()) {
    installed.emplace(type.name, std::move(type));
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    const auto found = installed.find(files[i].type.name);
    JudgeInstallation(files[i],
                      found == installed.end() ? std::nullopt : std::optional(found->second), force,
                      reports[i]);
  }
  JudgeStoredObjects(files, GetDBStore(DBStore::Type::CURRENT_STORE, true), force, reports);
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

// The schemas are written, but not committed, before the shipped objects: the schema store is then
// locked against other installations, so that what was judged still holds, and most of what can go
// wrong has gone wrong before anything is committed. The store is locked while its objects are
// judged, so that none is written beside that. A failure between the two commits leaves the old
// types with new shipped objects; installing again mends that.
void Install(const Files& files, bool force, Reports& reports) {
  TypeFiles::TypeWriter writer;
  for (std::size_t i = 0; i < files.size(); ++i) {
    JudgeInstallation(files[i], writer.Read(files[i].type.name), force, reports[i]);
  }
  bool changes = false;
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  RunUnderTransaction(connection, "InstallTypes", [&] {
    JudgeStoredObjects(files, connection, force, reports);
    if (AnyInvalid(reports)) {
      return;
    }
    changes = PutChangedTypes(files, reports, writer);
    for (const TypeFiles::TypeFile& file : files) {
      ReplaceDefaultRows(IdOf(file.type.name), file.type.version, DivideShippedObjects(file),
                         connection);
    }
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

std::vector<TypeReport> CheckTypes(const std::vector<std::string>& paths) {
  return MakeReports(ReadTypeFiles(paths));
}

}  // namespace TarnConfigStore
