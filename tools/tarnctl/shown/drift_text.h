// Differences, as people read them.
#pragma once

#include "tarnconfigstore/drift.h"

#include "json_maker.h"
#include "table/terminal.h"

#include <string>

namespace tarnctl {

/// A line with the object's name, and one for each member: "~ /mtu: 1500 -> 9000 (user)" for what is
/// found and what is expected, "+" for what is expected and not there, "-" for what is there and not
/// expected. Control characters are escaped.
std::string DescribeDrift(const TarnConfigStore::DriftObject& object, const Terminal& terminal);

/// The lines of the members alone.
std::string DescribeMembers(const TarnConfigStore::DriftObject& object, const Terminal& terminal);

/// The sign that a member's line begins with, and its colour.
struct Mark {
  const char* sign;
  const char* colour;
};
Mark MarkOf(const TarnConfigStore::DriftMember& member);

/// "changed", "missing" or "extra".
const char* NameKind(TarnConfigStore::DriftKind kind);

/// {"object", "kind", "members"}, as the library tells of it.
Json::Value Describe(const TarnConfigStore::DriftObject& object, JsonMaker& make);

}  // namespace tarnctl
