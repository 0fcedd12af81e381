// The types whose changes the management daemon asked to be told of.
#pragma once

#include <string>
#include <unordered_set>

namespace TarnConfigStore {

/// "COMPONENT.GROUP.KEY" for a type, "COMPONENT.GROUP.*" for every type of a group.
using NotifyAllowlist = std::unordered_set<std::string>;

/// Reads the file that the host ships: a JSON array of texts. Raises ConfigStoreException 2000
/// "Notification allowlist PATH missing.", InvalidArgumentException 1081 when it cannot be read or
/// is not JSON, and ConfigStoreException 1082 when it is anything but an array of texts.
NotifyAllowlist ReadNotifyAllowlist();

/// The process's allowlist: read by the first call that succeeds, while others wait, and kept until
/// the process is gone. Raises what ReadNotifyAllowlist raises; the next call then tries again.
/// Thread-safe, in the child of a fork too, and while the process exits.
const NotifyAllowlist& GetNotifyAllowlist();

}  // namespace TarnConfigStore
