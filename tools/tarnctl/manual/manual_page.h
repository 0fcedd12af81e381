// The tool's manual page.
#pragma once

#include "command_line.h"

#include <string>

namespace tarnctl {

/// tarnctl(1) in the macros of man(7): all verbs with all that they take, as --help has them.
std::string MakeManualPage(const Program& program);

}  // namespace tarnctl
