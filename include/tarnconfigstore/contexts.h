// Who writes, and what a read of desired configuration merges.
#pragma once

namespace TarnConfigStore {

/// The caller's statement of who writes. It decides which value of a row untagged data go to.
enum USERDATA_CONTEXT : int {
  EXTERNAL = 0,     ///< a person, or a tool on a person's behalf: the user value
  AUTO_CONFIG = 1,  ///< automatic configuration: the automatic value. Any other number, too
};

/// Which values of a row a read of desired configuration returns. See GetDesiredUserConfig.
enum FLAG : int {
  DESIRED_USER_ONLY = 0,              ///< the desired user value alone
  DESIRED_WITH_VITAL_AND_CACHED = 1,  ///< the vital and the cached value merged under it
};

}  // namespace TarnConfigStore
