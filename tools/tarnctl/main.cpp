#include "tarnconfigstore/diagnostics.h"
#include "tarnconfigstore/host.h"

#include "advice/advice.h"
#include "advice/usage_advice.h"
#include "failure.h"
#include "program.h"
#include "rehearsal/dry_run.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <string_view>

namespace tarnctl {
namespace {

// A standard descriptor that came closed would be given to the next file or socket that is opened,
// and data printed into it. Opened the wrong way round, it fails whoever uses it.
void OccupyStandardDescriptors() {
  for (int descriptor = 0; descriptor <= 2; ++descriptor) {
    if (::fcntl(descriptor, F_GETFD) == -1) {
      ::open("/dev/null", descriptor == 0 ? O_WRONLY : O_RDONLY);
    }
  }
}

// Known before the arguments are understood, so that a usage error is JSON too.
bool AsksForJson(int argumentCount, char** arguments) {
  for (int i = 1; i < argumentCount && std::string_view(arguments[i]) != "--"; ++i) {
    if (std::string_view(arguments[i]) == "--json") {
      return true;
    }
  }
  return false;
}

void Prepare(const Given& options) {
  if (options.Has("--root")) {
    if (options.Text("--root").empty()) {  // an unset variable must not mean the real host
      throw ToolError(ExitCode::USAGE, "--root takes the name of a directory");
    }
    TarnConfigStore::SetHostRoot(options.Text("--root"));
  }
  if (const auto level = options.Number("--log")) {
    TarnConfigStore::SetLogLevel(static_cast<int>(*level));
    TarnConfigStore::SetLogSink(
        [](int priority, const char* line) { std::fprintf(stderr, "<%d> %s\n", priority, line); });
  }
}

Format FormatOf(const Given& options) {
  return options.Has("--json")   ? Format::JSON
         : options.Has("--yaml") ? Format::YAML
                                 : Format::PLAIN;
}

void ParseAndRun(int argumentCount, char** arguments) {
  const Program program = MakeProgram();
  if (argumentCount < 2) {
    std::fputs(BeginSession(program).c_str(), stderr);
    throw ToolError({ExitCode::USAGE, TarnConfigStore::CS_GENERIC, {}, {}, true});
  }
  const Call call = ParseCommandLine(program, argumentCount, arguments);
  if (call.verb == nullptr) {
    Output(Format::PLAIN).PrintText(call.text);
    return;
  }
  Prepare(call.options);
  TarnConfigStore::ClearLastStoreError();
  TarnConfigStore::ClearLastParseFailure();
  const Output output(FormatOf(call.options));
  try {
    const bool isDry = call.verb->writes && call.given.Has(kDryRun);
    (isDry ? RunDry(*call.verb, call.given, output) : call.verb->run(call.given, output));
  } catch (...) {
    Failure failure = DescribeCurrentException();
    failure.message.insert(0, Concerned(failure, call.given));
    failure.message += Advise(failure, call.given);
    failure.message = UnderRoot(std::move(failure.message), TarnConfigStore::GetHostRoot());
    throw ToolError(std::move(failure));
  }
}

// Whoever stops reading wants no more: the tool ends as others do, by the signal, and says nothing.
// Where that signal is ignored, it is a failure to write like any other.
void EndByClosedPipe(const Failure& failure, void (*before)(int)) {
  if (failure.hasNoReader && before != SIG_IGN) {
    std::signal(SIGPIPE, SIG_DFL);
    std::raise(SIGPIPE);
  }
}

ExitCode Run(int argumentCount, char** arguments) {
  // A closed pipe, or a limit of files' sizes, is a failure to write: what was begun is put away first.
  void (*const before)(int) = std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    ParseAndRun(argumentCount, arguments);
    return ExitCode::DONE;
  } catch (...) {
    const Failure failure = DescribeCurrentException();
    EndByClosedPipe(failure, before);
    Report(failure, AsksForJson(argumentCount, arguments));
    return failure.exitCode;
  }
}

}  // namespace
}  // namespace tarnctl

int main(int argumentCount, char** arguments) {
  tarnctl::OccupyStandardDescriptors();
  return static_cast<int>(tarnctl::Run(argumentCount, arguments));
}
