// Making the host's stores for the first time. Nothing else ever makes one.
#pragma once

#include <string>
#include <vector>

namespace HostSetup {

struct Result {
  bool ok = true;
  std::string failure;                 ///< names the path and what is wrong with it, when not ok
  std::vector<std::string> created;    ///< what was made, in that order, by path or name
  std::vector<std::string> unchanged;  ///< stores that were there already
};

/// Makes the store and the schema store under the root, as far as they are missing, empty, and with
/// rights that let no other user write them. What exists is left as it is. After a failure what was
/// made stays, and another call goes on from there. Safe from several threads and processes.
Result Initialize();

}  // namespace HostSetup
