#include "shown/change_text.h"

#include "given/object_name.h"
#include "json/utf8.h"
#include "shown/descriptions.h"
#include "shown/drift_text.h"
#include "shown/pending_text.h"

namespace tarnctl {
namespace {

using TarnConfigStore::DriftKind;
using TarnConfigStore::DriftObject;
using TarnConfigStore::EntryDifference;
using TarnConfigStore::HostDifference;
using TarnConfigStore::PendingChange;
using TarnConfigStore::TypeDifference;

const char* NameOf(DriftKind kind) {
  switch (kind) {
    case DriftKind::MISSING:
      return "created";
    case DriftKind::EXTRA:
      return "deleted";
    case DriftKind::CHANGED:
      break;
  }
  return "changed";
}

std::string LineOf(const std::string& text) {
  return Json::Utf8::WithoutControls(text) + "\n";
}

std::string LinesOf(const DriftObject& object, const Terminal& terminal) {
  return LineOf(FormatObject(object.GetConfigStoreObjectId()) + ": " + NameOf(object.GetKind())) +
         DescribeMembers(object, terminal);
}

// What it was to change.
std::string LinesOfSettled(const PendingChange& change, const Terminal& terminal) {
  std::string lines = LineOf("waits no longer: " + FormatObject(change.id));
  for (const DriftObject& object : change.difference) {
    lines += DescribeMembers(object, terminal);
  }
  return lines;
}

std::string LineOf(const TypeDifference& type) {
  const std::string name = "type " + FormatObject(type.type) + ": ";
  return LineOf(type.before.empty()  ? name + "installed, " + type.after
                : type.after.empty() ? name + "removed, " + type.before
                                     : name + type.before + " -> " + type.after);
}

std::string ValueOf(const std::string& entry) {
  return entry.empty() ? "nothing" : "\"" + entry + "\"";
}

Json::Value ValueOrNull(const std::string& text, JsonMaker& make) {
  return text.empty() ? Json::Value() : make.Of(text);
}

Json::Value DescribeObject(const DriftObject& object, JsonMaker& make) {
  Json::Value members = Describe(object, make);
  return make.Object("object", FormatObject(object.GetConfigStoreObjectId()), "change",
                     NameOf(object.GetKind()), "members",
                     std::move(*Json::FindMember(members, "members")));
}

}  // namespace

std::string DescribeChanges(const HostDifference& difference, const Terminal& terminal) {
  std::string lines;
  for (const DriftObject& object : difference.objects) {
    lines += LinesOf(object, terminal);
  }
  for (const PendingChange& change : difference.waiting) {
    lines += "waits for the next boot: " + DescribePending(change, terminal);
  }
  for (const PendingChange& change : difference.settled) {
    lines += LinesOfSettled(change, terminal);
  }
  for (const TypeDifference& type : difference.types) {
    lines += LineOf(type);
  }
  for (const EntryDifference& entry : difference.entries) {
    lines +=
        LineOf("entry " + entry.key + ": " + ValueOf(entry.before) + " -> " + ValueOf(entry.after));
  }
  return lines;
}

Json::Value Describe(const HostDifference& difference, JsonMaker& make) {
  const auto describePending = [&make](const PendingChange& change) {
    return Describe(change, make);
  };
  return make.Object(
      "objects",
      make.List(difference.objects,
                [&make](const DriftObject& object) { return DescribeObject(object, make); }),
      "waits", make.List(difference.waiting, describePending), "waitsNoLonger",
      make.List(difference.settled, describePending), "types",
      make.List(difference.types,
                [&make](const TypeDifference& type) {
                  return make.Object("type", FormatObject(type.type), "before",
                                     ValueOrNull(type.before, make), "after",
                                     ValueOrNull(type.after, make));
                }),
      "entries", make.List(difference.entries, [&make](const EntryDifference& entry) {
        return make.Object("key", entry.key, "before", ValueOrNull(entry.before, make), "after",
                           ValueOrNull(entry.after, make));
      }));
}

}  // namespace tarnctl
