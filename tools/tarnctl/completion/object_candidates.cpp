#include "completion/object_candidates.h"

#include "tarnconfigstore/listing.h"
#include "tarnconfigstore/type_administration.h"

#include "store/type_schema.h"

#include <set>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::InstalledType;

// The member that a dotted path leads to, and what of the word comes after the last dot.
Json::SchemaPlace Follow(Json::SchemaPlace place, std::string_view path) {
  for (const std::string& name : ParseMemberIfGiven(path)) {
    place = place ? place.Property(name) : place;
  }
  return place;
}

bool HasMembers(const Json::SchemaPlace& place) {
  bool has = false;
  place.ForEachProperty([&has](std::string_view, const Json::SchemaPlace&) { has = true; });
  return has;
}

// Scalars as MEMBER=VALUE takes them.
std::vector<std::string> ValuesOf(const Json::SchemaPlace& place) {
  std::vector<std::string> values;
  const Json::Value* const schema = place ? place.Schema() : nullptr;
  if (schema == nullptr || !schema->IsObject()) {
    return values;
  }
  if (const auto listed = schema->FindMember("enum");
      listed != schema->MemberEnd() && listed->value.IsArray()) {
    for (const Json::Value& value : listed->value.GetArray()) {
      if (value.IsString()) {
        values.emplace_back(value.GetString(), value.GetStringLength());
      } else if (value.IsInt64()) {
        values.push_back(std::to_string(value.GetInt64()));
      }
    }
  } else if (const auto type = schema->FindMember("type");
             type != schema->MemberEnd() && type->value == "boolean") {
    values = {"true", "false"};
  }
  return values;
}

std::vector<std::string> MembersAt(const Json::SchemaPlace& root, std::string_view word,
                                   const char* end) {
  const std::size_t dot = word.rfind('.');
  const std::string_view path = dot == std::string_view::npos ? "" : word.substr(0, dot);
  const Json::SchemaPlace place = Follow(root, path);
  std::vector<std::string> members;
  if (!place) {
    return members;
  }
  place.ForEachProperty([&](std::string_view name, const Json::SchemaPlace& member) {
    MemberPath names = ParseMemberIfGiven(path);
    names.emplace_back(name);
    const std::string text = FormatMember(names);
    members.push_back(text + end);
    if (HasMembers(member)) {
      members.push_back(text + ".");
    }
  });
  return members;
}

ConfigStoreObjectId TypeOf(const std::string& object) {
  ConfigStoreObjectId id = ParseObject(object);
  id.instanceId.clear();
  return id;
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
  const TypeSchema type(TypeOf(object));
  return MembersAt(type.Place(), word, "");
}

std::vector<std::string> FindAssignments(const std::string& object, std::string_view word) {
  const TypeSchema type(TypeOf(object));
  const std::size_t equals = word.find('=');
  if (equals == std::string_view::npos) {
    return MembersAt(type.Place(), word, "=");
  }
  std::vector<std::string> assignments = ValuesOf(Follow(type.Place(), word.substr(0, equals)));
  for (std::string& value : assignments) {
    value.insert(0, word.substr(0, equals + 1));
  }
  return assignments;
}

}  // namespace tarnctl
