// How often this process asked the kernel to make a file durable.
#pragma once

#include <cstdint>

namespace Benchmarks {

/// Calls of fsync and fdatasync so far, SQLite's included.
std::uint64_t CountSyncs();

}  // namespace Benchmarks
