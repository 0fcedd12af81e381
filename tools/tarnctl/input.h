// Files that the user names as input.
#pragma once

#include <string>

namespace tarnctl {

/// The whole of a file, or of standard input for "-". Raises ToolError FAILED when it cannot be
/// read.
std::string ReadInput(const std::string& path);

}  // namespace tarnctl
