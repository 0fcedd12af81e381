#include "members/type_walk.h"

#include "json/pointer.h"
#include "members/member_places.h"

#include <algorithm>
#include <string_view>

namespace TarnConfigStore {
namespace {

constexpr const char* kAny = "*";

// Tells of a place and all below it.
class TypeWalk {
 public:
  TypeWalk(bool reveal, std::vector<MemberDescription>& members)
      : reveal_(reveal), members_(members) {}

  void Tell(const MemberPlace& place, const std::string& pointer, MemberToken token) {
    if (members_.size() == kMostMembers) {
      FailWithTooMany();
    }
    members_.push_back(place.Describe(pointer, token, reveal_));
    TellBelow(place, pointer);
  }

  void TellBelow(const MemberPlace& place, const std::string& pointer) {
    const void* schema = place.Schema();
    // No data go deeper.
    if (schema == nullptr || around_.size() == Json::kMaxDepth ||
        std::find(around_.begin(), around_.end(), schema) != around_.end()) {
      return;
    }
    around_.push_back(schema);
    place.ForEachMember([&](std::string_view name, const MemberPlace& member) {
      Tell(member, Json::PointerBelow(pointer, name), MemberToken::NAME);
    });
    place.values.ForEachPattern([&](std::string_view pattern, Json::ValuePlace value) {
      Tell(place.Unnamed(value), Json::PointerBelow(pointer, pattern), MemberToken::PATTERN);
    });
    if (const MemberPlace other = place.Unnamed(place.values.OtherMembers())) {
      Tell(other, Json::PointerBelow(pointer, kAny), MemberToken::OTHER);
    }
    const std::size_t positions = place.values.Positions();
    for (std::size_t i = 0; i < positions; ++i) {
      Tell(place.Element(i), Json::PointerBelow(pointer, std::to_string(i)), MemberToken::POSITION);
    }
    if (const MemberPlace element = place.Element(positions)) {
      Tell(element, Json::PointerBelow(pointer, kAny), MemberToken::ELEMENT);
    }
    around_.pop_back();
  }

 private:
  const bool reveal_;
  std::vector<MemberDescription>& members_;
  std::vector<const void*> around_;
};

// A place that a description names, and what its last name stands for.
struct NamedPlace {
  MemberPlace place;
  MemberToken token = MemberToken::NAME;
};

NamedPlace Below(const MemberPlace& place, const std::string& name) {
  NamedPlace found;
  place.ForEachMember([&](std::string_view member, const MemberPlace& named) {
    if (member == name) {
      found.place = named;
    }
  });
  if (found.place) {
    return found;
  }
  place.values.ForEachPattern([&](std::string_view pattern, Json::ValuePlace value) {
    if (pattern == name) {
      found = {place.Unnamed(value), MemberToken::PATTERN};
    }
  });
  if (found.place) {
    return found;
  }
  const std::size_t positions = place.values.Positions();
  for (std::size_t i = 0; i < positions; ++i) {
    if (std::to_string(i) == name) {
      return {place.Element(i), MemberToken::POSITION};
    }
  }
  if (const MemberPlace element = place.Element(positions)) {
    return {element, MemberToken::ELEMENT};
  }
  return name == kAny ? NamedPlace{place.Unnamed(place.values.OtherMembers()), MemberToken::OTHER}
                      : NamedPlace{place.Member(name), MemberToken::NAME};
}

}  // namespace

std::vector<MemberDescription> DescribeMembers(const TarnSchemaStore::SchemaObject& type,
                                               const std::string& place, bool reveal) {
  std::vector<MemberDescription> members;
  const std::vector<std::string> names = RequirePlace(place);
  TypePlaces places(type);
  NamedPlace at{places.Root(), MemberToken::NAME};
  std::string pointer;
  for (const std::string& name : names) {
    at = Below(at.place, name);
    if (!at.place) {
      return members;
    }
    Json::AppendToken(pointer, at.token == MemberToken::ELEMENT ? kAny : name);
  }
  TypeWalk walk(reveal, members);
  if (names.empty()) {
    walk.TellBelow(at.place, pointer);
  } else {
    walk.Tell(at.place, pointer, at.token);
  }
  return members;
}

}  // namespace TarnConfigStore
