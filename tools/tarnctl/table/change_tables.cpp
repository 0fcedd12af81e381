#include "table/change_tables.h"

#include "given/object_name.h"
#include "json/utf8.h"
#include "shown/drift_text.h"
#include "shown/pending_text.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::DriftKind;
using TarnConfigStore::DriftMember;
using TarnConfigStore::DriftObject;
using TarnConfigStore::MemberChange;
using TarnConfigStore::PendingChange;

using Cells = std::vector<std::string>;

void AddRow(ColumnTable& table, Cells cells, const char* colour = kNoColour) {
  std::transform(cells.begin(), cells.end(), cells.begin(), Json::Utf8::WithoutControls);
  table.Add(cells, colour);
}

std::string NameOf(const DriftObject& object) {
  return FormatObject(object.GetConfigStoreObjectId());
}

std::string PlaceOf(const std::string& pointer) {
  return pointer.empty() ? "/" : pointer;
}

std::string ValueOf(const std::optional<std::string>& value) {
  return value.value_or("");
}

// One row for each member. An object without members may be missing, or there without need, too.
template <class Add>
void ForEachRow(const DriftObject& object, const Add& add) {
  if (object.GetMembers().empty()) {
    const bool isMissing = object.GetKind() == DriftKind::MISSING;
    add(isMissing ? Mark{"+", kGreen} : Mark{"-", kRed}, DriftMember());
  }
  for (const DriftMember& member : object.GetMembers()) {
    add(MarkOf(member), member);
  }
}

std::string RemarkOn(const MemberChange& member) {
  return "changed meanwhile, " + member.base.value_or("nothing") + " when staged" +
         (member.conflicts ? ": a conflict" : "");
}

}  // namespace

void AddDrift(const std::vector<DriftObject>& differences, ColumnTable& table) {
  for (const DriftObject& object : differences) {
    ForEachRow(object, [&](const Mark& mark, const DriftMember& member) {
      AddRow(table,
             {NameOf(object), NameKind(object.GetKind()), mark.sign, PlaceOf(member.pointer),
              ValueOf(member.found), ValueOf(member.expected), member.part},
             mark.colour);
    });
  }
}

void AddPending(const PendingChange& change, ColumnTable& table) {
  const std::string name = FormatObject(change.id);
  const std::string waits = WhatWaits(change);
  AddRow(table, {name, waits, "=", "", "", "", "", Outlook(change)}, kBold);
  for (const DriftObject& object : change.difference) {
    ForEachRow(object, [&](const Mark& mark, const DriftMember& member) {
      AddRow(table,
             {NameOf(object), waits, mark.sign, PlaceOf(member.pointer), ValueOf(member.found),
              ValueOf(member.expected), member.part, ""},
             mark.colour);
    });
  }
  for (const MemberChange& member : change.meanwhile) {
    AddRow(table, {name, waits, "!", PlaceOf(member.pointer), ValueOf(member.current),
                   ValueOf(member.staged), member.part, RemarkOn(member)});
  }
  for (const auto& finding : FindingsOf(change)) {
    AddRow(table, {name, waits, "!", finding.field, "", "", "", finding.error}, kRed);
  }
}

}  // namespace tarnctl
