// The whole of the tool, as data.
#pragma once

#include "command_line.h"

namespace tarnctl {

/// All verbs and options, from which the command line is read, and help, manual and completion are made.
Program MakeProgram();

}  // namespace tarnctl
