// JSON values compared as what they are, however they are written.
#pragma once

#include "json/json.h"

namespace Json {

/// Negative, 0 or positive as `a` is less than, equal to or greater than `b`, exactly: 64-bit
/// integers are never rounded to doubles. Both are finite numbers.
int CompareNumbers(const Value& a, const Value& b);

/// Deep equality: numbers by exact value (1 equals 1.0), objects whatever the order of their members.
bool Equal(const Value& a, const Value& b);

}  // namespace Json
