// What a type's schema says of each place of its data, composition and patterns included.
#pragma once

#include "json/schema_parts.h"
#include "json/value_kinds.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace Json {

class ValuePlaces;

/// A place in a type's data, as far as the schema tells without the data: where branches or patterns
/// say different things of a member, each of them counts. A small value, valid as long as its
/// ValuePlaces; for one thread. What part of an object a place belongs to is SchemaPlace's to say.
class ValuePlace {
 public:
  /// A place that nothing is known of.
  ValuePlace() = default;

  /// True where some schema describes the place.
  explicit operator bool() const { return node_ != nullptr; }

  /// All kinds where the schema says nothing.
  ValueKinds Kinds() const;
  /// The same, but where that would be all, those that branches name which repeat something else.
  ValueKinds KindsInBranches() const;
  ValuePlace Member(std::string_view name) const;
  ValuePlace Element(std::size_t index) const;

  /// All schemas that say something of the place, references followed, those that count for its
  /// kinds first.
  std::vector<SchemaPart> Parts() const;
  /// The first value of a keyword that describes and asks for nothing, beside references on the way
  /// too; null where there is none.
  const Value* FindAnnotation(const char* keyword) const;

  using Visit = std::function<void(std::string_view name, ValuePlace place)>;
  /// Calls `visit` for each member that some schema names, in the order in which they do.
  void ForEachMember(const Visit& visit) const;
  /// The same for the patterns of names, and what stands at a name that matches.
  void ForEachPattern(const Visit& visit) const;
  /// What stands at all other names; of nothing where there may be none, or nothing is said of them.
  ValuePlace OtherMembers() const;
  /// How many elements of a list are described one by one.
  std::size_t Positions() const;

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
  ValuePlaces(const SchemaReferences& references, const Value& schema);
  ~ValuePlaces();
  ValuePlaces(const ValuePlaces&) = delete;
  ValuePlaces& operator=(const ValuePlaces&) = delete;

  ValuePlace Root();

 private:
  friend class ValuePlace;
  using Node = ValuePlace::Node;

  // A schema that says something of a place.
  struct Saying {
    const Value* schema;
    Applies applies;
    bool counts;  // for the kinds; the others say more of what is described already
    bool isTested;

    friend bool operator<(const Saying& a, const Saying& b) {
      return std::tie(a.schema, a.applies, a.counts, a.isTested) <
             std::tie(b.schema, b.applies, b.counts, b.isTested);
    }
  };
  using Sayings = std::vector<Saying>;

  ValueKinds KindsOfAll(const Sayings& sayings, bool counting) const;
  Node* NodeOf(const Sayings& sayings);
  Node& Opened(Node& node);
  void ReadMembers(Node& node, const Saying& about, const std::vector<SchemaPart>& parts);

  const SchemaReferences& references_;
  const Value& schema_;
  const Value any_{rapidjson::kObjectType};
  std::deque<Node> nodes_;  // whose addresses stay
  std::map<Sayings, Node*> known_;
};

}  // namespace Json
