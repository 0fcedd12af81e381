#include "descriptions.h"

#include "object_name.h"

#include <initializer_list>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::NextBootAction;

Json NamePresent(std::initializer_list<std::pair<bool, const char*>> values) {
  Json names = Json::array();
  for (const auto& [present, name] : values) {
    if (present) {
      names.push_back(name);
    }
  }
  return names;
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

Json Describe(const TarnConfigStore::StoredObject& object) {
  return {{"object", FormatObject(object.id)},
          {"version", object.version},
          {"revision", object.revision},
          {"creationTime", object.creationTime},
          {"modifiedTime", object.modifiedTime},
          {"confirmed", object.confirmed},
          {"values", NamePresent({{object.hasUser, "user"},
                                  {object.hasAutomatic, "automatic"},
                                  {object.hasVital, "vital"},
                                  {object.hasCached, "cached"},
                                  {object.hasPending, "pending"}})}};
}

Json Describe(const TarnConfigStore::StagedChange& change) {
  return {{"object", FormatObject(change.id)},
          {"action", NameAction(change.action)},
          {"version", change.version},
          {"values", NamePresent({{change.hasUser, "user"},
                                  {change.hasVital, "vital"},
                                  {change.hasCached, "cached"}})}};
}

Json DescribeStaged(const TarnConfigStore::ConfigStoreObjectId& prefix) {
  Json list = Json::array();
  for (const auto& change : TarnConfigStore::ListStaged(prefix)) {
    list.push_back(Describe(change));
  }
  return list;
}

}  // namespace tarnctl
