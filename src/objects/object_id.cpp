#include "tarnconfigstore/object_id.h"

#include "platform/uuid.h"

#include <cstdlib>
#include <memory>
#include <utility>

namespace TarnConfigStore {

const std::string kDefaultComponent = "tarn";
const std::string sGlobalNamespace;
const std::string kEmptyString;

ConfigStoreObjectId::ConfigStoreObjectId(const std::string& objectKey,
                                         const std::string& objectGroup,
                                         const std::string& objectComponent)
    : key(objectKey), component(objectComponent), group(objectGroup) {}

ConfigStoreObjectId::ConfigStoreObjectId(const std::string& objectKey,
                                         const std::string& objectGroup,
                                         const std::string& objectComponent,
                                         const std::string& objectInstanceId)
    : key(objectKey),
      component(objectComponent),
      group(objectGroup),
      instanceId(objectInstanceId) {}

ConfigStoreObjectId::ConfigStoreObjectId(const char* objectKey, const char* objectGroup,
                                         const char* objectComponent)
    : key(objectKey), component(objectComponent), group(objectGroup) {}

ConfigStoreObjectId::ConfigStoreObjectId(const char* objectKey, const char* objectGroup,
                                         const char* objectComponent, const char* objectInstanceId)
    : key(objectKey),
      component(objectComponent),
      group(objectGroup),
      instanceId(objectInstanceId) {}

std::string ConfigStoreObjectId::toString() const {
  constexpr std::size_t kPrefix = 5;
  std::string text;
  text.reserve(component.size() + kPrefix);
  text += "comp ";
  text += component;
  text += " grp ";
  text += group;
  text += " key ";
  text += key;
  if (!instanceId.empty()) {
    text += " id ";
    text += instanceId;
  }
  return text;
}

bool operator==(const ConfigStoreObjectId& a, const ConfigStoreObjectId& b) {
  return a.key == b.key && a.component == b.component && a.instanceId == b.instanceId &&
         a.group == b.group;
}

std::uint64_t hashCsoId(const ConfigStoreObjectId& id) {
  std::string joined;
  joined.reserve(id.key.size() + id.group.size() + id.component.size() + id.instanceId.size());
  joined += id.key;
  joined += id.group;
  joined += id.component;
  joined += id.instanceId;
  return std::hash<std::string>()(joined);
}

SubObjectId::SubObjectId(std::string subObjectKey, std::string subObjectInstanceId)
    : key(std::move(subObjectKey)), instanceId(std::move(subObjectInstanceId)) {}

std::string SubObjectId::toString() const {
  return instanceId.empty() ? "key " + key : "key " + key + " id " + instanceId;
}

bool operator==(const SubObjectId& a, const SubObjectId& b) {
  return a.key == b.key && a.instanceId == b.instanceId;
}

std::string GenerateInstanceId() {
  const auto release = [](char* text) { std::free(text); };
  const std::unique_ptr<char, decltype(release)> text(UUID_CreateRandom(), release);
  return std::string(text.get());
}

}  // namespace TarnConfigStore
