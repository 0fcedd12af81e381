// Walking a type's schema beside its data.
#pragma once

#include "platform/json.h"

#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// The part of an object that a piece of its data belongs to.
enum class DataPart { USER, VITAL, CACHED };

/// A place in a type's schema, with local references followed. An empty node stands for data that
/// the schema says nothing of. A small value; the schema has to outlive it.
class SchemaNode {
 public:
  SchemaNode() = default;
  /// The root of a schema.
  explicit SchemaNode(const Json::Value& schema)
      : root_(&schema), holder_(&schema), node_(&schema) {}

  explicit operator bool() const { return node_ != nullptr; }

  /// The schema of a member of the object that this node describes.
  SchemaNode Property(std::string_view name) const;
  /// The schema of the elements of the array that this node describes.
  SchemaNode Items() const;

  /// Tagged, at this very node, as part of the vital or the cached data; USER when it is not
  /// tagged.
  DataPart Tag() const;
  /// True when the node names "vital" or "cached" at all, whatever the value.
  bool MentionsTag() const;
  /// True for the property that holds an instance id.
  bool IsInstanceId() const;

  /// Name of the member that holds the instance id of the objects that this node describes, be it
  /// their own or a generated one; empty when they have none.
  std::string_view InstanceIdMember() const;

  /// The part that everything under this node belongs to, when its leaves all belong to one; USER
  /// otherwise.
  DataPart UniformPart() const;
  /// True when its leaves belong to several parts.
  bool IsMixed() const;

 private:
  SchemaNode(const Json::Value& root, const Json::Value& holder);
  const Json::Value* Keyword(std::string_view name) const;
  unsigned Parts() const;
  unsigned PartsBelow(std::vector<const Json::Value*>& visited) const;

  const Json::Value* root_ = nullptr;
  const Json::Value* holder_ = nullptr;  // where the reference stands; tags may stand beside it
  const Json::Value* node_ = nullptr;
};

}  // namespace TarnConfigStore
