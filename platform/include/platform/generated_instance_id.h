// Identifiers that the store gives to array elements that have none of their own. Thread-safe for
// values of one's own.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"

/// Gives each element of every array whose schema's items say "generatedInstanceId": true a member
/// "cs_generated_id" with a fresh UUID, where it has none. Elements that are no objects are left
/// alone.
/// \param schema  the place of the value in its type, or the schema that it is of
void PopulateGeneratedInstanceId(Json::SchemaPlace schema, Json::Value& value,
                                 Json::Allocator& allocator);
void PopulateGeneratedInstanceId(const Json::Value& schema, Json::Value& value,
                                 Json::Allocator& allocator);

/// Whether PopulateGeneratedInstanceId would give an id.
bool LacksGeneratedInstanceId(Json::SchemaPlace schema, const Json::Value& value);
