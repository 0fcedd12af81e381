#include "notify/notification.h"

namespace TarnConfigStore {

void NotifyIfAllowlisted(const ConfigStoreObjectId& /*id*/,
                         const DBStore::ConnectionHandle& /*connection*/) noexcept {}

}  // namespace TarnConfigStore
