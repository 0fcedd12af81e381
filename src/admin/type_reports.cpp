#include "admin/type_reports.h"

#include "errors/parse_failures.h"
#include "errors/raise.h"
#include "json/text_file.h"

#include <map>
#include <utility>

namespace TarnConfigStore {
namespace {

TypeFiles::TypeFile Unread(const std::string& path, const std::string& reason, UnreadFile unread) {
  if (unread == UnreadFile::RAISES) {
    ReportUnreadFile(path, reason);
    ThrowException<InvalidArgumentException>(CS_JSON_FILE_FAILED, path);
  }
  TypeFiles::TypeFile file;
  file.path = path;
  file.findings.push_back({"/", "it cannot be read: " + reason});
  return file;
}

// A type can come from one file only.
void FindRepetitions(std::vector<TypeFiles::TypeFile>& files) {
  std::map<TarnSchemaStore::TypeName, const TypeFiles::TypeFile*> first;
  for (TypeFiles::TypeFile& file : files) {
    const TarnSchemaStore::TypeName& name = file.type.name;
    if (name.component.empty() || name.group.empty() || name.key.empty()) {
      continue;
    }
    const auto [entry, isNew] = first.emplace(name, &file);
    if (!isNew) {
      file.findings.push_back({"/key", "the type " + name.component + "/" + name.group + "/" +
                                           name.key + " comes from " + entry->second->path +
                                           " as well"});
    }
  }
}

}  // namespace

std::vector<TypeFiles::TypeFile> ReadTypeFiles(const std::vector<std::string>& paths,
                                               UnreadFile unread) {
  std::vector<TypeFiles::TypeFile> files;
  for (const std::string& path : paths) {
    std::error_code error;
    const std::vector<std::string> found = TypeFiles::FilesAt(path, error);
    if (error) {
      files.push_back(Unread(path, error.message(), unread));
    }
    for (const std::string& file : found) {
      const Json::TextFile read = Json::ReadTextFile(file, TypeFiles::kLongestFile);
      files.push_back(read ? TypeFiles::Check(file, read.text)
                           : Unread(file, read.Reason(), unread));
    }
  }
  FindRepetitions(files);
  return files;
}

TypeReport MakeReport(const TypeFiles::TypeFile& file) {
  TypeReport report;
  report.path = file.path;
  report.component = file.type.name.component;
  report.group = file.type.name.group;
  report.key = file.type.name.key;
  report.version = file.type.version;
  report.outcome = file.Good() ? TypeOutcome::VALID : TypeOutcome::INVALID;
  for (const TypeFiles::Finding& finding : file.findings) {
    report.errors.push_back({finding.field, finding.error});
  }
  for (const TypeFiles::Finding& warning : file.warnings) {
    report.warnings.push_back({warning.field, warning.error});
  }
  return report;
}

void JudgeInstallation(const TypeFiles::TypeFile& file,
                       const std::optional<TypeFiles::KeptType>& installed, bool force,
                       TypeReport& report) {
  if (report.outcome == TypeOutcome::INVALID) {
    return;
  }
  if (!installed) {
    report.outcome = TypeOutcome::INSTALLED;
    return;
  }
  if (installed->text == file.type.text) {
    report.outcome = TypeOutcome::UNCHANGED;
    return;
  }
  if (TypeFiles::CompareVersions(file.type.version, installed->version) >= 0) {
    report.outcome = TypeOutcome::UPGRADED;
  } else if (force) {
    report.outcome = TypeOutcome::DOWNGRADED;
  } else {
    report.outcome = TypeOutcome::INVALID;
    report.errors.push_back({"/version", "version " + file.type.version +
                                             " is older than the installed version " +
                                             installed->version + "; going back has to be forced"});
  }
}

}  // namespace TarnConfigStore
