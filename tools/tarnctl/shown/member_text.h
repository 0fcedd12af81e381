// What types say of their members, and what is stored of them, for people.
#pragma once

#include "tarnconfigstore/explain.h"

#include <string>

namespace tarnctl {

/// "8 to 4096", "one of "off", "listen"", "1 to 63 characters" and so on; empty where there are none.
std::string DescribeLimits(const std::vector<TarnConfigStore::MemberLimit>& limits);

/// A page about a type. Control characters are escaped.
std::string DescribePage(const TarnConfigStore::TypeDescription& type);

/// A page about an object.
std::string ExplainPage(const TarnConfigStore::ObjectExplanation& object);

}  // namespace tarnctl
