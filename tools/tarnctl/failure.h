// What went wrong, and how the tool says so.
#pragma once

#include "tarnconfigstore/error_codes.h"
#include "tarnconfigstore/exceptions.h"

#include "json_maker.h"

#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tarnctl {

class Output;

/// Scripts compare these: a number never changes its meaning.
enum class ExitCode : int {
  DONE = 0,
  FAILED = 1,
  USAGE = 2,
  NOT_FOUND = 3,
  INVALID = 4,
  CONFLICT = 5,  // not as expected: somebody was faster, or something differs
  PERMISSION = 6,
  BUSY = 7,
  CORRUPT = 8,
};

using Findings = std::vector<TarnConfigStore::ErrorInfo>;

struct Failure {
  ExitCode exitCode = ExitCode::FAILED;
  int code = TarnConfigStore::CS_GENERIC;
  std::string message;
  Findings details;
  bool isTold = false;       // by what stands on standard output: nothing more is to be reported
  bool hasNoReader = false;  // of standard output any more
};

/// A failure that the tool itself finds.
class ToolError : public std::exception {
 public:
  ToolError(ExitCode exitCode, std::string message, int code = TarnConfigStore::CS_GENERIC,
            Findings details = {})
      : failure_{exitCode, code, std::move(message), std::move(details)} {}
  explicit ToolError(Failure failure) : failure_(std::move(failure)) {}

  const char* what() const noexcept override { return failure_.message.c_str(); }
  const Failure& GetFailure() const { return failure_; }

 private:
  Failure failure_;
};

/// Describes the exception that is being handled. To be called in a catch block only; relies on the
/// last store error having been cleared before the operation.
Failure DescribeCurrentException();

/// Writes a failure that is not told yet to standard error: one JSON object, or lines for people.
void Report(const Failure& failure, bool asJson);

/// Writes a line for people to standard error, after the tool's name; control characters escaped.
void Say(const std::string& text);

/// As long as it lives, what is said is put as it puts it. One at a time.
class Wording {
 public:
  using Put = std::function<std::string(const std::string&)>;
  explicit Wording(Put put);
  ~Wording();
  Wording(const Wording&) = delete;
  Wording& operator=(const Wording&) = delete;
};

/// An array of {"field", "error"}.
Json::Value ListFindings(const Findings& findings, JsonMaker& make);

/// Prints findings as the data of a verb that was asked for them: a line each, or one array.
/// Raises ToolError INVALID, the exit code of the verb, when there are any.
void PrintFindings(const Findings& findings, const Output& output);

}  // namespace tarnctl
