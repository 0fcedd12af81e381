// Measuring in a process of its own: this program, started once more.
#pragma once

#include <string>
#include <sys/types.h>

namespace Benchmarks {

/// What a child measures. The first two in nanoseconds, the others in bytes.
enum class ChildTask : int {
  FIRST_GET_LIBRARY,
  FIRST_GET_FLOOR,
  HELD_MEMORY_LIBRARY,
  HELD_MEMORY_FLOOR,
  HELD_INSTANCES_LIBRARY,
  HELD_INSTANCES_FLOOR,
  PEAK_OF_KEEP_ONE_LIBRARY,
  PEAK_OF_KEEP_ONE_FLOOR,
  DAEMON_THAT_READS,    ///< serves until it is ended
  DAEMON_THAT_ACCEPTS,  ///< the same
  DAEMON_THAT_HANGS,    ///< the same
  WRITE_BESIDE_OTHERS,  ///< one write; in nanoseconds
  CONTEND,              ///< prints several figures
};

/// A child, and the end of the pipe that its standard output goes to.
struct Child {
  pid_t process;
  int output;
};

/// The path of this program, also while valgrind runs it.
std::string OwnProgram();

/// Starts a child; the caller closes the pipe and waits for it. Raises std::runtime_error.
Child StartChild(ChildTask task, const std::string& root);

/// Waits for a child's end; what it printed. Raises std::runtime_error when it failed.
std::string Collect(const Child& child);

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
double MeasurePeakOfLibrary();
double MeasurePeakOfFloor(const std::string& root);
double MeasureOneWrite();

}  // namespace Benchmarks
