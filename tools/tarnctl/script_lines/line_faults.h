// What is wrong with the lines of a script: all of it is told at once.
#pragma once

#include "command_line.h"
#include "failure.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <utility>

namespace tarnctl {

class LineFaults {
 public:
  /// \param script  how the script is told of
  explicit LineFaults(std::string script) : script_(std::move(script)) {}

  /// Makes a step of a line, and takes down what it raises. What says nothing of the line itself (a store
  /// that is busy, damaged, not permitted) ends it all, and passes with the line before its message.
  /// \param given  what the line was read as, for advice; may be null
  void Try(std::size_t line, const Given* given, const std::function<void()>& step);

  /// Raises what was taken down, each finding with its line, under the exit code of the first line that
  /// has any; does nothing where none has.
  void Raise() const;

  /// "FILE:3".
  std::string PlaceOf(std::size_t line) const { return script_ + ":" + std::to_string(line); }

 private:
  std::string script_;
  std::map<std::size_t, Failure> failures_;  // the first one of each line
};

}  // namespace tarnctl
