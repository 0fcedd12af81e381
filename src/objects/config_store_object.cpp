#include "tarnconfigstore/config_store_object.h"

#include "objects/config_store_object_impl.h"

namespace TarnConfigStore {

ConfigStoreObject::ConfigStoreObject(const ConfigStoreObjectId& id)
    : ConfigStoreObject(std::make_shared<ConfigStoreObjectImpl>(id)) {}

ConfigStoreObject::ConfigStoreObject(std::shared_ptr<ConfigStoreObjectImpl> const& implementation)
    : StoreObject(implementation.get()), object_(implementation) {}

std::string ConfigStoreObject::GetVersion() const {
  return object_->GetVersion();
}

std::string ConfigStoreObject::GetCreationTime() const {
  return object_->GetCreationTime();
}

std::string ConfigStoreObject::GetModifiedTime() const {
  return object_->GetModifiedTime();
}

std::int32_t ConfigStoreObject::GetRevision() const {
  return object_->GetRevision();
}

std::string ConfigStoreObject::GetData() const {
  return object_->GetData();
}

std::optional<std::string> ConfigStoreObject::GetPath(const std::string& pointer) const {
  return object_->GetPath(pointer);
}

std::shared_ptr<ConfigStoreObject> ConfigStoreObject::CreateSubObject(const SubObjectId& id) {
  return ConfigStoreObjectImpl::CreateSubObject(object_, id);
}

std::shared_ptr<ConfigStoreObject> ConfigStoreObject::GetSubObject(const SubObjectId& id) {
  return ConfigStoreObjectImpl::GetSubObject(object_, id);
}

std::vector<std::shared_ptr<ConfigStoreObject>> ConfigStoreObject::GetSubObjectInstances(
    const std::string& key) {
  return ConfigStoreObjectImpl::GetSubObjectInstances(object_, key);
}

void ConfigStoreObject::DeleteSubObject(const SubObjectId& id) {
  ConfigStoreObjectImpl::DeleteSubObject(object_, id);
}

void ConfigStoreObject::DeleteSubObjectInstances(const std::string& key) {
  object_->DeleteSubObjectInstances(key);
}

}  // namespace TarnConfigStore
