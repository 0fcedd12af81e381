#include "store_access.h"

#include "failure.h"
#include "object_name.h"

namespace tarnctl {

std::shared_ptr<TarnConfigStore::ConfigStore> OpenStore() {
  return TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
}

void RequireStore() {
  OpenStore();
}

void RaiseNotStored(const TarnConfigStore::ConfigStoreObjectId& id) {
  throw ToolError(ExitCode::NOT_FOUND, "no object " + FormatObject(id) + " is stored");
}

void RaiseNoInstances(const TarnConfigStore::ConfigStoreObjectId& type,
                      const std::vector<std::string>& conditions) {
  throw ToolError(ExitCode::NOT_FOUND,
                  "no instance of " + FormatObject(type) +
                      (conditions.empty() ? " is stored" : " meets these conditions"));
}

}  // namespace tarnctl
