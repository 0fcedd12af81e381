#include "shown/member_text.h"

#include "given/object_name.h"
#include "given/part_name.h"
#include "json/utf8.h"

#include <string_view>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigPart;
using TarnConfigStore::ExplainedMember;
using TarnConfigStore::MemberDescription;
using TarnConfigStore::MemberPart;
using TarnConfigStore::MemberToken;
using TarnConfigStore::ObjectExplanation;
using TarnConfigStore::PartRole;
using TarnConfigStore::TypeSummary;

std::string Line(const std::string& text, int indent = 0) {
  return std::string(static_cast<std::size_t>(indent), ' ') + Json::Utf8::WithoutControls(text) +
         "\n";
}

// Words with commas between them; nothing for those that are empty.
std::string Listed(std::initializer_list<std::string> words, const char* between = ", ") {
  std::string text;
  for (const std::string& word : words) {
    text += word.empty() ? "" : (text.empty() ? "" : between) + word;
  }
  return text;
}

std::string If(bool holds, const char* words) {
  return holds ? words : "";
}

const char* TokenWords(MemberToken token) {
  switch (token) {
    case MemberToken::ELEMENT:
      return "each element";
    case MemberToken::POSITION:
      return "the element at this place";
    case MemberToken::PATTERN:
      return "each member whose name matches";
    case MemberToken::OTHER:
      return "members of any other name";
    case MemberToken::NAME:
      break;
  }
  return "";
}

// The user's part needs no word: it is where members are unless somebody says otherwise.
std::string PartWords(const std::vector<ConfigPart>& parts) {
  std::string words;
  for (const ConfigPart part : parts) {
    words += (words.empty() ? "" : " and ") + std::string(NameOf(part));
  }
  return words == NameOf(ConfigPart::USER) ? "" : words;
}

std::string Properties(const MemberDescription& member) {
  return Listed({member.type, TokenWords(member.token), If(member.isInstanceId, "the instance id"),
                 If(member.isRequired, "required"), PartWords(member.parts),
                 If(member.isSecret, "secret"), If(member.isReadOnly, "read-only")});
}

std::string Details(const MemberDescription& member) {
  const std::string described = Listed({member.title, member.description}, ": ");
  const std::string values =
      Listed({DescribeLimits(member.limits),
              member.defaultValue ? "default " + *member.defaultValue : std::string()},
             "; ");
  return (described.empty() ? "" : Line(described, 4)) + (values.empty() ? "" : Line(values, 4));
}

std::string Heading(const TypeSummary& type) {
  return (type.title.empty() ? "" : Line(type.title)) +
         (type.description.empty() ? "" : Line(type.description));
}

const char* RebootWords(const TypeSummary& type) {
  return type.needsReboot ? "Changes are staged, and take effect at the next boot."
                          : "Changes take effect at once.";
}

// Where the value that is read comes from.
std::string Origin(const ExplainedMember& member) {
  if (member.isDefault) {
    return "default";
  }
  std::string parts;
  for (const MemberPart& held : member.held) {
    if (held.role == PartRole::READ) {
      parts += (parts.empty() ? "" : " and ") + std::string(NameOf(held.part));
    }
  }
  return parts;
}

std::string Others(const ExplainedMember& member) {
  std::string lines;
  for (const MemberPart& held : member.held) {
    const std::string value = held.value + " (" + NameOf(held.part) + ")";
    if (held.role == PartRole::HIDDEN) {
      lines += Line("hides " + value, 4);
    } else if (held.role == PartRole::WAITS) {
      lines += Line("waits to be confirmed: " + value, 4);
    }
  }
  if (member.changesAtBoot) {
    lines += Line("after the next boot: " + member.afterBoot.value_or("nothing"), 4);
  }
  return lines;
}

std::string Explained(const ExplainedMember& member) {
  const std::string name = ShownPlace(member.pointer);
  const std::string origin = Origin(member);
  const std::string value = member.isExpanded ? ":"
                            : member.value    ? " = " + *member.value
                                              : " is not set";
  const std::string from = member.isExpanded || origin.empty() ? "" : "  (" + origin + ")";
  return Line(name + value + from) + Line(Properties(member), 4) + Details(member) + Others(member);
}

std::string StateWords(const ObjectExplanation& object) {
  if (!object.isStored) {
    return Line("Not stored: what is read are the defaults of its type.");
  }
  std::string line = "Stored: revision " + std::to_string(object.revision);
  line.append(", written ").append(object.modifiedTime).append(" UTC");
  line.append(", created ").append(object.creationTime).append(" UTC");
  if (object.version != object.type.version) {
    line.append(", under version ").append(object.version).append(" of its type, which is ");
    line.append(object.type.version).append(" by now");
  }
  return Line(line + ".") +
         (object.isConfirmed ? "" : Line("What the user set waits to be confirmed."));
}

std::string BootWords(const ObjectExplanation& object) {
  std::string lines;
  if (object.removedAtBoot) {
    lines += Line("The next boot deletes it.");
  } else if (object.changesAtBoot) {
    lines += Line("Something waits for the next boot.");
  }
  for (const TarnConfigStore::ErrorInfo& misfit : object.misfits) {
    lines += Line("cannot be applied: " + misfit.field + ": " + misfit.error, 4);
  }
  return lines;
}

}  // namespace

std::string DescribePage(const TarnConfigStore::TypeDescription& type) {
  std::string page =
      Line(FormatObject({type.key, type.group, type.component}) + ", version " + type.version) +
      Heading(type) + Line(If(type.hasInstances, "Has instances. ") + RebootWords(type));
  for (const MemberDescription& member : type.members) {
    page += "\n" + Line(ShownPlace(member.pointer) + "  (" + Properties(member) + ")") +
            Details(member);
  }
  return page;
}

std::string ExplainPage(const ObjectExplanation& object) {
  std::string page = Line(FormatObject(object.id)) + Heading(object.type) + StateWords(object) +
                     BootWords(object) + Line(RebootWords(object.type));
  for (const ExplainedMember& member : object.members) {
    page += "\n" + Explained(member);
  }
  return page;
}

}  // namespace tarnctl
