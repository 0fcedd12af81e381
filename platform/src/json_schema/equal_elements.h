// Equality of JSON values as JSON Schema means it.
#pragma once

#include "json/json.h"
#include "json_schema/budget.h"

#include <cstddef>
#include <optional>
#include <utility>

namespace JsonValidator {

/// Deep equality: numbers by exact value (1 equals 1.0, and no 64-bit integer is rounded), objects
/// whatever the order of their members. False when the budget is spent.
bool Equal(const Json::Value& a, const Json::Value& b, Budget& budget);

/// Indices of two equal elements of an array, the first such pair in order of the second; nothing
/// when all are distinct, or when the budget is spent.
std::optional<std::pair<std::size_t, std::size_t>> FindEqualElements(const Json::Value& array,
                                                                     Budget& budget);

}  // namespace JsonValidator
