#include "tarnconfigstore/default_instances.h"

#include "tarnconfigstore/exceptions.h"

#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/access.h"
#include "objects/generated_ids.h"
#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/read_default.h"
#include "validation/guards.h"

#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace TarnConfigStore {
namespace {

using Objects = std::vector<ObjectHandle>;

Objects ReadShipped(const ConfigStoreObjectId& type, const Objects& objects,
                    const char* operation) {
  CSLogger::Log(CSLogger::kTrace, "%s invoked", operation);
  const SchemaHandle schema = FindSchema(type);
  ValidateCsoIdInstances(type, schema);
  for (const ObjectHandle& object : objects) {
    if (object && !IsSameType(object->GetConfigStoreObjectId(), type)) {
      ThrowException<InvalidArgumentException>(CS_MIXED_TYPES);
    }
  }
  const auto all =
      std::make_shared<FilterSpecObject>(ConfigStoreObjectId(type.key, type.group, type.component));
  return GetDefaultConfigInstancesInternal(all, GetDBStore(DBStore::Type::CURRENT_STORE, true),
                                           schema);
}

std::string_view InstanceId(const ObjectHandle& object) {
  return object->GetConfigStoreObjectId().instanceId;
}

bool HoldsTheSame(const ObjectHandle& a, const ObjectHandle& b) {
  return EqualButForGeneratedIds(Internal::Access::Of(*a).GetRoot(),
                                 Internal::Access::Of(*b).GetRoot());
}

}  // namespace

void AddDefaultConfigInstances(const ConfigStoreObjectId& type, Objects& objects) {
  const Objects shipped = ReadShipped(type, objects, "AddDefaultConfigInstances");
  std::unordered_set<std::string_view> present;
  for (const ObjectHandle& object : objects) {
    if (object) {
      present.insert(InstanceId(object));
    }
  }
  for (const ObjectHandle& object : shipped) {
    if (present.count(InstanceId(object)) == 0) {
      objects.push_back(object);
    }
  }
}

void FilterDefaultConfigInstances(const ConfigStoreObjectId& type, Objects& objects) {
  const Objects shipped = ReadShipped(type, objects, "FilterDefaultConfigInstances");
  std::unordered_map<std::string_view, ObjectHandle> byId;
  for (const ObjectHandle& object : shipped) {
    byId.emplace(InstanceId(object), object);
  }
  std::erase_if(objects, [&](const ObjectHandle& object) {
    if (!object) {
      return false;
    }
    const auto found = byId.find(InstanceId(object));
    return found != byId.end() && HoldsTheSame(object, found->second);
  });
}

}  // namespace TarnConfigStore
