// JSON text with a line for each member and element.
#pragma once

#include "json/json.h"

#include <string>
#include <string_view>

namespace Json {

/// Appends a JSON text, indented by two blanks a level: its first line goes on where `out` ends, the
/// others stand `level` levels in. Numbers and strings stay as they are written, blanks between them
/// go. The text has been parsed: nothing is checked here.
void AppendIndented(std::string_view text, unsigned level, std::string& out);

/// The member by which an object names itself.
struct OwnName {
  std::string_view member;
  std::string_view text;  ///< empty for an object that need not name itself
};

/// The same in one go with looking at the text: for an object that names itself so, in a text that is
/// all that Parse asks of a STORED one.
/// \param level  at most 16
/// \return false where it is not; what was appended by then is of no use
bool AppendIndentedIfSound(std::string_view text, const OwnName& name, unsigned level, Buffer& out);

/// A line end, and the blanks of a level.
void AppendLine(unsigned level, std::string& out);

}  // namespace Json
