// Numbers of the kind that a type's schema gives them.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"

namespace Json {

/// Makes each number of a value, at any depth, of the kind that its place leaves: 9.0 becomes 9 where
/// the schema says "integer", and 5 becomes 5.0 where it says "number", so that whoever reads it by
/// type finds it. What that would round, and what the schema leaves open, stays as it is.
void SettleNumbers(Value& value, SchemaPlace place);

/// Whether SettleNumbers would leave the value as it is.
bool NumbersAreSettled(const Value& value, SchemaPlace place);

}  // namespace Json
