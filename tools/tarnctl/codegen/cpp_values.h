// The types of C++ that hold the values that a schema allows.
#pragma once

#include "json/schema_references.h"
#include "json/value_kinds.h"

#include <string>
#include <vector>

namespace tarnctl {

/// What a schema says of a value at its place, its reference followed.
struct ValueSchema {
  ValueSchema(const Json::Value& schema, const Json::SchemaReferences& references);

  const Json::Value& schema;
  Json::ValueKinds kinds;  ///< without null
  bool isNullable;

  bool Is(std::uint8_t kind) const { return kinds == Json::ValueKinds(kind); }
};

/// The smallest integer type that holds all integers that a schema allows, from its limits, "enum" or
/// "const"; std::int64_t where it does not tell.
std::string IntegerTypeOf(const Json::Value& schema);

/// The texts that an "enum" of texts lists, each once; empty where there is none, or it lists others.
std::vector<std::string> EnumTextsOf(const Json::Value& schema);

}  // namespace tarnctl
