// Processes that share the store: who gets how much of it.
#pragma once

#include <string>

namespace Benchmarks {

/// Two, four and eight processes each write an object of their own durably, again and again for a second; and
/// one process reads while another replaces all instances of a type again and again. Both by the
/// library and by the floor. Prints a line for each; false when a write or a read failed.
bool MeasureSharing(const std::string& root);

}  // namespace Benchmarks
