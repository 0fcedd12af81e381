// Values that must not stand among the arguments of a process.
#pragma once

#include <string>
#include <vector>

namespace tarnctl {

/// Asks for the value of each member. A terminal is asked for a line each, which it does not show;
/// whatever ends or stops the process meanwhile (SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP) leaves it
/// showing again. Any other standard input gives the value of one member as a whole, without the line
/// end at its end, and those of several as a line each.
/// \param members  how they are named to the user
/// \return as many values; raises ToolError USAGE when standard input gives none, or other than as
///         many, and as ReadInput does
std::vector<std::string> ReadSecrets(const std::vector<std::string>& members);

}  // namespace tarnctl
