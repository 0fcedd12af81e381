// Being asked to end.
#pragma once

namespace tarnctl {

/// From the first call on, SIGINT, SIGTERM and SIGHUP no longer end the process, unless they were
/// ignored: they make the descriptor that is returned readable, for good. Raises ToolError.
int CatchStopSignals();

}  // namespace tarnctl
