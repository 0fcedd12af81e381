// What may be said of a member that no schema knows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace JsonValidator {

struct ObjectRules;

/// "member "timeot" is not known; known members: servers, timeout"
std::string UnknownMember(std::string_view name, const std::vector<const ObjectRules*>& schemas);

}  // namespace JsonValidator
