#include "script_lines/line_faults.h"

#include "advice/advice.h"

#include <utility>

namespace tarnctl {
namespace {

bool IsOfTheLine(const Failure& failure) {
  switch (failure.exitCode) {
    case ExitCode::USAGE:
    case ExitCode::NOT_FOUND:
    case ExitCode::INVALID:
    case ExitCode::CONFLICT:
      return true;
    case ExitCode::DONE:
    case ExitCode::FAILED:
    case ExitCode::PERMISSION:
    case ExitCode::BUSY:
    case ExitCode::CORRUPT:
      break;
  }
  return failure.code == TarnConfigStore::CS_JSON_FILE_FAILED;  // the file that the line names
}

}  // namespace

void LineFaults::Try(std::size_t line, const Given* given, const std::function<void()>& step) {
  try {
    step();
  } catch (...) {
    Failure failure = DescribeCurrentException();
    if (given != nullptr) {
      failure.message += Advise(failure, *given);
    }
    if (!IsOfTheLine(failure)) {
      failure.message.insert(0, PlaceOf(line) + ": ");
      throw ToolError(std::move(failure));
    }
    failures_.emplace(line, std::move(failure));
  }
}

void LineFaults::Raise() const {
  if (failures_.empty()) {
    return;
  }
  Failure all = failures_.begin()->second;
  all.code = TarnConfigStore::CS_GENERIC;
  all.message = "nothing was written: " + std::to_string(failures_.size()) +
                (failures_.size() == 1 ? " line is refused" : " lines are refused");
  all.details.clear();
  for (const auto& [line, failure] : failures_) {
    const std::string place = PlaceOf(line);
    if (failure.details.empty()) {
      all.details.push_back({place, failure.message});
    }
    for (const auto& [field, error] : failure.details) {
      all.details.push_back({place, std::string(field).append(": ").append(error)});
    }
  }
  throw ToolError(std::move(all));
}

}  // namespace tarnctl
