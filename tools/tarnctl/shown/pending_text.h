// What waits for the next boot, as people and programs read it.
#pragma once

#include "tarnconfigstore/pending.h"

#include "failure.h"
#include "json_maker.h"
#include "table/terminal.h"

#include <string>

namespace tarnctl {

/// Some lines: the object and what is to become of it, what will differ as DescribeDrift has it, "!" for
/// each member that was changed meanwhile and each finding, and what applying will do. Control
/// characters are escaped.
std::string DescribePending(const TarnConfigStore::PendingChange& change, const Terminal& terminal);

/// What waits, as "SET, a pending value".
std::string WhatWaits(const TarnConfigStore::PendingChange& change);
/// All findings; a remark on those of merging.
Findings FindingsOf(const TarnConfigStore::PendingChange& change);
/// What applying will do.
std::string Outlook(const TarnConfigStore::PendingChange& change);

/// {"object", "staged", "pending", "unconfirmed", "difference", "base", "meanwhile", "findings",
/// "mergedFindings"}; "staged" is the action, or null.
Json::Value Describe(const TarnConfigStore::PendingChange& change, JsonMaker& make);

}  // namespace tarnctl
