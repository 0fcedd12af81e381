// The objects of the host that all operations find.
#pragma once

#include "tarnconfigstore/tarnconfigstore.h"

#include <memory>
#include <string>

namespace Faults {

using namespace TarnConfigStore;
using Object = std::shared_ptr<ConfigStoreObject>;

inline const ConfigStoreObjectId kPlain("plain", "test", "tarn");
inline const ConfigStoreObjectId kSwitches("switch", "test", "tarn");
inline const ConfigStoreObjectId kStagedSwitches("many-switch", "test", "tarn");
inline const ConfigStoreObjectId kKernel("options", "tkernel", "tarn");
inline const ConfigStoreObjectId kShipped("shipped", "test", "tarn");
inline const ConfigStoreObjectId kChecked("checked", "test", "tarn");
inline const ConfigStoreObjectId kEverything("", "", "");

inline ConfigStoreObjectId Instance(ConfigStoreObjectId type, const std::string& id) {
  type.instanceId = id;
  return type;
}
inline ConfigStoreObjectId Switch(const std::string& id) {
  return Instance(kSwitches, id);
}
inline ConfigStoreObjectId StagedSwitch(const std::string& id) {
  return Instance(kStagedSwitches, id);
}

inline Object Make(const ConfigStoreObjectId& id, const char* json) {
  auto object = std::make_shared<ConfigStoreObject>(id);
  object->SetData(json);
  return object;
}

inline std::shared_ptr<FilterSpecObject> Filter(const ConfigStoreObjectId& id,
                                                const char* json = "{}") {
  auto filter = std::make_shared<FilterSpecObject>(id);
  filter->SetData(json);
  return filter;
}

}  // namespace Faults
