#include "objects/config_store_object_impl.h"

#include "platform/config_store_document.h"
#include "platform/generated_instance_id.h"

#include "errors/raise.h"
#include "json/arena.h"
#include "json/pointer.h"
#include "objects/json_kinds.h"
#include "objects/schema_lookup.h"

#include <algorithm>
#include <utility>

namespace TarnConfigStore {
namespace {

// Raises InvalidArgumentException 2000 when the text is no pointer.
const Json::Value* FindPath(const Json::Value& root, const std::string& pointer) {
  const auto names = Json::ParsePointer(pointer);
  if (!names) {
    ThrowArgument("Not a JSON Pointer: " + pointer);
  }
  // Callers see nothing of the identifiers that the store gives.
  const bool hidden =
      std::find(names->begin(), names->end(), Json::kGeneratedInstanceId) != names->end();
  return hidden ? nullptr : Json::FindAt(root, *names);
}

std::size_t SizeOfTexts(const ConfigStoreObjectImpl::Metadata& metadata) {
  return metadata.version.size() + metadata.creationTime.size() + metadata.modifiedTime.size();
}

}  // namespace

ConfigStoreObjectImpl::ConfigStoreObjectImpl(const ConfigStoreObjectId& id)
    : StoreObjectImpl(id), whole_(true), revision_(kDefaultRevision), schema_(RequireSchema(id)) {
  defaults_ = schema_->GetDefaults();
  SetInstanceIdFromCsoId();
}

ConfigStoreObjectImpl::ConfigStoreObjectImpl(
    const ConfigStoreObjectId& id, const ConfigStoreObjectId& parent,
    std::optional<unsigned long> place, std::shared_ptr<JsonDoc> const& data,
    std::shared_ptr<TarnSchemaStore::SchemaObject> const& schema, const std::string& version,
    const std::string& creationTime, const std::string& modifiedTime, int revision, bool whole,
    std::shared_ptr<JsonDoc> const& idMap, std::shared_ptr<JsonDoc> const& defaults)
    : ConfigStoreObjectImpl(Room{0}, id, data, schema,
                            {version, creationTime, modifiedTime, revision}) {
  parent_ = std::make_unique<const ConfigStoreObjectId>(parent);
  place_ = place;
  whole_ = whole;
  idMap_ = idMap;
  defaults_ = defaults ? defaults : defaults_;
}

std::shared_ptr<ConfigStoreObjectImpl> ConfigStoreObjectImpl::Make(
    const ConfigStoreObjectId& id, std::shared_ptr<JsonDoc> data,
    std::shared_ptr<TarnSchemaStore::SchemaObject> const& schema, const Metadata& metadata,
    Arena* arena) {
  const std::size_t size = SizeOfTexts(metadata);
  if (arena == nullptr) {
    return MakeWithRoom<ConfigStoreObjectImpl>(size, id, std::move(data), schema, metadata);
  }
  Room room = arena->RoomBeside<ConfigStoreObjectImpl>(size);
  room.size = size;
  return arena->MakeBeside<ConfigStoreObjectImpl>(room, id, std::move(data), schema, metadata);
}

ConfigStoreObjectImpl::ConfigStoreObjectImpl(
    const Room& room, const ConfigStoreObjectId& id, std::shared_ptr<JsonDoc> data,
    std::shared_ptr<TarnSchemaStore::SchemaObject> const& schema, const Metadata& metadata)
    : StoreObjectImpl(id, std::move(data)),
      whole_(true),
      defaults_(schema ? schema->GetDefaults() : nullptr),
      revision_(metadata.revision),
      schema_(schema) {
  char* next = room.begin;
  if (next == nullptr) {
    ownTexts_ = std::make_unique_for_overwrite<char[]>(SizeOfTexts(metadata));
    next = ownTexts_.get();
  }
  const auto keep = [&next](std::string_view text) {
    char* const begin = next;
    next = std::copy(text.begin(), text.end(), begin);
    return std::string_view(begin, text.size());
  };
  version_ = keep(metadata.version);
  creationTime_ = keep(metadata.creationTime);
  modifiedTime_ = keep(metadata.modifiedTime);
}

std::shared_ptr<JsonDoc> ConfigStoreObjectImpl::IdMap() const {
  return idMap_ || !schema_ ? idMap_ : schema_->GetIdMap();
}

const Json::Value* ConfigStoreObjectImpl::GetValuePtrDefault(const char* key,
                                                             bool& isDefault) const {
  isDefault = false;
  if (const Json::Value* own = GetValuePtr(key)) {
    return own;
  }
  if (!defaults_) {
    return nullptr;
  }
  const Json::Value* value = Json::FindMember(*defaults_->GetJsonValuePtr(), key);
  isDefault = value != nullptr && !value->IsNull();
  return isDefault ? value : nullptr;
}

void ConfigStoreObjectImpl::SetInstanceIdFromCsoId() {
  const ConfigStoreObjectId& id = GetConfigStoreObjectId();
  const auto idMap = IdMap();
  if (!idMap || !ConfigStoreDocument::ValueExists(*idMap->GetJsonValuePtr(), id.key.c_str())) {
    return;
  }
  const Json::Value& name = (*idMap->GetJsonValuePtr())[id.key.c_str()];
  SetValue(name.GetString(), std::string_view(id.instanceId));
}

std::string ConfigStoreObjectImpl::GetIdMapStr() const {
  std::string text = "{}";
  if (const auto idMap = IdMap()) {
    ConfigStoreDocument::SerializeValue(*idMap->GetJsonValuePtr(), text);
  }
  return text;
}

// Hardly any object holds generated ids; the others need no copy.
std::string ConfigStoreObjectImpl::SerializedForCallers(const Json::Value& value) const {
  if (!Json::HasGeneratedId(value)) {
    return Serialized(value);
  }
  Json::Document copy;
  copy.CopyFrom(value, copy.GetAllocator());
  Json::ClearGeneratedIds(copy);
  return Serialized(copy);
}

std::string ConfigStoreObjectImpl::GetData() const {
  return SerializedForCallers(GetRoot());
}

std::optional<std::string> ConfigStoreObjectImpl::GetPath(const std::string& pointer) const {
  const Json::Value* value = FindPath(GetRoot(), pointer);
  if (value == nullptr || value->IsNull()) {
    return std::nullopt;
  }
  return SerializedForCallers(*value);
}

std::string ConfigStoreObjectImpl::GetSerializedData() const {
  return Serialized(GetRoot());
}

void ConfigStoreObjectImpl::SetValueEx(const char* key, const void* value) {
  GetValuePtr(key);  // the key is checked before anything is allocated
  // Copied before it is assigned: the source may be the very member that is overwritten, or hold
  // it.
  Json::Value copy(*static_cast<const Json::Value*>(value), GetAllocator());
  Assign(key, std::move(copy));
}

std::string InstanceIdMember(const TarnSchemaStore::SchemaObject& schema) {
  const auto idMap = schema.GetIdMap();
  const Json::Value* name =
      idMap ? Json::FindMember(*idMap->GetJsonValuePtr(), schema.GetKey()) : nullptr;
  if (name == nullptr) {
    ThrowException<ConfigStoreException>(CS_INSTANCE_ID_INVALID, schema.GetKey());
  }
  return std::string(Json::Text(*name));
}

std::string GetInstanceIdFromValue(const Json::Value& value,
                                   const TarnSchemaStore::SchemaObject& schema) {
  const std::string member = InstanceIdMember(schema);
  const Json::Value* id = Json::FindMember(value, member);
  if (id == nullptr || !id->IsString()) {
    ThrowException<ConfigStoreException>(CS_INSTANCE_ID_INVALID, member);
  }
  return JsonKind<std::string>::Get(*id);
}

}  // namespace TarnConfigStore
