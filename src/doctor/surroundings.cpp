#include "doctor/surroundings.h"

#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/file.h"

#include "platform/host_paths.h"
#include "platform/store_error.h"
#include "platform/type_files.h"

#include "notify/allowlist.h"
#include "notify/notification.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

namespace TarnConfigStore {
namespace {

DoctorFinding Finding(DoctorSeverity severity, const char* kind, const char* file,
                      std::string message, std::string advice) {
  DoctorFinding made;
  made.severity = severity;
  made.kind = kind;
  made.file = file;
  made.message = std::move(message);
  made.advice = std::move(advice);
  return made;
}

// "COMPONENT.GROUP.KEY", or "COMPONENT.GROUP.*".
bool Names(const std::string& entry, const KnownTypes& types) {
  const std::size_t first = entry.find('.');
  const std::size_t second = first == std::string::npos ? first : entry.find('.', first + 1);
  if (second == std::string::npos) {
    return false;
  }
  const std::string component = entry.substr(0, first);
  const std::string group = entry.substr(first + 1, second - first - 1);
  const std::string key = entry.substr(second + 1);
  return key == "*" ? types.HasGroup(component, group)
                    : types.All().count({component, group, key}) != 0;
}

void CheckAllowlist(const KnownTypes* types, bool isUsed, std::vector<DoctorFinding>& findings) {
  const DoctorSeverity severity = isUsed ? DoctorSeverity::FAULT : DoctorSeverity::NOTE;
  if (!FileExists(HostPaths::Resolve(HostPaths::kNotifyAllowlist))) {
    findings.push_back(Finding(severity, "allowlist-missing", HostPaths::kNotifyAllowlist,
                               "there is no such file: nobody is told of any change",
                               "put the list there that the host ships"));
    return;
  }
  try {
    NotifyAllowlist list = ReadNotifyAllowlist();
    std::vector<std::string> entries(list.begin(), list.end());
    std::sort(entries.begin(), entries.end());
    std::size_t named = 0;
    for (const std::string& entry : entries) {
      if (types == nullptr || Names(entry, *types)) {
        ++named;
      } else {
        findings.push_back(Finding(DoctorSeverity::NOTE, "allowlist-unknown-type",
                                   HostPaths::kNotifyAllowlist,
                                   "it names \"" + entry + "\", and no such type is installed",
                                   "install the type, or take the entry out"));
      }
    }
    if (named == 0) {
      findings.push_back(Finding(DoctorSeverity::NOTE, "allowlist-names-none",
                                 HostPaths::kNotifyAllowlist,
                                 "it names no type that is installed: nobody is told of any change",
                                 "put the names of types in, COMPONENT.GROUP.KEY or "
                                 "COMPONENT.GROUP.*"));
    }
  } catch (const ConfigStoreException& failure) {
    findings.push_back(Finding(
        severity, "allowlist-broken", HostPaths::kNotifyAllowlist,
        std::string("it cannot be used, so nobody is told of any change: ") + failure.what(),
        "it has to be a JSON array of texts, COMPONENT.GROUP.KEY or "
        "COMPONENT.GROUP.*, and readable"));
  }
}

void CheckSwitch(std::vector<DoctorFinding>& findings) {
  const DBStore::ConnectionHandle connection =
      DBStore::GetConnection(DBStore::Type::CURRENT_STORE, false);
  if (!connection) {
    findings.push_back(
        Finding(DoctorSeverity::FAULT, "switch-unreadable", HostPaths::kStore,
                "whether changes are announced cannot be read: " + DBStore::GetLastError().message,
                "`tarnctl doctor` says more"));
  } else if (!IsKeeldNotificationEnabled(connection)) {
    findings.push_back(Finding(DoctorSeverity::NOTE, "notification-off", HostPaths::kStore,
                               "the entry NOTIFY_KEELD is not \"true\": no change is announced",
                               "`tarnctl kv set NOTIFY_KEELD true` switches it on"));
  }
}

std::optional<KnownTypes> TypesIfReadable() {
  try {
    return KnownTypes(TypeFiles::ReadAll());
  } catch (const std::runtime_error&) {
    return std::nullopt;  // what the allowlist names is not held against them then
  }
}

}  // namespace

std::vector<DoctorFinding> ExamineNotification() {
  std::vector<DoctorFinding> findings;
  CheckSwitch(findings);
  const std::optional<KnownTypes> types = TypesIfReadable();
  CheckAllowlist(types ? &*types : nullptr, true, findings);
  // An entry of a type that is not there keeps no other one from being announced.
  std::erase_if(findings, [](const DoctorFinding& finding) {
    return finding.kind == "allowlist-unknown-type";
  });
  DBStore::ClearLastError();
  return findings;
}

void CheckSurroundings(const KnownTypes* types, const DBStore::ConnectionHandle& connection,
                       std::vector<DoctorFinding>& findings) {
  const bool isUsed = connection && IsKeeldNotificationEnabled(connection);
  CheckAllowlist(types, isUsed, findings);
  if (isUsed) {
    const std::string reason = WhyNobodyListens();
    if (!reason.empty()) {
      findings.push_back(
          Finding(DoctorSeverity::WARNING, "nobody-listens", "kslLocalSocketKeeldNotifyWisp",
                  "changes are to be announced, and nobody listens: " + reason,
                  "start the management daemon, and run this in the working directory of the "
                  "services that write; or switch NOTIFY_KEELD off"));
    }
  }
}

}  // namespace TarnConfigStore
