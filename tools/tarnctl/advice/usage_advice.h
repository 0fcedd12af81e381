// What was meant by a command line that cannot be understood.
#pragma once

#include "command_line.h"

#include <string>
#include <vector>

namespace tarnctl {

/// Names the verb or option that there is not, and the one that is nearest to it; empty where all verbs
/// and options are known.
/// \param words  without the tool's own name
std::string ExplainUnknown(const Program& program, const std::vector<std::string>& words);

/// How a session begins, for who typed nothing but the tool's name.
std::string BeginSession(const Program& program);

}  // namespace tarnctl
