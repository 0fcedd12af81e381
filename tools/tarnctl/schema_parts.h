// What a schema is composed of.
#pragma once

#include "json/schema_references.h"
#include "value_kinds.h"

#include <string_view>
#include <unordered_map>
#include <vector>

namespace tarnctl {

/// When one of the schemas that a schema is composed of applies.
enum class Applies { ALWAYS, PERHAPS, UNDER_CONDITIONS };

/// One of the schemas that apply at a place, or may, references followed.
struct SchemaPart {
  const Json::Value* schema;
  Applies applies;
};

/// A schema that says nothing.
const Json::Value& AnySchema();

/// The object under a keyword of a schema, or null.
const Json::Value* FindObject(const Json::Value& schema, const char* keyword);

/// What "properties" of this very schema says of a member, or null.
const Json::Value* FindProperty(const Json::Value& schema, std::string_view name);

/// Takes schemas of one document apart. The references have to stay where they are.
class SchemaParts {
 public:
  explicit SchemaParts(const Json::SchemaReferences& references) : references_(references) {}

  /// What a schema stands for, references followed.
  const Json::Value& Resolve(const Json::Value& schema) const {
    return *references_.Chain(schema).back();
  }

  /// The schema, and those that it is composed of at any depth.
  std::vector<SchemaPart> Of(const Json::Value& schema) const;

  /// The kinds of value that a schema may allow; all of them where it says nothing.
  ValueKinds Kinds(const Json::Value& schema) const;

 private:
  using KnownKinds = std::unordered_map<const Json::Value*, ValueKinds>;
  ValueKinds Kinds(const Json::Value& schema, KnownKinds& known) const;

  const Json::SchemaReferences& references_;
};

}  // namespace tarnctl
