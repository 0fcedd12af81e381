// Values and types of schemas in an administrator's words. Of values that are checked ask ValueWords.
#pragma once

#include "json/json.h"
#include "json_schema/budget.h"
#include "json_schema/compiled_node.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace JsonValidator {

/// In quotes, escaped as in JSON; a long text is shortened.
std::string Quoted(std::string_view text);

/// What was found: `the text "abc"`, `99`, `an object`.
std::string Found(const Json::Value& value);

/// A value of a schema as JSON would write it, shortened.
std::string Literal(const Json::Value& value);
/// The same out of a budget, which values of any size may be written from: once it is spent, only
/// what kind of value it is.
std::string Literal(const Json::Value& value, Budget& budget);

/// A set of types: "an integer or null".
std::string ExpectedTypes(TypeSet types);

/// `member "servers" is required`
std::string MissingMember(std::string_view name);

/// Of a member that is not known: `known members: servers, timeout; did you mean "timeout"?`
/// \param schemas   that apply to the object
/// \param suggests  whether to look for the member that was meant
std::string KnownMembers(std::string_view name, const std::vector<const ObjectRules*>& schemas,
                         bool suggests);

/// `expected one of "low", "high", found the text "hihg"; did you mean "high"?`
/// \param allowed   at least one
/// \param suggests  as above
/// \param budget    that writing the values takes from
std::string NotAmong(const std::vector<const Json::Value*>& allowed, const Json::Value& value,
                     bool suggests, Budget& budget);

/// `the pattern ^[a-z]+$ (Lower-case letters)`: with what the schema says of it.
std::string PatternInWords(const TextRules& rules);

/// "1 element", "3 elements".
std::string Count(std::uint64_t count, std::string_view noun);

/// Separated by ", ", cut off where the list gets long.
std::string Listed(const std::vector<std::string>& items);

/// The same with a word before the last: "a, b or c".
std::string Joined(const std::vector<std::string>& items, std::string_view word);

}  // namespace JsonValidator
