// The verbs for configuration types.
#pragma once

#include "output.h"

#include <string>
#include <vector>

namespace tarnctl {

/// Installs the types of files and of directories of them, or only checks whether they could be
/// installed, and prints what became of each. ToolError INVALID, with every finding, when one of
/// them is bad or, unless that is forced, stored objects no longer fit: nothing is installed then.
void InstallTypes(const std::vector<std::string>& paths, bool checkOnly, bool force,
                  const Output& output);

/// The same check without a store. What is wrong is the data of this verb: it prints the findings,
/// and raises ToolError INVALID when there are any.
void CheckTypes(const std::vector<std::string>& paths, const Output& output);

void ListTypes(const Output& output);

/// Prints the type file.
void ShowType(const std::string& type, const Output& output);

void RemoveType(const std::string& type, bool force);

}  // namespace tarnctl
