// The process in which instructions are counted.
#pragma once

#include <string>

namespace Benchmarks {

/// Counts what the arguments have chosen, on a host that is there already. 0 when all of it could
/// be counted.
int ServeAsCounter(const std::string& root);

}  // namespace Benchmarks
