// The verbs for the kernel's boot options.
#pragma once

#include "output.h"

#include <string>
#include <vector>

namespace tarnctl {

/// Prints the options that the next boot gets, or one of their members when `member` is not empty.
/// ToolError NOT_FOUND when none are stored, or there is no such member.
void GetKernelOptions(const std::string& member, const Output& output);

/// Replaces the options that the next boot gets by what one file ("-" for standard input) or
/// MEMBER=VALUE arguments give. Raises as WriteObject does.
void SetKernelOptions(const std::vector<std::string>& data);

}  // namespace tarnctl
