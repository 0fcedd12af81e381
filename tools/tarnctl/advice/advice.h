// What to do about a failure, where the library's words for it do not say.
#pragma once

#include "command_line.h"
#include "failure.h"

#include <string>

namespace tarnctl {

/// What to add to the message of a failure of a verb; empty where there is nothing. Raises nothing.
std::string Advise(const Failure& failure, const Given& given);

/// The object or type that a verb was about, before the message of a store that is busy or closed to
/// this user: whose words may be about a transaction alone.
std::string Concerned(const Failure& failure, const Given& given);

/// A message of the library's, which names the host's files as they are called on the host, with the
/// host's root before each of them.
std::string UnderRoot(std::string message, const std::string& root);

}  // namespace tarnctl
