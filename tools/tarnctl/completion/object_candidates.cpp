#include "completion/object_candidates.h"

#include "tarnconfigstore/explain.h"
#include "tarnconfigstore/listing.h"
#include "tarnconfigstore/type_administration.h"

#include "json/json.h"

#include <set>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::InstalledType;
using TarnConfigStore::MemberDescription;
using TarnConfigStore::MemberLimit;
using TarnConfigStore::MemberToken;

// What the library says of the type's members at and below a place.
std::vector<MemberDescription> MembersBelow(const std::string& object, const MemberPath& place) {
  ConfigStoreObjectId type = ParseObject(object);
  type.instanceId.clear();
  return TarnConfigStore::DescribeType(type, PointerTo(place)).members;
}

// Names that "." or `end` can follow.
std::vector<std::string> MembersAt(const std::string& object, std::string_view word,
                                   const char* end) {
  const std::size_t dot = word.rfind('.');
  const MemberPath place =
      ParseMemberIfGiven(dot == std::string_view::npos ? "" : word.substr(0, dot));
  std::set<std::string> members;
  for (const MemberDescription& member : MembersBelow(object, place)) {
    MemberPath names = ParsePlace(member.pointer);
    if (member.token != MemberToken::NAME || names.size() <= place.size() ||
        names.size() > place.size() + 2) {
      continue;
    }
    const bool hasBelow = names.size() == place.size() + 2;
    names.resize(place.size() + 1);
    members.insert(FormatMember(names) + (hasBelow ? "." : end));
  }
  return {members.begin(), members.end()};
}

// Values that the type names, as MEMBER=VALUE takes them; none of a secret, which are masked.
std::vector<std::string> ValuesOf(const std::string& object, std::string_view member) {
  const std::vector<MemberDescription> described = MembersBelow(object, ParseMember(member));
  std::vector<std::string> values;
  if (described.empty()) {
    return values;
  }
  if (described.front().type.find("boolean") != std::string::npos) {
    values = {"true", "false"};
  }
  for (const MemberLimit& limit : described.front().limits) {
    Json::Document listed;
    if (limit.keyword != "enum" || !Json::Parse(limit.value, listed) || !listed.IsArray()) {
      continue;
    }
    for (const Json::Value& value : listed.GetArray()) {
      if (value.IsString()) {
        values.emplace_back(Json::Text(value));
      } else if (value.IsInt64()) {
        values.push_back(std::to_string(value.GetInt64()));
      }
    }
  }
  return values;
}

}  // namespace

std::vector<std::string> FindNames(Named named, std::string_view word) {
  std::set<std::string> names;
  const std::vector<InstalledType> types = TarnConfigStore::ListTypes();
  for (const InstalledType& type : types) {
    const std::string name = FormatObject({type.key, type.group, type.component});
    names.insert(name);
    if (named == Named::PREFIX) {
      names.insert(type.component + "/");
      names.insert(type.component + "/" + type.group + "/");
    }
    if (named == Named::TYPE || !type.hasInstances) {
      continue;
    }
    if (!word.starts_with(name + "/")) {
      names.insert(name + "/");
    } else {
      for (const auto& stored :
           TarnConfigStore::ListStored({type.key, type.group, type.component})) {
        names.insert(FormatObject(stored.id));
      }
    }
  }
  return {names.begin(), names.end()};
}

std::vector<std::string> FindMembers(const std::string& object, std::string_view word) {
  return MembersAt(object, word, "");
}

std::vector<std::string> FindAssignments(const std::string& object, std::string_view word) {
  const std::size_t equals = word.find('=');
  if (equals == std::string_view::npos) {
    return MembersAt(object, word, "=");
  }
  std::vector<std::string> assignments = ValuesOf(object, word.substr(0, equals));
  for (std::string& value : assignments) {
    value.insert(0, word.substr(0, equals + 1));
  }
  return assignments;
}

}  // namespace tarnctl
