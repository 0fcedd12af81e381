#include "shown/drift_text.h"

#include "given/object_name.h"
#include "json/utf8.h"

namespace tarnctl {
namespace {

using TarnConfigStore::DriftKind;
using TarnConfigStore::DriftMember;

std::string Line(const std::string& text, const char* colour, const Terminal& terminal) {
  return terminal.Coloured(Json::Utf8::WithoutControls(text), colour) + "\n";
}

std::string Line(const DriftMember& member, const Terminal& terminal) {
  const Mark mark = MarkOf(member);
  std::string text = std::string("  ") + mark.sign + " ";
  text.append(member.pointer.empty() ? "/" : member.pointer).append(": ");
  text.append(member.found.value_or("")).append(member.found && member.expected ? " -> " : "");
  text.append(member.expected.value_or("")).append(" (").append(member.part).append(")");
  return Line(text, mark.colour, terminal);
}

}  // namespace

Mark MarkOf(const DriftMember& member) {
  return !member.found      ? Mark{"+", kGreen}
         : !member.expected ? Mark{"-", kRed}
                            : Mark{"~", kYellow};
}

const char* NameKind(DriftKind kind) {
  switch (kind) {
    case DriftKind::MISSING:
      return "missing";
    case DriftKind::EXTRA:
      return "extra";
    case DriftKind::CHANGED:
      break;
  }
  return "changed";
}

std::string DescribeDrift(const TarnConfigStore::DriftObject& object, const Terminal& terminal) {
  std::string heading = FormatObject(object.GetConfigStoreObjectId());
  if (object.GetKind() != DriftKind::CHANGED) {
    heading.append(" (").append(NameKind(object.GetKind())).append(")");
  }
  return Line(heading, kBold, terminal) + DescribeMembers(object, terminal);
}

std::string DescribeMembers(const TarnConfigStore::DriftObject& object, const Terminal& terminal) {
  std::string lines;
  for (const DriftMember& member : object.GetMembers()) {
    lines += Line(member, terminal);
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

}  // namespace tarnctl
