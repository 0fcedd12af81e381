// JSON text with a line for each member and element.
#pragma once

#include <string>
#include <string_view>

namespace Json {

/// Appends a JSON text, indented by two blanks a level: its first line goes on where `out` ends, the
/// others stand `level` levels in. Numbers and strings stay as they are written, blanks between them
/// go. The text has been parsed: nothing is checked here.
void AppendIndented(std::string_view text, unsigned level, std::string& out);

/// A line end, and the blanks of a level.
void AppendLine(unsigned level, std::string& out);

}  // namespace Json
