// Asking whether a file is there.
#pragma once

#include "tarnconfigstore/export.h"

#include <string>

namespace TarnConfigStore {

/// True exactly when stat(2) on the path succeeds: any kind of file, directories included; a
/// symbolic link that leads nowhere counts as absent. Never logs. Reentrant.
TARN_CONFIG_STORE_EXPORT bool FileExists(const std::string& path);

}  // namespace TarnConfigStore
