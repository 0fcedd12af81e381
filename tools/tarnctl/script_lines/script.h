// Writes that stand in a file, a line each, in the words of the command line.
#pragma once

#include "given/given_object.h"
#include "script_lines/line_faults.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tarnctl {

/// One line, worked out as far as it can be without writing.
struct ScriptLine {
  std::size_t number;
  std::string verb;
  TarnConfigStore::ConfigStoreObjectId id;
  Given given;
  PreparedWrite write;
};

/// Reads a script of lines "set OBJECT DATA", "update OBJECT DATA", "unset OBJECT MEMBER ..." and "delete
/// OBJECT", with those options of the verbs that are of one object. Files that lines name are read. What
/// is wrong with a line goes to the faults, and the line is left out.
std::vector<ScriptLine> ReadScript(const std::string& text, LineFaults& faults);

}  // namespace tarnctl
