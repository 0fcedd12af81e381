#include "type_flags.h"

#include <sstream>

namespace tarnctl {

std::vector<std::string> SplitFlags(const std::string& flags) {
  std::vector<std::string> names;
  std::istringstream words(flags);
  for (std::string name; words >> name;) {
    names.push_back(name);
  }
  return names;
}

}  // namespace tarnctl
