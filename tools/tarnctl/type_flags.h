// The flags of installed types.
#pragma once

#include <string>
#include <vector>

namespace tarnctl {

/// The names in a text that has blanks between them.
std::vector<std::string> SplitFlags(const std::string& flags);

}  // namespace tarnctl
