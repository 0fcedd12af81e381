// The command line.
#pragma once

namespace tarnctl {

/// Reads the arguments, runs the verb that they name and reports what failed. Returns the exit
/// code.
int Run(int argumentCount, char** arguments);

}  // namespace tarnctl
