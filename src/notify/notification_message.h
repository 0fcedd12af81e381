// What the management daemon is sent.
#pragma once

#include <string>
#include <sys/types.h>

namespace TarnConfigStore {

/// The HTTP/1.1 request that says that an object of a type was changed by a process. The daemon
/// compares texts: every byte of it is settled.
/// \param typeName  "COMPONENT.GROUP.KEY", put into the message as it stands
std::string MakeNotificationMessage(const std::string& typeName, pid_t process);

}  // namespace TarnConfigStore
