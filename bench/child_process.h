// Measuring in a process of its own: this program, started once more.
#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace Benchmarks {

/// Something that such a process does. A constant of a namespace, so that the started program has it, too, and
/// finds it by its name.
class ChildTask {
 public:
  /// On a host that is there already. What it returns is the process's answer.
  using Perform = double (*)(const std::string& root);

  ChildTask(const char* name, Perform perform);
  ChildTask(const ChildTask&) = delete;
  ChildTask& operator=(const ChildTask&) = delete;

  const char* Name() const { return name_; }
  /// Raises std::runtime_error where there is no such task.
  static double PerformByName(const std::string& name, const std::string& root);

 private:
  const char* name_;
  Perform perform_;
  const ChildTask* next_;
};

/// A child, and the end of the pipe that its standard output goes to.
struct Child {
  pid_t process;
  int output;
};

/// Runs a program, found as a shell finds it, to its end; what it prints is dropped.
/// \return what waitpid tells of it; nothing where it could not be started
std::optional<int> RunProgram(std::vector<std::string> words);

/// The path of this program, also while valgrind runs it.
std::string OwnProgram();

/// Starts a child; the caller closes the pipe and waits for it. Raises std::runtime_error.
Child StartChild(const ChildTask& task, const std::string& root);

/// Waits for a child's end; what it printed. Raises std::runtime_error when it failed.
std::string Collect(const Child& child);

/// Starts a child and returns the number it answers with. Raises std::runtime_error when it fails.
double MeasureInChild(const ChildTask& task, const std::string& root);

/// When this process is such a child: does its task, prints the number and returns true.
bool ServeAsChild(int argc, char** argv);

}  // namespace Benchmarks
