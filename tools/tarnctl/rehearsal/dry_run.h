// Looking what a verb would write.
#pragma once

#include "command_line.h"

namespace tarnctl {

/// Gives every verb that writes the option kDryRun.
void OfferDryRun(std::vector<Verb>& verbs);

/// Runs a verb on a copy of the host, and prints what it changed there, after what the verb itself prints:
/// for people as lines, else as one object. Nothing is written to the host, nor locked, nor announced.
/// Raises what the verb raises, as ToolError and with the host's paths, and ToolError PERMISSION where
/// only the copy could be written.
void RunDry(const Verb& verb, const Given& given, const Output& output);

}  // namespace tarnctl
