// What schemas ask of numbers.
#pragma once

#include "json/json.h"

#include <cmath>

namespace JsonValidator {

/// Whether the number has no fraction; 5.0 has none.
inline bool IsWhole(const Json::Value& number) {
  return !number.IsDouble() || number.GetDouble() == std::trunc(number.GetDouble());
}

/// Whether the number is a multiple of the divisor, which is greater than 0. Both are taken as the
/// decimal numbers that they are written as, so that 0.3 is a multiple of 0.1.
bool IsMultipleOf(const Json::Value& number, const Json::Value& divisor);

}  // namespace JsonValidator
