// The tool as a whole, from its start to its end.
#pragma once

#include <map>
#include <string>

namespace Benchmarks {

/// The instructions of each side, by its name; all that the processes do, the dynamic linker's part
/// included. Raises as CountInstructions.
std::map<std::string, double> CountWholeProcesses(const std::string& root);

}  // namespace Benchmarks
