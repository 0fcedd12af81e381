// What a type's schema says about its members.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "failure.h"
#include "given/object_name.h"
#include "json/type_schema_view.h"
#include "json/value_kinds.h"
#include "json/value_place.h"
#include "json_maker.h"

#include <optional>
#include <string>
#include <string_view>

namespace tarnctl {

using Json::ValueKinds;
using Json::ValuePlace;
using Json::ValuePlaces;

/// The schema of an installed type, read for the tool's own questions; whether data fits it is for
/// the library to judge.
class TypeSchema {
 public:
  /// Reads the type file. Raises ConfigStoreException 1037 when the type is not installed.
  explicit TypeSchema(const TarnConfigStore::ConfigStoreObjectId& type);

  /// Name of the member that holds the instance id; empty for a type without instances.
  std::string_view InstanceIdMember() const { return view_->Root().InstanceIdMember(); }
  /// An object is empty, or holds its instance id and nothing else.
  bool HoldsNothingBesideId(const Json::Value& object) const {
    return view_->Root().HoldsNothingBesideId(object);
  }

  /// The kinds of value that a member may have; all of them for a member that the schema says
  /// nothing about. Raises ToolError INVALID when the path leads through something that is no
  /// object.
  ValueKinds KindsOf(const MemberPath& path) const;

  /// The object itself, as the beginning of a way to the kinds that its values may have. Valid as
  /// long as this.
  ValuePlace Root() const { return places_->Root(); }

  /// The object itself, as the beginning of a way to what the schema marks. Valid as long as this.
  Json::SchemaPlace Place() const { return view_->Root(); }

  /// The value of a member in an object's data, or the default that absent members read as; null
  /// when there is neither. The result points into the data or into this schema.
  const Json::Value* Read(const Json::Value& data, const MemberPath& path) const;

  /// "; did you mean "MEMBER"?" of a path with a step that the schema does not declare: the declared
  /// member that is nearest to it; empty where none is.
  std::string Suggest(const MemberPath& path) const;

  /// A finding for each member of the data that the schema has no place for, whichever of its
  /// branches applied.
  Findings FindUndeclared(const Json::Value& data) const;

 private:
  using Schema = const Json::Value&;

  Schema Property(Schema schema, std::string_view name) const;
  Schema Items(Schema schema) const;
  const Json::Value* Default(Schema schema) const;
  std::string Suggest(Schema schema, std::string_view name) const;
  bool MayHave(Schema schema, std::string_view name) const;
  void FindUndeclared(const Json::Value& data, Schema schema, const std::string& pointer,
                      Findings& findings) const;

  JsonMaker make_;
  Json::Value typeFile_;
  std::optional<Json::TypeSchemaView> view_;
  mutable std::optional<ValuePlaces> places_;  // which fills as it is asked
};

}  // namespace tarnctl
