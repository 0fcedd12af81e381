// The kinds of value that a schema allows.
#pragma once

#include "json/schema_references.h"
#include "yaml/value_kinds.h"

namespace tarnctl {

/// A schema that says nothing.
const Json::Value& AnySchema();

/// The kinds of value that a schema may allow; all of them where it says nothing.
/// \param references  of the document that the schema is in
ValueKinds KindsOf(const Json::Value& schema, const Json::SchemaReferences& references);

}  // namespace tarnctl
