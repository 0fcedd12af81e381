// Findings, as they are printed.
#pragma once

#include "failure.h"
#include "json_text.h"
#include "output.h"

#include <string>

namespace tarnctl {

/// "field: error".
std::string FormatFinding(const TarnConfigStore::ErrorInfo& finding);

/// An array of {"field", "error"}.
Json ListFindings(const Findings& findings);

/// Prints findings as the data of a verb that was asked for them: a line each, or one JSON array.
/// Raises ToolError INVALID, the exit code of the verb, when there are any.
void PrintFindings(const Findings& findings, const Output& output);

}  // namespace tarnctl
