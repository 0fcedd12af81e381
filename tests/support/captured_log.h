// The log lines of a test.
#pragma once

#include "platform/logger.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// Takes the log for as long as it lives, at every priority.
class CapturedLog {
 public:
  CapturedLog() {
    CSLogger::SetLevel(4);
    CSLogger::SetSink([this](int priority, const char* line) {
      lines_.push_back(std::to_string(priority) + " " + line);
    });
  }
  ~CapturedLog() {
    CSLogger::SetSink(nullptr);
    CSLogger::SetLevel(2);
  }
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  /// How many lines are exactly "PRIORITY TEXT".
  long Count(const std::string& line) const {
    return std::count(lines_.begin(), lines_.end(), line);
  }
  const std::vector<std::string>& Lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
};

}  // namespace TestSupport
