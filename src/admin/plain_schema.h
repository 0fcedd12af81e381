// Types as JSON Schema that other programs know, too.
#pragma once

#include "json/schema_parts.h"
#include "json/type_schema_view.h"

#include <map>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// Writes the schemas of types as draft-07 of JSON Schema with its own keywords alone, into the
/// definitions of one document. It allows all that the types allow:
/// - Objects are closed to members that the type does not declare, where that can be said without
///   looking at the data.
/// - An element with an instance id has to have it.
/// - What is required of a part of the object that is not the user's is left to whoever writes it.
/// - "secret" becomes "writeOnly". Other annotations of ours, and of editors, are left out.
class PlainSchemas {
 public:
  /// \param allocator  owns what is written
  explicit PlainSchemas(Json::Allocator& allocator) : allocator_(allocator) {}

  /// Adds the objects of a type, and all that its references lead to.
  /// \param name         of the definition, and how those of the references begin: letters, digits, "-",
  ///                     "_" and "."
  /// \param hasInstances  the objects have an instance id
  /// \return a schema that refers to the definition
  Json::Value Add(const std::string& name, const Json::Value& type, bool hasInstances);

  /// Hands over the definitions; nothing is added after that.
  Json::Value TakeDefinitions() { return std::move(definitions_); }

 private:
  class Type;

  Json::Allocator& allocator_;
  Json::Value definitions_{rapidjson::kObjectType};
};

}  // namespace TarnConfigStore
