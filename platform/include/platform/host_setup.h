// Making the host's stores for the first time. Nothing else ever makes one.
#pragma once

#include <string>
#include <vector>

namespace HostSetup {

struct Result {
  bool ok = true;
  std::string failure;                 ///< names the path and what is wrong with it, when not ok
  std::vector<std::string> created;    ///< what was made, in that order, by path or name
  std::vector<std::string> upgraded;   ///< stores whose tables were those of an older library
  std::vector<std::string> unchanged;  ///< stores that were there already, and are as they were
};

/// Makes the store and the schema store under the root, as far as they are missing, empty, and with
/// rights that let no other user write them. Tables that an older library made are brought to the
/// form that is made today, each store's at once or not at all, even if the process is killed; what
/// they hold stays. Everything else that exists is left as it is. After a failure what was made
/// stays, and another call goes on from there. Waits for nobody longer than a few times the wait
/// limit of the stores. Safe from several threads and processes.
Result Initialize();

}  // namespace HostSetup
