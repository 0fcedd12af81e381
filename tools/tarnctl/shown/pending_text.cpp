#include "shown/pending_text.h"

#include "failure.h"
#include "given/object_name.h"
#include "json/utf8.h"
#include "shown/descriptions.h"
#include "shown/drift_text.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::DriftObject;
using TarnConfigStore::MemberChange;
using TarnConfigStore::PendingChange;

std::string EscapedLine(const std::string& text) {
  return Json::Utf8::WithoutControls(text) + "\n";
}

std::string ValueOr(const std::optional<std::string>& value) {
  return value.value_or("nothing");
}

std::string LineOf(const MemberChange& member) {
  std::string text = "  ! ";
  text.append(member.pointer.empty() ? "/" : member.pointer).append(" was changed meanwhile (");
  text.append(member.part).append("): ").append(ValueOr(member.base));
  text.append(" when staged, ").append(ValueOr(member.current)).append(" now, ");
  text.append(ValueOr(member.staged)).append(" staged");
  text.append(member.conflicts ? ": a conflict" : "");
  return EscapedLine(text);
}

std::string FindingLines(const Findings& findings) {
  std::string lines;
  for (const auto& finding : findings) {
    lines += EscapedLine("  ! " + finding.field + ": " + finding.error);
  }
  return lines;
}

bool ConcernsContent(const MemberChange& member) {
  return member.part != "automatic";
}

std::string MergeOutlook(const PendingChange& change) {
  const auto& meanwhile = change.meanwhile;
  if (!change.hasBase) {
    return "there is no telling what was changed since it was staged: nothing can be merged";
  }
  if (std::any_of(meanwhile.begin(), meanwhile.end(),
                  [](const MemberChange& member) { return member.conflicts; })) {
    return "with --merge it stays staged until --staged or --current decides";
  }
  if (!change.mergedFindings.empty()) {
    return "with --merge it stays staged";
  }
  return std::any_of(meanwhile.begin(), meanwhile.end(), ConcernsContent)
             ? "with --merge what was changed meanwhile stays"
             : "";
}

}  // namespace

std::string WhatWaits(const PendingChange& change) {
  std::string text;
  const auto add = [&text](const char* what) {
    text.append(text.empty() ? "" : ", ").append(what);
  };
  if (change.staged) {
    add(NameAction(change.action));
  }
  if (change.pendingValue) {
    add("a pending value");
  }
  if (change.unconfirmed) {
    add("unconfirmed");
  }
  return text;
}

Findings FindingsOf(const PendingChange& change) {
  Findings findings = change.findings;
  if (change.mergedFindings.size() != change.findings.size() || change.findings.empty()) {
    for (const auto& finding : change.mergedFindings) {
      findings.push_back({finding.field, finding.error + " (with --merge)"});
    }
  }
  return findings;
}

std::string Outlook(const PendingChange& change) {
  if (!change.staged) {
    return change.pendingValue
               ? "boot accept makes the pending value the user's, boot reject drops it"
               : "boot accept confirms it";
  }
  std::string text = change.findings.empty() ? change.action == TarnConfigStore::NextBootAction::SET
                                                   ? "boot apply replaces what is current"
                                                   : "boot apply deletes what is current"
                                             : "boot apply leaves it staged";
  text += change.pendingValue && change.findings.empty() ? ", the pending value too" : "";
  const std::string merged = MergeOutlook(change);
  return merged.empty() ? text : text + "; " + merged;
}

std::string DescribePending(const PendingChange& change, const Terminal& terminal) {
  const std::string waits = WhatWaits(change);
  std::string lines = EscapedLine(FormatObject(change.id) + (waits.empty() ? "" : ": ") + waits);
  for (const DriftObject& object : change.difference) {
    const bool isOwn = object.GetConfigStoreObjectId() == change.id;
    lines += isOwn ? DescribeMembers(object, terminal) : DescribeDrift(object, terminal);
  }
  for (const MemberChange& member : change.meanwhile) {
    lines += LineOf(member);
  }
  lines += FindingLines(FindingsOf(change));
  return lines + "  = " + EscapedLine(Outlook(change));
}

Json::Value Describe(const PendingChange& change, JsonMaker& make) {
  Json::Value described = make.Object("object", FormatObject(change.id));
  make.Add(described, "staged", change.staged ? make.Of(NameAction(change.action)) : Json::Value());
  make.Add(described, "pending", change.pendingValue);
  make.Add(described, "unconfirmed", change.unconfirmed);
  make.Add(described, "difference",
           make.List(change.difference,
                     [&make](const DriftObject& object) { return Describe(object, make); }));
  make.Add(described, "base", change.hasBase);
  make.Add(described, "meanwhile", make.List(change.meanwhile, [&make](const MemberChange& member) {
    Json::Value told = make.Object("pointer", member.pointer);
    AddSides(told, member.base, member.staged, member.current, make);
    make.Add(told, "part", member.part);
    make.Add(told, "conflicts", member.conflicts);
    return told;
  }));
  make.Add(described, "findings", ListFindings(change.findings, make));
  make.Add(described, "mergedFindings", ListFindings(change.mergedFindings, make));
  return described;
}

}  // namespace tarnctl
