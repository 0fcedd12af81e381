// Who writes, and which documents a read of pending configuration returns.
#pragma once

namespace TarnConfigStore {

/// The caller's statement of who writes: a person or a tool on a person's behalf (EXTERNAL), or
/// automatic configuration. What EXTERNAL writes goes to the user value of a row, what anything
/// else writes to the automatic value.
enum USERDATA_CONTEXT : int {
  EXTERNAL = 0,
  AUTO_CONFIG = 1,
};

/// Which documents a read of desired configuration merges.
enum FLAG : int {
  DESIRED_USER_ONLY = 0,
  DESIRED_WITH_VITAL_AND_CACHED = 1,
};

}  // namespace TarnConfigStore
