// Explanations as text, a member in one line.
#pragma once

#include "tarnconfigstore/explain.h"

#include <string>

namespace TestSupport {

/// "/mtu=9 u:9 (a:5) d:7? ->7": the pointer and what is read, "-" for nothing, "*" behind defaults;
/// what parts hold, in brackets where it is hidden and with "?" where it waits; what the boot makes of it.
inline std::string Line(const TarnConfigStore::ExplainedMember& member) {
  using namespace TarnConfigStore;
  std::string line = member.pointer + (member.isExpanded ? ":" : "=" + member.value.value_or("-")) +
                     (member.isDefault ? "*" : "");
  for (const MemberPart& held : member.held) {
    const char name = held.part == ConfigPart::PENDING ? 'd' : *NameOf(held.part);
    const std::string text = std::string(1, name) + ":" + held.value;
    line += held.role == PartRole::HIDDEN  ? " (" + text + ")"
            : held.role == PartRole::WAITS ? " " + text + "?"
                                           : " " + text;
  }
  return line + (member.changesAtBoot ? " ->" + member.afterBoot.value_or("-") : "");
}

/// All that are set, or read, or wait for something.
inline std::string Lines(const TarnConfigStore::ObjectExplanation& object) {
  std::string lines;
  for (const TarnConfigStore::ExplainedMember& member : object.members) {
    const bool says = member.value || !member.held.empty() || member.changesAtBoot;
    lines += says ? (lines.empty() ? "" : "\n") + Line(member) : "";
  }
  return lines;
}

}  // namespace TestSupport
