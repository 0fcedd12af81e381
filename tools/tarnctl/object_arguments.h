// The command line of the verbs for configuration objects.
#pragma once

#include "verb_arguments.h"

namespace tarnctl {

void AddObjectVerbs(CLI::App& app, Arguments& a);

}  // namespace tarnctl
