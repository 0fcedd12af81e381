// Files that the user names.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnctl {

/// The largest text that is read.
inline constexpr std::size_t kMaxInputSize = std::size_t{256} << 20U;

/// The content of a file, or of standard input for "-". Raises ToolError FAILED when it cannot be
/// read, and INVALID when it is larger than `largest`, which a file is asked before it is read.
std::string ReadInput(const std::string& path, std::size_t largest = kMaxInputSize);

/// True for a file whose name says that it is YAML; others are JSON.
bool IsYamlFile(std::string_view path);

}  // namespace tarnctl
