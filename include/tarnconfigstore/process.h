// Running a program and judging it by its exit status.
#pragma once

#include "tarnconfigstore/export.h"

namespace TarnConfigStore {

/// Runs a program and waits for it. The child inherits standard input, output and error, and the
/// environment; the program is named by path, PATH is not searched.
/// \param args  argument vector ended by a null pointer; the first element is the program's path
/// \return true when the exit byte of the wait status is 0, which a child ended by a signal also
/// has.
///         False, with a line logged at priority 0, when the program could not be started (code
///         1102), could not be waited for (1103) or exited with another status (1104). Never
///         throws.
/// Reentrant; blocks the calling thread until the child ends.
TARN_CONFIG_STORE_EXPORT bool ExecCommand(const char** args);

}  // namespace TarnConfigStore
