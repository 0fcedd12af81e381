#include "objects/filter.h"

#include "platform/config_store_document.h"
#include "platform/logger.h"

#include "objects/config_store_object_impl.h"
#include "objects/filter_spec_object_impl.h"

#include <algorithm>

namespace TarnConfigStore {
namespace {

constexpr int kTrace = 4;

bool IsSubset(const Json::Value& condition, const Json::Value& value) {
  if (condition.IsObject() && value.IsObject()) {
    return std::all_of(condition.MemberBegin(), condition.MemberEnd(), [&](const auto& member) {
      const Json::Value* found = Json::FindMember(value, Json::Text(member.name));
      return found != nullptr && IsSubset(member.value, *found);
    });
  }
  if (condition.IsArray() && value.IsArray()) {
    return std::all_of(condition.Begin(), condition.End(), [&](const Json::Value& wanted) {
      return std::any_of(value.Begin(), value.End(),
                         [&](const Json::Value& element) { return IsSubset(wanted, element); });
    });
  }
  return ConfigStoreDocument::ValuesEqual(condition, value);
}

bool Keeps(const FilterSpecObjectImpl& filter, const ConfigStoreObjectImpl& object) {
  const ConfigStoreObjectId& wanted = filter.GetConfigStoreObjectId();
  const ConfigStoreObjectId& id = object.GetConfigStoreObjectId();
  if (!wanted.instanceId.empty() && wanted.instanceId != id.instanceId) {
    CSLogger::Log(kTrace, "obj is not subset, instanceId %s did not match", id.instanceId.c_str());
    return false;
  }
  for (const auto& member : filter.GetRoot().GetObject()) {
    const Json::Value* value = Json::FindMember(object.GetRoot(), Json::Text(member.name));
    if (value == nullptr || !IsSubset(member.value, *value)) {
      CSLogger::Log(kTrace, "obj is not susbset, key %s did not match", member.name.GetString());
      return false;
    }
  }
  return true;
}

}  // namespace

std::vector<std::shared_ptr<ConfigStoreObject>> FilterConfigStoreObjects(
    std::vector<std::shared_ptr<ConfigStoreObject>> objects,
    const std::shared_ptr<FilterSpecObject>& filter) {
  if (filter) {
    std::erase_if(objects, [&](const std::shared_ptr<ConfigStoreObject>& object) {
      return !Keeps(*filter->GetImplementation(), *object->GetImplementation());
    });
  }
  return objects;
}

}  // namespace TarnConfigStore
