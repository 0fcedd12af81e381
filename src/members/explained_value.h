// One place in all that the store holds of an object: what is read there, what each part holds, and
// what the next boot makes of it.
#pragma once

#include "tarnconfigstore/explain.h"

#include "json/json_doc.h"
#include "members/member_places.h"
#include "members/object_state.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace TarnConfigStore {

/// A small value, valid as long as the ExplainedData that it comes from.
struct ExplainedValue {
  struct OfPart {
    ConfigPart part;
    PartRole role;
    const Json::Value* value;
  };

  const Json::Value* shown = nullptr;   ///< what is read, defaults included; null where nothing is
  const Json::Value* stored = nullptr;  ///< without them
  const Json::Value* after = nullptr;   ///< what is read after the next boot
  std::vector<OfPart> parts;            ///< those with data here, the ones that hide others first

  /// Anything is there, be it a default, in a part that nobody reads, or only after the boot.
  bool HoldsAny() const;
  /// What there is is an object, or a list: what is read where something is.
  bool IsObject() const;
  bool IsList() const;
  bool IsDefault() const;
  bool ChangesAtBoot() const;

  /// The names of all members that are there, in the order of the data.
  std::vector<std::string> Names() const;
  ExplainedValue Member(std::string_view name) const;

  /// All elements of the list can be told apart by their ids; there is one at least.
  bool AreNamed(const MemberPlace& list) const;
  /// All elements by their ids, in the order of the data.
  std::vector<std::pair<std::string, ExplainedValue>> Elements(const MemberPlace& list) const;
  ExplainedValue Element(const MemberPlace& list, std::string_view id) const;

  /// What the parts hold here; where it is told member by member, only what is no such object or list.
  std::vector<MemberPart> Held(const MemberPlace& place, bool isExpanded, bool reveal) const;

 private:
  const Json::Value* Any() const;
  /// The parts as they count for what lies below: what is no object or list where one is read hides all
  /// of the parts under it.
  std::vector<OfPart> PartsBelow() const;
  template <class Find>
  ExplainedValue Below(const Find& find) const;
};

/// What the explanation of an object is made of.
class ExplainedData {
 public:
  /// \param state  outlives this
  ExplainedData(const ObjectState& state, Json::SchemaPlace type);
  ExplainedData(const ExplainedData&) = delete;
  ExplainedData& operator=(const ExplainedData&) = delete;

  ExplainedValue Root() const;

 private:
  const ObjectState& state_;
  JsonDoc shown_;
  JsonDoc after_;
};

}  // namespace TarnConfigStore
