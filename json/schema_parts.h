// What a schema is composed of.
#pragma once

#include "json/schema_references.h"

#include <string_view>
#include <vector>

namespace Json {

/// When one of the schemas that a schema is composed of applies.
enum class Applies {
  ALWAYS,            ///< the schema itself, and "allOf"
  PERHAPS,           ///< "anyOf" and "oneOf"
  UNDER_CONDITIONS,  ///< "if" and what follows from it, and "dependencies"
};

/// One of the schemas that apply at a place, or may, references followed.
struct SchemaPart {
  const Value* schema;
  Applies applies;
  bool isTested = false;  ///< it stands in an "if": nothing is asked of the value by it
};

/// The schema, what its reference leads to being one with it, and those that it is composed of at any
/// depth, each once for each way in which it applies.
/// \param references  of the document that the schema is in
std::vector<SchemaPart> PartsOf(const Value& schema, const SchemaReferences& references);

/// The object under a keyword of a schema, or null.
const Value* FindObject(const Value& schema, const char* keyword);

/// What "properties" of this very schema says of a member, or null.
const Value* FindProperty(const Value& schema, std::string_view name);

}  // namespace Json
