// What is read where nothing is stored.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"

namespace TarnConfigStore {

/// Puts the defaults of a type in the place of what is absent or null in an object's data, at any
/// depth: in the objects and elements that are there, in defaults, and in objects that are not there
/// but would hold some. A schema that holds itself is followed once beyond the data. Answers whether
/// there was anything to put. Raises ConfigStoreException 2000 where it is too much to hold; the data
/// are not fit for use then.
bool FillDefaults(Json::Value& data, Json::SchemaPlace place, Json::Allocator& allocator);

}  // namespace TarnConfigStore
