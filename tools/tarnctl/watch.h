// The verb that prints notifications as they arrive.
#pragma once

#include "output.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tarnctl {

/// Where the library announces changes, in the working directory.
inline constexpr const char* kNotificationSocket = "kslLocalSocketKeeldNotifyWisp";

/// Listens in the management daemon's place and prints each notification as one line of JSON:
/// {"time":...,"object":...,"pid":...}. Ends after `count` of them, at SIGINT, SIGTERM or SIGHUP, or
/// when nobody reads the output any more; the socket's file is removed then. What is no
/// notification gets a line on standard error and changes nothing else. Raises ToolError.
void WatchNotifications(const std::string& socketPath, std::optional<std::uint64_t> count,
                        const Output& output);

}  // namespace tarnctl
