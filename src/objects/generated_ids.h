// The ids that the store gave to elements, kept while their data come back from outside.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"

namespace TarnConfigStore {

/// Gives each element that is part of a stored one the id of that one: it is that element, not a new
/// one.
/// \param whole  what is stored
void AdoptGeneratedIds(Json::Value& part, const Json::Value& whole, Json::SchemaPlace place,
                       Json::Allocator& allocator);

/// Takes out the generated ids, and the elements that hold nothing else: in a part of an object those
/// keep the places of elements whose data are in other parts.
void DropGeneratedIds(Json::Value& value);

/// Deep equality of data, whatever ids the store gave to elements.
bool EqualButForGeneratedIds(const Json::Value& a, const Json::Value& b);

}  // namespace TarnConfigStore
