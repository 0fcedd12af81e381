// Many writers at once: who waits how long.
#pragma once

#include "child_process.h"

#include <string>

namespace Benchmarks {

/// Ten processes of two threads each update one object 3,000 times a thread, each update durable.
/// Prints how they shared the store; false when a write failed, when one took longer than ten times
/// the mean, or when a process got less than half of what the processes got on average.
bool MeasureContention(const std::string& root);

/// One write to the store; answers how many nanoseconds it took.
extern const ChildTask writeBesideOthers;

}  // namespace Benchmarks
