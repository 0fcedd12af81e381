// The type that was meant where the one that was named is not installed.
#pragma once

#include "command_line.h"

#include <string>

namespace tarnctl {

/// " Did you mean COMPONENT/GROUP/KEY?" of the installed type whose name is nearest to that of the
/// call's OBJECT or TYPE; empty where none is near, or the types cannot be read. Raises nothing.
std::string SuggestType(const Given& given);

}  // namespace tarnctl
