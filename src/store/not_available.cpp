#include "store/not_available.h"

#include "tarnconfigstore/apply_next_boot.h"
#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/kernel_options.h"
#include "tarnconfigstore/listing.h"

#include "errors/raise.h"

#include <string>

namespace TarnConfigStore {

void ThrowNotAvailable(const char* operation) {
  ThrowFailure(std::string(operation) + " is not available yet");
}

int GetBootInfo() {
  ThrowNotAvailable("GetBootInfo");
}
void SetBootStatus(const ConfigStoreObjectId&, bool) {
  ThrowNotAvailable("SetBootStatus");
}
void SetPartialBootStatus(std::shared_ptr<ConfigStoreObject>) {
  ThrowNotAvailable("SetPartialBootStatus");
}
std::shared_ptr<ConfigStoreObject> GetDesiredUserConfig(const ConfigStoreObjectId&, FLAG) {
  ThrowNotAvailable("GetDesiredUserConfig");
}
std::vector<std::shared_ptr<ConfigStoreObject>> GetDesiredUserConfigInstances(
    const ConfigStoreObjectId&, FLAG) {
  ThrowNotAvailable("GetDesiredUserConfigInstances");
}
std::string GetSchemaVersion(const ConfigStoreObjectId&) {
  ThrowNotAvailable("GetSchemaVersion");
}
std::shared_ptr<ConfigStoreObject> GetKernelOptions(const ConfigStoreObjectId&) {
  ThrowNotAvailable("GetKernelOptions");
}
void SetKernelOptions(std::shared_ptr<ConfigStoreObject>) {
  ThrowNotAvailable("SetKernelOptions");
}
std::vector<StagedChange> ListStaged(const ConfigStoreObjectId&) {
  ThrowNotAvailable("ListStaged");
}
ApplyResult ApplyNextBootConfig(const ApplyOptions&) {
  ThrowNotAvailable("ApplyNextBootConfig");
}

}  // namespace TarnConfigStore
