// What a type's schema says of each place in the type's data: the part of the object that it
// belongs to, the member that tells instances apart, and what lies below it.
#pragma once

#include "json/instance_ids.h"
#include "json/json.h"
#include "json/schema_references.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace Json {

/// The part of an object that a piece of its data belongs to; the values are bits.
enum class Kind : std::uint8_t { USER = 1, VITAL = 2, CACHED = 4 };

/// The kinds of JSON number.
enum class NumberKind : std::uint8_t { ANY, INTEGER, FLOATING };

class TypeSchemaView;

/// A place in a type's data, with what the type's schema says of it, references followed. A small
/// value, valid as long as its view. A place that the schema says nothing of is one all the same:
/// it belongs to the part of what it stands in.
///
/// Data belongs to the nearest tag ("vital" or "cached") at or above it, and to the user where there
/// is none. Tags are looked for in "properties" and in a list's single "items"; what stands in
/// composition ("allOf" and the like) or is admitted by pattern or as an additional property has no
/// tags of its own: type files that want it otherwise are not installed.
class SchemaPlace {
 public:
  SchemaPlace() = default;

  /// True where the schema describes the place.
  explicit operator bool() const { return node_ != nullptr; }

  /// A member of the object here.
  SchemaPlace Property(std::string_view name) const;
  /// Calls `visit(name, place)` for each property, in the schema's order.
  void ForEachProperty(
      const std::function<void(std::string_view name, SchemaPlace property)>& visit) const;
  /// Something here that the schema has no name for.
  SchemaPlace Unnamed() const { return {nullptr, kind_}; }
  /// The elements of the list here; nothing is known of the elements of a tuple.
  SchemaPlace Items() const;

  /// The part that this place itself belongs to.
  Kind OwnKind() const { return kind_; }
  /// All parts that anything at or below this place can belong to, as bits.
  unsigned Kinds() const;
  /// True when it has to be taken apart: what lies below belongs to several parts, or can.
  bool IsMixed() const { return (Kinds() & (Kinds() - 1)) != 0; }
  /// The part of data that is not taken apart here: the one that everything below belongs to, or,
  /// where those are several, the place's own.
  Kind WholeKind() const { return IsMixed() ? kind_ : static_cast<Kind>(Kinds()); }

  /// The schema names "vital" or "cached" at this very place, whatever the value.
  bool MentionsTag() const;
  /// This is the property that holds an instance id.
  bool IsInstanceId() const;
  /// The member that holds the instance id of an object at this place, its own or a generated one;
  /// empty where it has none.
  std::string_view InstanceIdMember() const;
  /// The same for people, who never see a generated one: empty where there is nothing else.
  std::string_view ShownIdMember() const;
  /// A member of an object at this place is the one that holds its instance id. Ask here: where
  /// objects have no ids, a member named "" is one like any other.
  bool IsIdMember(std::string_view member) const;
  /// An object at this place is empty, or holds its id and nothing else.
  bool HoldsNothingBesideId(const Value& object) const;
  /// An object at this place gets an identifier from the store.
  bool GetsGeneratedId() const;
  /// Objects below this place get identifiers from the store.
  bool HoldsGeneratedIds() const;
  /// The value here is shown to nobody who does not ask to see it.
  bool IsSecret() const;
  /// This place is secret, or one below it.
  bool HoldsSecrets() const;
  /// Data at this place can be an object, going by "type".
  bool DescribesObject() const;

  /// The schema, references followed; null where nothing is known.
  const Value* Schema() const;
  /// What an absent value at this place reads as, or null.
  const Value* Default() const;
  /// There is a default for this place, or for a member at or below it.
  bool HoldsDefaults() const;
  /// A member that some schema of this place asks for, be it under a condition.
  bool CanRequire(std::string_view member) const;
  /// The kind that "type" leaves for a number at this place; ANY where it leaves both or neither.
  NumberKind KindOfNumbers() const;

 private:
  friend class TypeSchemaView;
  struct Node;

  SchemaPlace(const Node* node, Kind around);

  const Node* node_ = nullptr;
  Kind kind_ = Kind::USER;
};

/// All places of one type, worked out once. The schema has to stay as and where it is. Immutable;
/// safe from several threads.
class TypeSchemaView {
 public:
  /// \param schema  the root of a type's schema, sound or not
  explicit TypeSchemaView(const Value& schema);
  ~TypeSchemaView();
  TypeSchemaView(const TypeSchemaView&) = delete;
  TypeSchemaView& operator=(const TypeSchemaView&) = delete;

  /// The object itself.
  SchemaPlace Root() const;
  /// The place that a schema describes: one that "properties", a list's "items" or "definitions"
  /// hold, here or below. Of others nothing is known.
  /// \param around  the part that it stands in
  SchemaPlace At(const Value& schema, Kind around = Kind::USER) const;

  const Value& Schema() const { return schema_; }
  const SchemaReferences& References() const { return references_; }

 private:
  using Node = SchemaPlace::Node;
  using Overlay = std::pair<Node*, const Value*>;

  Node* NodeOf(const Value& schema);
  void Read(Node& node);
  void ReadOverlays();
  void ReadInstanceIds();
  void SpreadMarks();
  void SpreadKinds();

  const Value& schema_;
  SchemaReferences references_;
  std::deque<Node> nodes_;  // whose addresses stay
  std::unordered_map<const Value*, Node*> known_;
};

}  // namespace Json
