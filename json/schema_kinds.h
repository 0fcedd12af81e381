// The kinds of value that a schema allows.
#pragma once

#include "json/schema_references.h"
#include "json/value_kinds.h"

namespace Json {

/// The kinds of value that a schema may allow; all of them where it says nothing.
/// \param references  of the document that the schema is in
ValueKinds KindsOf(const Value& schema, const SchemaReferences& references);

}  // namespace Json
