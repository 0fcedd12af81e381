// The sub-objects of configuration objects: what the type says of them, and making views.
#include "platform/generated_instance_id.h"
#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "objects/sub_object_place.h"

#include <utility>

namespace TarnConfigStore {
namespace {

using Type = std::shared_ptr<TarnSchemaStore::SchemaObject>;
using Object = std::shared_ptr<ConfigStoreObject>;

// What the type says of a member that holds objects.
struct Member {
  Type type;
  bool isList;
  std::string idMember;  // empty where its objects have no instance ids
};

bool DescribesList(const Json::Value* schema) {
  if (schema == nullptr) {
    return false;
  }
  const Json::Value* type = Json::FindMember(*schema, "type");
  const Json::Value* items = Json::FindMember(*schema, "items");
  return (items != nullptr && items->IsObject()) ||
         (type != nullptr && type->IsString() && Json::Text(*type) == "array");
}

Member Describe(const Type& parent, const std::string& key) {
  if (key.empty()) {
    ThrowArgument("key cannot be empty");
  }
  if (!parent) {
    CSLogger::Log(CSLogger::kFailure, "Schema object is null.");
    ThrowFailure("The object was made without its type: " + key);
  }
  Member member{
      parent->GetPropertySchema(key), DescribesList(parent->GetPropertyValueSchema(key)), {}};
  if (!member.type) {
    CSLogger::Log(CSLogger::kFailure, "Schema object not found for key: %s", key.c_str());
    ThrowFailure("The type knows no sub-object of this key: " + key);
  }
  if (member.isList && member.type->IsNonSingleton()) {
    member.idMember = InstanceIdMember(*member.type);
  }
  return member;
}

Member DescribeInstances(const Type& parent, const std::string& key) {
  Member member = Describe(parent, key);
  if (member.idMember.empty()) {
    ThrowFailure("Schema error:Expected array type");
  }
  return member;
}

void CheckInstanceId(const Member& member, const SubObjectId& id) {
  if (member.isList && member.idMember.empty()) {
    ThrowInvalidType(id.key);  // elements without ids cannot be told apart
  }
  if (member.idMember.empty() && !id.instanceId.empty()) {
    ThrowArgument("Singleton sub-object cannot contain instanceId: " + id.key);
  }
  if (!member.idMember.empty() && id.instanceId.empty()) {
    ThrowArgument("Non-Singleton sub-object should contain instanceId: " + id.key);
  }
}

Member DescribeOne(const Type& parent, const SubObjectId& id) {
  Member member = Describe(parent, id.key);
  CheckInstanceId(member, id);
  return member;
}

Object MakeView(const ConfigStoreObjectImpl& parent, const SubObjectId& id, const Type& type,
                std::unique_ptr<const SubObjectPlace> place) {
  return Internal::Access::Wrap(
      std::make_shared<ConfigStoreObjectImpl>(parent, id, type, std::move(place)));
}

void LogNotFound(const char* operation, const std::string& key) {
  CSLogger::Log(CSLogger::kTrace, "%s: Could not find key: %s", operation, key.c_str());
}

}  // namespace

ConfigStoreObjectImpl::ConfigStoreObjectImpl(const ConfigStoreObjectImpl& parent,
                                             const SubObjectId& id, const Type& type,
                                             std::unique_ptr<const SubObjectPlace> place)
    : StoreObjectImpl(id, std::move(place)),
      whole_(false),
      version_(parent.version_),
      defaults_(type->GetDefaults()),
      creationTime_(parent.creationTime_),
      modifiedTime_(parent.modifiedTime_),
      revision_(parent.revision_),
      place_(GetPlace()->Index()),
      schema_(type) {}

Object ConfigStoreObjectImpl::CreateSubObject(const Shared& object, const SubObjectId& id) {
  const Member member = Describe(object->schema_, id.key);
  SubObjectId named = id;
  if (named.instanceId.empty() && member.idMember == Json::kGeneratedInstanceId) {
    named.instanceId = GenerateInstanceId();
  }
  CheckInstanceId(member, named);
  auto place = std::make_unique<SubObjectPlace>(object, named, member.idMember);
  if (place->Find() != nullptr) {
    ThrowFailure("Object already exists.");
  }
  place->Create();
  return MakeView(*object, named, member.type, std::move(place));
}

Object ConfigStoreObjectImpl::GetSubObject(const Shared& object, const SubObjectId& id) {
  const Member member = DescribeOne(object->schema_, id);
  auto place = std::make_unique<SubObjectPlace>(object, id, member.idMember);
  if (place->Find() == nullptr) {
    LogNotFound("GetSubObject", id.key);
    return nullptr;
  }
  return MakeView(*object, id, member.type, std::move(place));
}

std::vector<Object> ConfigStoreObjectImpl::GetSubObjectInstances(const Shared& object,
                                                                 const std::string& key) {
  const Member member = DescribeInstances(object->schema_, key);
  std::vector<Object> views;
  Json::Value* list = FindInstances(*object, key);
  if (list == nullptr) {
    LogNotFound("GetSubObjectInstances", key);
    return views;
  }
  views.reserve(list->Size());
  Json::Allocator& allocator = object->GetAllocator();
  for (rapidjson::SizeType i = 0; i < list->Size(); ++i) {
    Json::Value& element = (*list)[i];
    if (!element.IsObject()) {
      ThrowInvalidType(key);
    }
    if (member.idMember == Json::kGeneratedInstanceId &&
        Json::FindMember(element, member.idMember) == nullptr) {
      object->ForgetLookups();
      Json::AddMember(element, Json::Copy(member.idMember, allocator),
                      Json::Copy(GenerateInstanceId(), allocator), allocator);
    }
    const SubObjectId id(key, GetInstanceIdFromValue(element, *member.type));
    views.push_back(MakeView(*object, id, member.type,
                             std::make_unique<SubObjectPlace>(object, id, member.idMember, i)));
  }
  return views;
}

void ConfigStoreObjectImpl::DeleteSubObject(const Shared& object, const SubObjectId& id) {
  SubObjectPlace(object, id, DescribeOne(object->schema_, id).idMember).Delete();
}

void ConfigStoreObjectImpl::DeleteSubObjectInstances(const std::string& key) {
  DescribeInstances(schema_, key);
  if (FindInstances(*this, key) != nullptr) {
    RemoveMember(key);
  }
}

}  // namespace TarnConfigStore
