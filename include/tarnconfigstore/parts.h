// The parts that the store keeps of an object.
#pragma once

#include "tarnconfigstore/export.h"

namespace TarnConfigStore {

/// A part of an object. Reading puts all but the last together: the automatic part, over it the
/// cached, the vital and the user's.
enum class ConfigPart : int {
  USER = 0,       ///< what the user set
  AUTOMATIC = 1,  ///< what automatic configuration set
  VITAL = 2,      ///< what the system must keep
  CACHED = 3,     ///< what the system remembers
  PENDING = 4,    ///< what becomes the user's part at the next boot
};

/// \return "user", "automatic", "vital", "cached" or "pending"
TARN_CONFIG_STORE_EXPORT const char* NameOf(ConfigPart part) noexcept;

}  // namespace TarnConfigStore
