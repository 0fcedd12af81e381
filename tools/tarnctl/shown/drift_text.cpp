#include "shown/drift_text.h"

#include "given/object_name.h"
#include "json/utf8.h"

#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace tarnctl {
namespace {

using TarnConfigStore::DriftKind;
using TarnConfigStore::DriftMember;

constexpr const char* kBold = "\033[1m";
constexpr const char* kGreen = "\033[32m";
constexpr const char* kRed = "\033[31m";
constexpr const char* kYellow = "\033[33m";
constexpr const char* kPlain = "\033[0m";

std::string Line(const std::string& text, const char* colour, bool inColour) {
  const std::string shown = Json::Utf8::WithoutControls(text);
  return inColour ? colour + shown + kPlain + "\n" : shown + "\n";
}

std::string Line(const DriftMember& member, bool inColour) {
  const std::string place = (member.pointer.empty() ? "/" : member.pointer) + ": ";
  const std::string part = " (" + member.part + ")";
  if (!member.found) {
    return Line("  + " + place + member.expected.value_or("") + part, kGreen, inColour);
  }
  if (!member.expected) {
    return Line("  - " + place + *member.found + part, kRed, inColour);
  }
  return Line("  ~ " + place + *member.found + " -> " + *member.expected + part, kYellow, inColour);
}

const char* Remark(DriftKind kind) {
  switch (kind) {
    case DriftKind::MISSING:
      return " (missing)";
    case DriftKind::EXTRA:
      return " (extra)";
    case DriftKind::CHANGED:
      break;
  }
  return "";
}

}  // namespace

std::string DescribeDrift(const TarnConfigStore::DriftObject& object, bool inColour) {
  return Line(FormatObject(object.GetConfigStoreObjectId()) + Remark(object.GetKind()), kBold,
              inColour) +
         DescribeMembers(object, inColour);
}

std::string DescribeMembers(const TarnConfigStore::DriftObject& object, bool inColour) {
  std::string lines;
  for (const DriftMember& member : object.GetMembers()) {
    lines += Line(member, inColour);
  }
  return lines;
}

Json::Value Describe(const TarnConfigStore::DriftObject& object, JsonMaker& make) {
  Json::Value described = make.Object("object", FormatObject(object.GetConfigStoreObjectId()));
  Json::Value content = make.Parse(object.ToJson());
  for (auto& [name, value] : content.GetObject()) {
    described.AddMember(name, value, make.GetAllocator());
  }
  return described;
}

bool ShowsColours() {
  const char* const noColour = std::getenv("NO_COLOR");  // https://no-color.org
  const char* const terminal = std::getenv("TERM");
  return ::isatty(STDOUT_FILENO) != 0 && (noColour == nullptr || *noColour == '\0') &&
         terminal != nullptr && std::string_view(terminal) != "dumb";
}

}  // namespace tarnctl
