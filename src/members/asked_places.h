// Places that somebody asks to have changed.
#pragma once

#include "tarnconfigstore/exceptions.h"

#include "json/json.h"
#include "json/type_schema_view.h"
#include "objects/named_places.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// A place as it is named.
struct AskedPlace {
  std::string pointer;
  PlaceNames names;
};

/// Adds a finding where a place cannot be taken out of data or put into them by itself: all of an
/// object, an instance id, and elements of lists that have no ids.
/// \param data  the places are looked for there
void CheckPlace(const AskedPlace& place, Json::SchemaPlace type, const Json::Value& data,
                std::vector<ErrorInfo>& findings);

/// Raises ValidationException 1090 with findings, and logs each.
[[noreturn]] void RefusePlaces(std::vector<ErrorInfo> findings);

}  // namespace TarnConfigStore
