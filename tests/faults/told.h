// What came of a call, in words.
#pragma once

#include "tarnconfigstore/tarnconfigstore.h"

#include <memory>
#include <string>
#include <utility>

namespace Faults {

using namespace TarnConfigStore;

inline std::string Told() {
  return "done";
}
inline std::string Told(bool value) {
  return value ? "yes" : "no";
}
inline std::string Told(int value) {
  return std::to_string(value);
}
inline std::string Told(const std::string& text) {
  return text;
}
inline std::string Told(const std::shared_ptr<ConfigStoreObject>& object) {
  return object ? object->GetConfigStoreObjectId().toString() + object->GetData() +
                      std::to_string(object->GetRevision())
                : "none";
}
inline std::string Told(const std::pair<std::string, std::int32_t>& revision) {
  return revision.first + std::to_string(revision.second);
}
inline std::string Told(const ErrorInfo& error) {
  return error.field + ":" + error.error;
}
inline std::string Told(const StoredObject& stored) {
  return stored.id.toString() + std::to_string(stored.revision) + Told(stored.hasPending);
}
inline std::string Told(const OutdatedObject& outdated) {
  return Told(outdated.stored) + outdated.installedVersion;
}
inline std::string Told(const StagedChange& change) {
  return change.id.toString() + std::to_string(static_cast<int>(change.action));
}
inline std::string Told(const AppliedChange& change) {
  return change.id.toString() + std::to_string(change.decided.size());
}
inline std::string Told(const UnappliedChange& change) {
  return "not " + change.id.toString();
}
inline std::string Told(const PendingChange& change) {
  std::string text = change.id.toString();
  for (const DriftObject& object : change.difference) {
    text += object.ToJson();
  }
  for (const MemberChange& member : change.meanwhile) {
    text += member.pointer + member.current.value_or("-");
  }
  return text + std::to_string(change.findings.size() + change.mergedFindings.size());
}
inline std::string Told(const InstalledType& type) {
  return type.key + type.version + type.flags;
}
inline std::string Told(const RowReport& row) {
  return row.object.toString() + std::to_string(static_cast<int>(row.outcome));
}
inline std::string Told(const DriftObject& drift) {
  return drift.ToJson();
}
// A file that could not be read is told in the report.
inline std::string Told(const TypeReport& type) {
  if (type.outcome == TypeOutcome::INVALID) {
    throw std::runtime_error(type.errors.empty() ? "misfits" : type.errors.front().error);
  }
  return type.key + type.version + std::to_string(static_cast<int>(type.outcome)) +
         std::to_string(type.divided.size());
}
inline std::string Told(const DocumentReport& report) {
  if (!report.Fits()) {
    throw std::runtime_error("the document was refused");
  }
  return report.ToJson();
}
inline std::string Told(const MemberDescription& member) {
  return member.pointer + member.type + std::to_string(member.limits.size());
}
inline std::string Told(const ExplainedMember& member) {
  return member.pointer + member.value.value_or("-") + std::to_string(member.held.size());
}
inline std::string Told(const UnsetMember& member) {
  return member.pointer + std::to_string(member.taken.size());
}
template <class List>
requires requires(const List& list) {
  list.begin() != list.end();
}
std::string Told(const List& list) {
  std::string text;
  for (const auto& element : list) {
    text += Told(element) + " ";
  }
  return text;
}

}  // namespace Faults
