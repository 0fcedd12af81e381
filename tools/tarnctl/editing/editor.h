// The user's editor, and questions to who sits at the terminal.
#pragma once

#include <string>

namespace tarnctl {

/// Opens a file in the editor that VISUAL or, where that is unset or empty, EDITOR names, as a shell takes
/// the text; else in vi. Returns once it ends. What is typed to interrupt is for the editor meanwhile.
/// Raises ToolError FAILED where it cannot be started, or ends with another status than 0.
void RunEditor(const std::string& path);

/// Somebody sits at a terminal, and can be asked.
bool IsAttended();
/// Asks a question that a line feed answers with yes, and the end of the input with no.
bool Confirms(const std::string& question);

}  // namespace tarnctl
