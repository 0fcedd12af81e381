// What the user set of one object, taken out of the store to be edited, and put back.
#pragma once

#include "tarnconfigstore/compare_and_set.h"

#include "given/given_data.h"
#include "store/type_schema.h"

#include <string>

namespace tarnctl {

/// The user's part of one object. What other parts hold is neither shown nor changed, so that nothing of
/// theirs becomes the user's.
class UserPart {
 public:
  /// Reads it. Raises ToolError NOT_FOUND where the object is not stored, INVALID for a type that has no
  /// such part, and where the part waits to be confirmed; else what the library raises.
  /// \param reveals  secrets are shown as they are
  UserPart(const TarnConfigStore::ConfigStoreObjectId& id, bool reveals);

  /// As `get` would print it; the instance id alone, or nothing, where the user set nothing.
  const Json::Value& Data() const { return data_; }
  const TypeSchema& Schema() const { return schema_; }

  /// Writes the part as it is given, where the object is still as it was read: secrets that are masked
  /// stay, and so do the ids that the store generated. Answers whether anything was to be written.
  /// Raises ToolError CONFLICT where somebody else changed the object, and INVALID with each finding, its
  /// place in the object; nothing is written then.
  bool Write(const Json::Value& edited) const;

 private:
  Json::Value Read();
  void RequireOwn(const Json::Value& edited) const;
  std::string DocumentOf(const Json::Value& edited) const;
  bool HasInstances() const { return !schema_.InstanceIdMember().empty(); }

  TarnConfigStore::ConfigStoreObjectId id_;
  bool reveals_;
  TypeSchema schema_;
  std::string place_;  // of the object in a document
  TarnConfigStore::StoredState state_;
  bool hasPending_ = false;
  JsonMaker make_;
  Json::Value data_;  // last: reading it fills in the others
};

}  // namespace tarnctl
