#include "tarnconfigstore/host.h"

#include "platform/host_paths.h"
#include "platform/host_setup.h"

#include "errors/raise.h"

namespace TarnConfigStore {

void SetHostRoot(const std::string& root) {
  HostPaths::SetRoot(root);
}

std::string GetHostRoot() {
  return HostPaths::GetRoot();
}

HostInitialization InitializeHost() {
  HostSetup::Result result = HostSetup::Initialize();
  if (!result.ok) {
    ThrowFailure(result.failure);
  }
  return {HostPaths::Resolve(HostPaths::kStore), HostPaths::Resolve(HostPaths::kSchemaStore),
          std::move(result.created), std::move(result.unchanged), std::move(result.upgraded)};
}

}  // namespace TarnConfigStore
