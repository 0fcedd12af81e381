#include "platform/db_testing.h"
#include "platform/host_paths.h"

namespace DBStore::testing {

std::string StoreName() {
  return HostPaths::Resolve(HostPaths::kStore);
}

}  // namespace DBStore::testing
