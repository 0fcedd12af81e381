#include "store/bulk_lists.h"

#include "tarnconfigstore/exceptions.h"

#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/schema_lookup.h"
#include "validation/guards.h"

#include <string_view>
#include <unordered_set>

namespace TarnConfigStore {

ConfigStoreObjectId DropEmptyHandles(ObjectList& objects, const char* operation) {
  std::erase_if(objects, [operation](const auto& object) { return IsNull(object, operation); });
  if (objects.empty()) {
    ThrowException<InvalidArgumentException>(CS_NO_OBJECTS);
  }
  return objects.front()->GetConfigStoreObjectId();
}

void CheckInstances(const ObjectList& objects, const ConfigStoreObjectId& type,
                    const std::function<void(const ObjectHandle&)>& validate) {
  std::unordered_set<std::string_view> instances;
  instances.reserve(objects.size());
  for (const auto& object : objects) {
    const ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
    if (!IsSameType(id, type)) {
      ThrowException<InvalidArgumentException>(CS_MIXED_TYPES);
    }
    validateInstanceId(id);
    ValidateWritableInstanceId(id);
    if (!instances.insert(id.instanceId).second) {
      ThrowArgument("The instance is listed twice: " + id.toString());
    }
    try {
      validate(object);
    } catch (const ValidationException&) {
      // The findings name members only.
      CSLogger::Log(CSLogger::kFailure, "Refused: %s", id.toString().c_str());
      throw;
    }
  }
}

void DropEmptyObjects(ObjectList& objects, const char* operation) {
  std::erase_if(objects, [operation](const auto& object) { return ObjIsEmpty(object, operation); });
}

}  // namespace TarnConfigStore
