// The command line of the verbs for the next boot, the boot itself and the kernel's options.
#pragma once

#include "verb_arguments.h"

namespace tarnctl {

void AddNextBootVerbs(CLI::App& app, Arguments& a);
void AddBootVerbs(CLI::App& app, Arguments& a);
void AddKernelOptionVerbs(CLI::App& app, Arguments& a);

}  // namespace tarnctl
