// Running a program.
#pragma once

#include "tarnconfigstore/export.h"

namespace TarnConfigStore {

/// Runs a program and waits for its end.
///
/// The child inherits standard input, output and error, no other descriptor, and the environment.
/// Blocks the calling thread until the child ends. Throws nothing. Reentrant.
/// \param args  the argument vector, ended by a null pointer; the first element is the program's
///              path. PATH is not searched
/// \return true when the exit byte of the wait status is 0; a child that a signal ended has 0
///         there, too. False, and one line in the log at priority 0, when the program could not be
///         started (code 1102), could not be waited for (1103), or exited with another status
///         (1104)
TARN_CONFIG_STORE_EXPORT bool ExecCommand(const char** args);

}  // namespace TarnConfigStore
