// What is known of one place of a type's data. For the two sources that make and ask it.
#pragma once

#include "json/schema_keywords.h"
#include "json/schema_parts.h"
#include "json/type_schema_view.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace Json {

/// In a node's set of kinds: what belongs to the part of whatever stands around the node.
inline constexpr unsigned kInherited = 8;

struct SchemaPlace::Node {
  struct Member {
    std::string_view name;
    Node* node;
    bool canBeRequired = false;
  };

  const Value* schema = nullptr;
  const Value* defaultValue = nullptr;
  unsigned tag = 0;  ///< a Kind, or none
  bool mentionsTag = false;
  bool isInstanceId = false;
  bool getsGeneratedId = false;
  bool admitsOthers = false;
  bool holdsDefaults = false;
  bool holdsGeneratedIds = false;
  bool isSecret = false;
  bool holdsSecrets = false;
  NumberKind numbers = NumberKind::ANY;
  unsigned kinds = 0;
  std::string_view instanceIdMember;
  std::vector<Member> members;
  Node* items = nullptr;

  const Member* FindMember(std::string_view name) const {
    const auto found = std::find_if(members.begin(), members.end(),
                                    [&](const Member& member) { return member.name == name; });
    return found == members.end() ? nullptr : &*found;
  }
  Node* Find(std::string_view name) const {
    const Member* found = FindMember(name);
    return found == nullptr ? nullptr : found->node;
  }

  // The members that a part of this node's schema asks for, at once or where it has others.
  void ReadRequired(const Value& part) {
    MarkRequired(Json::FindMember(part, Keyword::kRequired));
    if (const Value* dependencies = FindObject(part, Keyword::kDependencies)) {
      for (const auto& dependency : dependencies->GetObject()) {
        MarkRequired(&dependency.value);
      }
    }
  }

 private:
  void MarkRequired(const Value* names) {
    if (names == nullptr || !names->IsArray()) {
      return;
    }
    for (const Value& name : names->GetArray()) {
      for (Member& member : members) {
        member.canBeRequired =
            member.canBeRequired || (name.IsString() && Text(name) == member.name);
      }
    }
  }
};

}  // namespace Json
