// Measuring in a process of its own: this program, started once more.
#pragma once

#include <string>

namespace Benchmarks {

/// What a child measures. The first two in nanoseconds, the others in bytes.
enum class ChildTask : int {
  FIRST_GET_LIBRARY,
  FIRST_GET_FLOOR,
  HELD_MEMORY_LIBRARY,
  HELD_MEMORY_FLOOR,
  HELD_INSTANCES_LIBRARY,
  HELD_INSTANCES_FLOOR,
};

/// Starts a child and returns the number it answers with. Raises std::runtime_error when it fails.
double MeasureInChild(ChildTask task, const std::string& root);

/// When this process is such a child: does its task, prints the number and returns true.
bool ServeAsChild(int argc, char** argv);

// The tasks themselves, on a host that is there already.
double MeasureFirstGetByLibrary();
double MeasureFirstGetByFloor(const std::string& root);
double MeasureMemoryOfLibrary();
double MeasureMemoryOfFloor(const std::string& root);
double MeasureInstancesOfLibrary();
double MeasureInstancesOfFloor(const std::string& root);

}  // namespace Benchmarks
