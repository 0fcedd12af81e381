// JSON Pointers, RFC 6901.
#pragma once

#include "json/json.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Json {

/// Appends a reference token to a pointer: a slash, and the name with "~" and "/" escaped.
void AppendToken(std::string& pointer, std::string_view name);

/// A pointer to a member or an element of what another leads to.
std::string PointerBelow(std::string_view pointer, std::string_view name);

/// The names on the way, unescaped. Nothing for a text that is no pointer: one that is not empty
/// and does not begin with a slash, or with a "~" that no "0" or "1" follows.
std::optional<std::vector<std::string>> ParsePointer(std::string_view pointer);

/// What the names lead to, or null. In an array a name is an index in decimal digits without
/// leading zeros; "-", the element after the last, leads nowhere.
const Value* FindAt(const Value& root, const std::vector<std::string>& names);

}  // namespace Json
