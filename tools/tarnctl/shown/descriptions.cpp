#include "shown/descriptions.h"

#include "given/object_name.h"
#include "json/schema_keywords.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace tarnctl {
namespace {

using TarnConfigStore::InstalledType;
using TarnConfigStore::NextBootAction;

using NamedValues = std::vector<std::pair<bool, const char*>>;

Json::Value NamePresent(const NamedValues& values, JsonMaker& make) {
  std::vector<std::string> names;
  for (const auto& [present, name] : values) {
    if (present) {
      names.emplace_back(name);
    }
  }
  return make.Of(names);
}

std::vector<std::string> SplitFlags(const std::string& flags) {
  std::vector<std::string> names;
  std::istringstream words(flags);
  for (std::string name; words >> name;) {
    names.push_back(name);
  }
  return names;
}

std::string NameType(const InstalledType& type) {
  return FormatObject({type.key, type.group, type.component});
}

}  // namespace

const char* NameAction(NextBootAction action) {
  switch (action) {
    case NextBootAction::SET:
      return "SET";
    case NextBootAction::DELETE:
      return "DELETE";
    case NextBootAction::DELETE_INSTANCE:
      break;
  }
  return "DELETE_INSTANCE";
}

Json::Value Describe(const InstalledType& type, JsonMaker& make) {
  return make.Object("type", NameType(type), "version", type.version, "instances",
                     type.hasInstances, "flags", SplitFlags(type.flags));
}

Json::Value Describe(const TarnConfigStore::StoredObject& object, JsonMaker& make) {
  const NamedValues values = {{object.hasUser, "user"},
                              {object.hasAutomatic, "automatic"},
                              {object.hasVital, "vital"},
                              {object.hasCached, "cached"},
                              {object.hasPending, "pending"}};
  return make.Object("object", FormatObject(object.id), "version", object.version, "revision",
                     object.revision, "creationTime", object.creationTime, "modifiedTime",
                     object.modifiedTime, "confirmed", object.confirmed, "values",
                     NamePresent(values, make));
}

Json::Value Describe(const TarnConfigStore::OutdatedObject& object, JsonMaker& make) {
  Json::Value description = Describe(object.stored, make);
  make.Add(description, "installedVersion", object.installedVersion);
  return description;
}

Json::Value Describe(const TarnConfigStore::StagedChange& change, JsonMaker& make) {
  const NamedValues values = {
      {change.hasUser, "user"}, {change.hasVital, "vital"}, {change.hasCached, "cached"}};
  return make.Object("object", FormatObject(change.id), "action", NameAction(change.action),
                     "version", change.version, "values", NamePresent(values, make));
}

void AddSides(Json::Value& object, const std::optional<std::string>& base,
              const std::optional<std::string>& staged, const std::optional<std::string>& current,
              JsonMaker& make) {
  const std::pair<const char*, const std::optional<std::string>*> sides[] = {
      {"base", &base}, {"staged", &staged}, {"current", &current}};
  for (const auto& [name, text] : sides) {
    if (*text) {
      make.Add(object, name, make.Parse(**text));
    }
  }
}

Json::Value DescribeConflicts(const std::vector<TarnConfigStore::ChangeConflict>& conflicts,
                              JsonMaker& make) {
  return make.List(conflicts, [&make](const TarnConfigStore::ChangeConflict& conflict) {
    Json::Value described = make.Object("pointer", conflict.pointer);
    AddSides(described, conflict.base, conflict.staged, conflict.current, make);
    return described;
  });
}

Json::Value DescribeStaged(const TarnConfigStore::ConfigStoreObjectId& prefix, JsonMaker& make) {
  return make.List(
      TarnConfigStore::ListStaged(prefix),
      [&](const TarnConfigStore::StagedChange& change) { return Describe(change, make); });
}

Json::Value ListRebootTypes(JsonMaker& make) {
  std::vector<std::string> names;
  for (const InstalledType& type : TarnConfigStore::ListTypes()) {
    const auto flags = SplitFlags(type.flags);
    if (std::find(flags.begin(), flags.end(), Json::Keyword::kRebootRequired) != flags.end()) {
      names.push_back(NameType(type));
    }
  }
  return make.Of(names);
}

}  // namespace tarnctl
