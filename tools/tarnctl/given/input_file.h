// Files that the user names.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnctl {

/// The largest text that is read.
inline constexpr std::size_t kMaxInputSize = std::size_t{256} << 20U;

/// The content of a regular file, which nobody has to be waited for, or of standard input for "-".
/// Raises ToolError FAILED when it cannot be read, and INVALID when it is larger than `largest`.
std::string ReadInput(const std::string& path, std::size_t largest = kMaxInputSize);

/// How a path that ReadInput takes is told of.
std::string NameOfInput(const std::string& path);

/// True for a file whose name says that it is YAML; others are JSON.
bool IsYamlFile(std::string_view path);

}  // namespace tarnctl
