// Where a command line that is being typed has come to.
#pragma once

#include "command_line.h"

#include <string>
#include <string_view>
#include <vector>

namespace tarnctl {

struct Position {
  /// The verbs that can follow; empty behind a verb that runs.
  const std::vector<Verb>* verbs = nullptr;
  const Verb* verb = nullptr;  ///< the one that was named, as far as one was
  /// What the last word is, or is the value of; nothing where it can be a verb or an option only.
  const Argument* argument = nullptr;
  std::string option;  ///< "--option=" that the last word began with
  std::string word;    ///< what there is of the last word, behind that
  Given given;         ///< what the verb's and the program's arguments have been given so far
};

/// \param words  of the line, without the tool's own name; the last is the one being typed
Position FindPosition(const Program& program, const std::vector<std::string>& words);

/// All options that a verb takes at a position, its own and the program's.
std::vector<const Argument*> OptionsAt(const Program& program, const Position& position);

}  // namespace tarnctl
