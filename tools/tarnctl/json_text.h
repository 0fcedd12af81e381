// JSON as the tool holds it, and reading it strictly.
#pragma once

#include <nlohmann/json.hpp>

#include <string_view>

namespace tarnctl {

/// Keeps members in the order in which they came.
using Json = nlohmann::ordered_json;

/// Parses a text that a user gave. Raises std::invalid_argument, with the reason and the place, for
/// a text that is not JSON, names a member of an object twice, nests deeper than 128 levels or
/// holds a NUL byte.
Json ParseStrictly(std::string_view text);

}  // namespace tarnctl
