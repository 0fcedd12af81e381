// A line from a terminal that does not show it.
#pragma once

#include <string>

namespace tarnctl {

/// Asks on standard error, and reads a line without its end. A signal that ends or stops the process
/// takes effect as it would otherwise, but after the terminal shows again what is typed; one that
/// stopped it is followed by the question once more. For the main thread.
/// \param name  what is asked for
/// \return the line; raises ToolError FAILED at the end of the input, or where the terminal fails
std::string ReadHiddenLine(int terminal, const std::string& name);

}  // namespace tarnctl
