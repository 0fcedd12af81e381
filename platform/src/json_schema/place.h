// Where a walk over a value stands.
#pragma once

#include "json/json.h"

#include <cstdint>

namespace JsonValidator {

/// One step of the way from the root, linked to the step before. Lives on the stack of the walk, so
/// that a valid value costs no pointer and no memory.
struct Place {
  const Place* parent = nullptr;      ///< null at the root
  const Json::Value* name = nullptr;  ///< of a member; null for an element
  std::uint32_t index = 0;            ///< position among its siblings
};

}  // namespace JsonValidator
