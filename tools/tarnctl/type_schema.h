// What a type's schema says about its members.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "failure.h"
#include "json_text.h"
#include "object_name.h"
#include "value_kinds.h"

#include <optional>
#include <string>
#include <vector>

namespace tarnctl {

/// The schema of an installed type, read for the tool's own questions; whether data fits it is for
/// the library to judge.
class TypeSchema {
 public:
  /// Reads the type file. Raises ConfigStoreException 1037 when the type is not installed.
  explicit TypeSchema(const TarnConfigStore::ConfigStoreObjectId& type);

  /// Name of the member that holds the instance id; nothing for a type without instances.
  std::optional<std::string> InstanceIdMember() const;

  /// The kinds of value that a member may have; all of them for a member that the schema says
  /// nothing about. Raises ToolError INVALID when the path leads through something that is no
  /// object.
  ValueKinds KindsOf(const MemberPath& path) const;

  /// The value of a member in an object's data, or the default that absent members read as; null
  /// when there is neither. The result points into the data or into this schema.
  const Json* Read(const Json& data, const MemberPath& path) const;

  /// A finding for each member of the data that the schema has no place for, whichever of its
  /// branches applied.
  Findings FindUndeclared(const Json& data) const;

 private:
  const Json& Resolve(const Json& schema) const;
  const Json* FindProperty(const Json& schema, const std::string& name, int depth) const;
  const Json& Property(const Json& schema, const std::string& name) const;
  const Json* Default(const Json& schema) const;
  ValueKinds Kinds(const Json& schema, int depth) const;
  struct Part;
  void CollectParts(const Json& schema, bool closes, int depth, std::vector<Part>& parts) const;
  bool MayHave(const Json& schema, const std::string& name) const;
  const Json& Items(const Json& schema) const;
  void FindUndeclared(const Json& data, const Json& schema, MemberPath& place,
                      Findings& findings) const;

  Json typeFile_;
  const Json* root_;
};

}  // namespace tarnctl
