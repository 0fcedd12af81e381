// Types as JSON Schema that other programs know, too.
#pragma once

#include "json/schema_parts.h"
#include "json/subschemas.h"
#include "json/type_schema_view.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace TarnConfigStore {

/// Writes the schema of a type as draft-07 of JSON Schema with its own keywords alone, into the
/// definitions of a document. It allows all that the type allows, but for what is empty:
/// - Objects are closed to members that the type does not declare, where that can be said without
///   looking at the data.
/// - An element with an instance id has to have it.
/// - What is required of a part of the object that is not the user's is left to whoever writes it.
/// - "secret" becomes "writeOnly". Other annotations of ours, and of editors, are left out.
class PlainSchema {
 public:
  using Names = std::set<std::string_view>;

  /// \param name         of the definition, and how those of the references begin: letters, digits,
  ///                     "-", "_" and "."
  /// \param schema       of the type, or of anything in it
  /// \param definitions  an object that gets the definitions; like the others it outlives this
  PlainSchema(std::string name, const Json::Value& schema, Json::Value& definitions,
              Json::Allocator& allocator)
      : name_(std::move(name)), type_(schema), definitions_(definitions), allocator_(allocator) {}

  /// Adds the objects of the type, and all that its references lead to. To be called once.
  /// \param hasInstances  the objects have an instance id
  /// \return a schema that refers to the definition
  Json::Value Add(bool hasInstances);

 private:
  // How a schema is looked at.
  struct View {
    bool isPlace = true;     // it describes a value by itself, and is no part of another schema
    bool isElement = false;  // the value may be told apart from others by its id
    Json::Kind kind = Json::Kind::USER;           // the part of the object around it
    std::vector<const Json::Value*> beside = {};  // what others say of the same value, or may
    Names elsewhere = {};                         // members that belong to other parts

    friend bool operator<(const View& a, const View& b) {
      return std::tie(a.isPlace, a.isElement, a.kind, a.beside, a.elsewhere) <
             std::tie(b.isPlace, b.isElement, b.kind, b.beside, b.elsewhere);
    }
  };
  using Parts = std::vector<Json::SchemaPart>;
  using Known = std::map<std::pair<const Json::Value*, View>, std::string>;

  Json::Value Refer(const Json::Value& schema, const View& view);
  Json::Value Plain(const Json::Value& schema, const View& view);
  Json::Value PlainUnmasked(const Json::Value& schema, const View& view);
  void AddInner(const Json::Value& schema, const View& view, Json::Value& plain);
  void AddKept(const Json::Value& schema, Json::Value& plain,
               const std::function<bool(std::string_view)>& keeps);
  static View ViewOf(const Json::Value& schema, const Json::Subschema& where, const View& view,
                     const Parts& parts);
  static bool IsPlaceOf(const Json::Value& schema, std::string_view keyword, bool isAlone);

  // What other programs would not know.
  Parts PartsBeside(const Json::Value& schema, const View& view) const;
  bool NamesMembers(const Json::Value& schema) const;
  void Close(const Json::Value& schema, const View& view, Json::Value& plain);
  Json::Value NamesOf(const Json::Value& list, const Names& elsewhere);
  void AddDependencies(const Json::Value& schema, const Names& elsewhere, Json::Value& plain);
  void Require(const Json::Value& schema, std::string_view id, const Names& elsewhere,
               Json::Value& plain);
  void AddMember(Json::Value& object, std::string_view name, Json::Value&& value) {
    object.AddMember(Json::Copy(name, allocator_), value, allocator_);
  }

  const std::string name_;
  const Json::TypeSchemaView type_;
  Json::Value& definitions_;
  Json::Allocator& allocator_;
  Known known_;
  std::vector<Known::const_iterator> pending_;
};

}  // namespace TarnConfigStore
