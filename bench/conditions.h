// What has to hold whatever the machine is doing: nothing is opened, prepared or compiled
// twice, and both roads sync as often.
#pragma once

#include "roads.h"

#include <string>

namespace Benchmarks {

/// Checks and prints a line for each; false when one does not hold.
bool CheckConditions(Roads& roads, const std::string& root);

}  // namespace Benchmarks
