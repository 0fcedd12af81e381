#include "validation/guards.h"

#include "platform/error_messages.h"
#include "platform/logger.h"

#include "errors/raise.h"
#include "json/instance_ids.h"
#include "json/utf8.h"
#include "objects/access.h"
#include "persistence/boot_flags.h"

#include <algorithm>
#include <string>

namespace TarnConfigStore {
namespace {

constexpr const char* kInstanceIdMissing = "Non-Singleton object should contain instanceId";

template <class Handle>
bool LogIfNull(const Handle& handle, const char* name) noexcept {
  if (handle) {
    return false;
  }
  CSLogger::Log(CSLogger::kProblem, "[%d] %s: %s", CS_NULL_ARGUMENT, name,
                ErrorMessageForId(CS_NULL_ARGUMENT));
  return true;
}

bool IsUserData(const Json::Value& value, Json::SchemaPlace schema) {
  if (schema.MentionsTag()) {
    return false;
  }
  if (value.IsObject()) {
    return std::any_of(value.MemberBegin(), value.MemberEnd(), [&](const auto& member) {
      return IsUserData(member.value, schema.Property(Json::Text(member.name)));
    });
  }
  if (value.IsArray()) {
    return std::any_of(value.Begin(), value.End(), [&](const Json::Value& element) {
      return IsUserData(element, schema.Items());
    });
  }
  return !schema.IsInstanceId();
}

}  // namespace

void checkUserContext(bool booting, const USERDATA_CONTEXT& context) {
  if (booting && context == EXTERNAL && ReadUpgradeContext() == 0) {
    ThrowRefusal("API cannot be invoked with EXTERNAL context during boot");
  }
}

void validateInstanceId(const ConfigStoreObjectId& id) {
  if (id.instanceId.empty()) {
    ThrowRefusal(kInstanceIdMissing);
  }
}

void ValidateWritableInstanceId(const ConfigStoreObjectId& id) {
  if (!id.instanceId.empty() && !Json::IsInstanceId(id.instanceId)) {
    const std::string message = "An instance id is a text of 1 to " +
                                std::to_string(Json::kMaxInstanceIdSize) +
                                " bytes of UTF-8 without control characters, not \"" +
                                Json::Utf8::Escaped(id.instanceId) + "\"";
    ThrowRefusal(message.c_str());
  }
}

void validateSingletonNonSingleton(const ConfigStoreObjectId& id, const SchemaHandle& schema) {
  if (schema->IsNonSingleton()) {
    validateInstanceId(id);
  } else if (!id.instanceId.empty()) {
    ThrowRefusal("Singleton object cannot contain instanceId");
  }
}

void validateSingletonNonSingleton(const ObjectHandle& object, const SchemaHandle& schema) {
  validateSingletonNonSingleton(object->GetConfigStoreObjectId(), schema);
}

void ValidateRebootRequiredConfig(const SchemaHandle& schema) {
  if (!schema->IsRebootRequired()) {
    ThrowRefusal(
        "API should only be invoked for configurations tagged @rebootRequiredConfigStore.");
  }
}

void ValidateEmptyObject(const ObjectHandle& object) {
  if (object->IsEmpty()) {
    ThrowRefusal(
        "Empty object cannot be set for configurations tagged @rebootRequiredConfigStore.");
  }
}

void ValidateKernelOptionsCsoId(const ConfigStoreObjectId& id) {
  if (id.component != kDefaultComponent || id.group != "tkernel" || id.key != "options") {
    ThrowRefusal("API should only be invoked for Kernel options configuration.");
  }
}

void CheckSchema(const ConfigStoreObjectId& id, const SchemaHandle& schema) {
  if (!schema) {
    ThrowException<ConfigStoreException>(CS_SCHEMA_NOT_FOUND, id.toString());
  }
}

void ValidateCsoId(const ConfigStoreObjectId& id, const SchemaHandle& schema) {
  CheckSchema(id, schema);
  validateSingletonNonSingleton(id, schema);
}

void ValidateCsoId(const ObjectHandle& object, const SchemaHandle& schema) {
  const ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
  ValidateCsoId(id, schema);
  ValidateWritableInstanceId(id);
}

void ValidateCsoIdInstances(const ConfigStoreObjectId& id, const SchemaHandle& schema) {
  CheckSchema(id, schema);
  if (!schema->IsNonSingleton()) {
    ThrowRefusal("API called for singleton object, non-singleton expected");
  }
}

void ValidateCsoIdInstances(const FilterHandle& filter, const SchemaHandle& schema) {
  ValidateCsoIdInstances(filter->GetConfigStoreObjectId(), schema);
}

bool IsNull(const ObjectHandle& object, const char* name) noexcept {
  return LogIfNull(object, name);
}

bool IsNull(const FilterHandle& filter, const char* name) noexcept {
  return LogIfNull(filter, name);
}

bool ObjIsEmpty(const ObjectHandle& object, const char* caller) {
  if (!object->IsEmpty()) {
    return false;
  }
  CSLogger::Log(CSLogger::kProblem,
                "%s, Configuration object for %s is empty, will not be persisted in the db", caller,
                object->GetConfigStoreObjectId().toString().c_str());
  return true;
}

bool isUserType(const ObjectHandle& object, const SchemaHandle& schema) {
  return IsUserData(Internal::Access::Of(*object).GetRoot(), schema->GetSchemaPlace());
}

}  // namespace TarnConfigStore
