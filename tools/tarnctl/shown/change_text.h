// What a dry run changed on the copy of a host, as people and programs read it.
#pragma once

#include "tarnconfigstore/rehearsal.h"

#include "json_maker.h"
#include "table/terminal.h"

#include <string>

namespace tarnctl {

/// Lines: each object with its members as DescribeMembers has them, what waits for the next boot as
/// DescribePending does, types and entries. Control characters are escaped.
std::string DescribeChanges(const TarnConfigStore::HostDifference& difference,
                            const Terminal& terminal);

/// {"objects": [{"object", "change", "members"}], "waits", "waitsNoLonger": as Describe tells of pending
/// changes, "types": [{"type", "before", "after"}], "entries": [{"key", "before", "after"}]}; "change" is
/// "changed", "created" or "deleted", and null stands for what is not there.
Json::Value Describe(const TarnConfigStore::HostDifference& difference, JsonMaker& make);

}  // namespace tarnctl
