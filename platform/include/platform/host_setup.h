// Making the host's directories and databases for the first time.
#pragma once

#include <string>
#include <vector>

namespace HostSetup {

struct Result {
  bool ok = true;
  std::string failure;                 ///< names the path and what is wrong with it, when not ok
  std::vector<std::string> created;    ///< files and directories that were made, in that order
  std::vector<std::string> unchanged;  ///< databases that were there already
};

/// Makes what is missing under the root: directories 0755, databases 0640. What exists is left as
/// it is.
Result Initialize();

}  // namespace HostSetup
