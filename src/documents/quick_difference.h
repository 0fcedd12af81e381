// Telling that an object differs from a stored text, without making values of the text.
#pragma once

#include "json/json.h"

#include <string_view>

namespace TarnConfigStore {

/// True only if the text is an object that differs from the other in one of its own scalar members;
/// false says nothing.
bool DiffersAtOnce(std::string_view text, const Json::Value& object);

}  // namespace TarnConfigStore
