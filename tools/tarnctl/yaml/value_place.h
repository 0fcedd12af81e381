// The kinds of value that a type allows at each place of its data.
#pragma once

#include "json/schema_parts.h"
#include "yaml/value_kinds.h"

#include <cstddef>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnctl {

class ValuePlaces;

/// A place in a type's data, as far as the schema tells without the data: where branches or patterns
/// say different things of a member, each of them counts. A small value, valid as long as its
/// ValuePlaces; for one thread.
class ValuePlace {
 public:
  /// A place that nothing is known of.
  ValuePlace() = default;

  /// All kinds where the schema says nothing.
  ValueKinds Kinds() const;
  ValuePlace Member(std::string_view name) const;
  ValuePlace Element(std::size_t index) const;

 private:
  friend class ValuePlaces;
  struct Node;
  ValuePlace(ValuePlaces* places, Node* node) : places_(places), node_(node) {}

  ValuePlaces* places_ = nullptr;
  Node* node_ = nullptr;
};

/// All places of one type. Each is worked out when it is first asked about, and kept.
class ValuePlaces {
 public:
  /// \param references  of the document that the schema is in; like it, it outlives this
  ValuePlaces(const Json::SchemaReferences& references, const Json::Value& schema);
  ~ValuePlaces();
  ValuePlaces(const ValuePlaces&) = delete;
  ValuePlaces& operator=(const ValuePlaces&) = delete;

  ValuePlace Root();

 private:
  friend class ValuePlace;
  using Node = ValuePlace::Node;
  using Schemas = std::vector<const Json::Value*>;

  Node* NodeOf(Schemas schemas);
  Node& Opened(Node& node);
  void ReadMembers(Node& node, const std::vector<Json::SchemaPart>& parts);

  const Json::SchemaReferences& references_;
  const Json::Value& schema_;
  std::deque<Node> nodes_;  // whose addresses stay
  std::map<Schemas, Node*> known_;
};

}  // namespace tarnctl
