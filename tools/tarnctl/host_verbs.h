// The verbs for the store as a whole: making it, and its key/value entries.
#pragma once

#include "output.h"

#include <string>

namespace tarnctl {

/// Makes what is missing of the directories and databases, and prints where they lie.
void InitializeHost(const Output& output);

/// Prints an entry; an entry that is absent reads as an empty text.
void GetEntry(const std::string& key, const Output& output);

void SetEntry(const std::string& key, const std::string& value);

}  // namespace tarnctl
