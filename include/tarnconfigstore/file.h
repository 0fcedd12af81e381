// Asking whether a file is there.
#pragma once

#include "tarnconfigstore/export.h"

#include <string>

namespace TarnConfigStore {

/// Asks stat(2) for a path. Logs nothing and throws nothing. Reentrant.
/// \return true when it succeeds, for files of any kind, directories included; false for a symbolic
///         link that leads nowhere
TARN_CONFIG_STORE_EXPORT bool FileExists(const std::string& path);

}  // namespace TarnConfigStore
