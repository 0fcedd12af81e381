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
// A file that could not be read, or a document that was refused, is told in its report.
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
inline std::string Told(const OutdatedObject& outdated) {
  return outdated.stored.id.toString() + outdated.installedVersion;
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
// Of everything else, its name and what tells it apart.
template <class Thing>
std::string Told(const Thing& thing) {
  std::string text;
  if constexpr (requires { thing.ToJson(); }) {
    text = thing.ToJson();
  } else if constexpr (requires { thing.begin() != thing.end(); }) {
    for (const auto& element : thing) {
      text += Told(element) + " ";
    }
  } else if constexpr (requires { thing.pointer; }) {
    text = thing.pointer;
    if constexpr (requires { thing.value; }) {
      text += thing.value.value_or("-");
    }
  } else if constexpr (requires { thing.error; }) {
    text = thing.field + ":" + thing.error;
  } else if constexpr (requires { thing.flags; }) {
    text = thing.key + thing.version + thing.flags;
  } else if constexpr (requires { thing.object; }) {
    text = thing.object.toString() + std::to_string(static_cast<int>(thing.outcome));
  } else {
    text = thing.id.toString();
    if constexpr (requires { thing.action; }) {
      text += std::to_string(static_cast<int>(thing.action));
    }
  }
  return text;
}

}  // namespace Faults
