// The verbs that look at configuration objects.
#pragma once

#include "output.h"

#include <string>
#include <vector>

namespace tarnctl {

/// Where a verb reads: in the store, or among the objects that types came with.
enum class Source { STORED, SHIPPED };

/// Prints an object, or one of its members when `member` is not empty. ToolError NOT_FOUND when
/// there is no such object or member.
void GetObject(const std::string& object, const std::string& member, Source source,
               const Output& output);

/// Prints the instances of a type that meet MEMBER=VALUE conditions, as an array in the order of
/// their ids.
void GetInstances(const std::string& type, const std::vector<std::string>& conditions,
                  Source source, const Output& output);

/// Prints what is stored under a prefix; an empty one for everything.
void ListObjects(const std::string& prefix, const Output& output);

/// Prints the revision. ToolError NOT_FOUND for an object that is not stored.
void ShowRevision(const std::string& object, const Output& output);

}  // namespace tarnctl
