// Telling the management daemon of changes.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "platform/db_store.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// Announces a change of an object to the management daemon, when notification is switched on and
/// the object's type or group is on the allowlist. While it is switched off this costs the reading
/// of one key/value entry. A daemon that hangs holds the caller up for 100 ms at most.
/// Never throws, and no failure of it ever reaches the caller: an allowlist that cannot be read is
/// logged at priority 1, a daemon that cannot be reached at priority 2. Thread-safe.
/// \param connection  the store's, on which the switch is read
void NotifyIfAllowlisted(const ConfigStoreObjectId& id,
                         const DBStore::ConnectionHandle& connection) noexcept;
/// The same for callers that hold no connection.
void NotifyIfAllowlisted(const ConfigStoreObjectId& id) noexcept;
/// The same for several objects, one after the other; the switch is read once.
void NotifyIfAllowlisted(const std::vector<ConfigStoreObjectId>& ids,
                         const DBStore::ConnectionHandle& connection) noexcept;

/// As long as one lives, the process announces nothing: for changes that are no host's.
class NotificationSilence {
 public:
  NotificationSilence() noexcept;
  ~NotificationSilence();
  NotificationSilence(const NotificationSilence&) = delete;
  NotificationSilence& operator=(const NotificationSilence&) = delete;
};

/// Whether an announcement would find somebody who listens: connects as one does, with the time that it
/// has, and sends nothing. Empty, or why it would not.
std::string WhyNobodyListens();

/// True exactly when the entry "NOTIFY_KEELD" holds "true"; an entry that cannot be read counts as
/// off.
bool IsKeeldNotificationEnabled(const DBStore::ConnectionHandle& connection);
/// The same for callers that hold no connection.
bool IsKeeldNotificationEnabled();

}  // namespace TarnConfigStore
