// The places of a type with all that is said of them.
#pragma once

#include "tarnconfigstore/explain.h"

#include "platform/schema_store.h"

#include "json/type_schema_view.h"
#include "json/value_place.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace TarnConfigStore {

/// As many members are described at most: a few schemas that name each other twice make more than
/// anybody can hold.
inline constexpr std::size_t kMostMembers = 100000;
/// Raises ConfigStoreException 2000.
[[noreturn]] void FailWithTooMany();

/// A place by both who know of it: whose the data are, and what may stand there. A small value, valid
/// as long as its TypePlaces.
struct MemberPlace {
  Json::SchemaPlace owner;
  Json::ValuePlace values;
  bool isRequired = false;
  bool isInSecret = false;  ///< it lies in what is secret, or is so itself

  explicit operator bool() const { return owner || values; }

  /// What the type says of a member, be it by its pattern or as one of any name.
  MemberPlace Member(std::string_view name) const;
  MemberPlace Element(std::size_t index) const;
  /// What has no name of its own: where a pattern, or any other name, leads.
  MemberPlace Unnamed(Json::ValuePlace others) const;

  /// Calls `visit` for each member that the type names: those that it owns first, in its order.
  void ForEachMember(const std::function<void(std::string_view, const MemberPlace&)>& visit) const;

  /// What tells this schema from others, for whoever would go round in a circle.
  const void* Schema() const;

  MemberDescription Describe(std::string pointer, MemberToken token, bool reveal) const;
};

/// All places of one type, which has to outlive it.
class TypePlaces {
 public:
  explicit TypePlaces(const TarnSchemaStore::SchemaObject& type);
  MemberPlace Root();

 private:
  Json::SchemaPlace root_;
  Json::SchemaReferences references_;
  Json::ValuePlaces values_;
};

/// What is said of a type as a whole.
TypeSummary Summarize(const TarnSchemaStore::SchemaObject& type);

/// A value as it is shown, as JSON. Takes a copy only where there is something to mask.
std::string ShownText(const Json::Value& value, const MemberPlace& place, bool reveal);

/// The names of a JSON Pointer. Raises InvalidArgumentException 2000 for what is none.
std::vector<std::string> RequirePlace(const std::string& pointer);

}  // namespace TarnConfigStore
