#include "rehearsal/dry_run.h"

#include "tarnconfigstore/rehearsal.h"

#include "failure.h"
#include "rehearsal/scratch_directory.h"
#include "shown/change_text.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <unistd.h>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::HostDifference;
using TarnConfigStore::Rehearsal;

bool HasCheck(const Verb& verb) {
  return std::any_of(verb.arguments.begin(), verb.arguments.end(),
                     [](const Argument& argument) { return argument.name == kCheck; });
}

std::unique_ptr<const Rehearsal> Begin(const ScratchDirectory& directory) {
  try {
    return std::make_unique<const Rehearsal>(directory.Path());
  } catch (...) {
    Failure failure = DescribeCurrentException();
    if (const std::size_t at = failure.message.find(directory.Path()); at != std::string::npos) {
      const std::size_t end = failure.message.find(':', at);
      failure.message.replace(at, end == std::string::npos ? end : end - at, directory.Place());
    }
    failure.message = "no dry run is possible: " + failure.message;
    throw ToolError(std::move(failure));
  }
}

Failure InWordsOfHost(Failure failure, const Rehearsal& rehearsal) {
  failure.message = rehearsal.InWordsOfHost(std::move(failure.message));
  for (auto& finding : failure.details) {
    finding.error = rehearsal.InWordsOfHost(std::move(finding.error));
    finding.field = rehearsal.InWordsOfHost(std::move(finding.field));
  }
  return failure;
}

struct Rehearsed {
  std::string printed;  // by the verb
  std::optional<Failure> failure;
};

Rehearsed RunOn(const Rehearsal& copy, const Verb& verb, const Given& given, bool asData) {
  Rehearsed rehearsed;
  const Wording wording(
      [&copy](const std::string& said) { return "dry run: " + copy.InWordsOfHost(said); });
  try {
    verb.run(given, Output(asData ? Format::JSON : Format::PLAIN, &rehearsed.printed));
  } catch (...) {
    rehearsed.failure = InWordsOfHost(DescribeCurrentException(), copy);
  }
  rehearsed.printed = copy.InWordsOfHost(std::move(rehearsed.printed));
  return rehearsed;
}

void Print(const Rehearsed& rehearsed, const HostDifference& difference, const Output& output) {
  if (!output.AsData()) {
    const std::string lines = DescribeChanges(difference, Terminal::Of(STDOUT_FILENO));
    const bool saysNothing = lines.empty() && rehearsed.printed.empty();
    output.PrintText(rehearsed.printed + (saysNothing ? "nothing would change\n" : lines));
    Say("nothing was written: this was a dry run");
    return;
  }
  JsonMaker make;
  Json::Value report = Describe(difference, make);
  make.Add(report, "written", false);
  make.Add(report, "output",
           rehearsed.printed.empty() ? Json::Value() : make.Parse(rehearsed.printed));
  output.PrintLenient(report);
}

}  // namespace

void OfferDryRun(std::vector<Verb>& verbs) {
  for (Verb& verb : verbs) {
    OfferDryRun(verb.verbs);
    if (verb.writes) {
      verb.arguments.push_back(
          Flag(kDryRun,
               "Do it to a copy of the host, and show what would change; "
               "write nothing",
               HasCheck(verb) ? std::vector<std::string>{kCheck} : std::vector<std::string>()));
    }
  }
}

void RunDry(const Verb& verb, const Given& given, const Output& output) {
  const ScratchDirectory directory;
  const auto copy = Begin(directory);
  Rehearsed rehearsed = RunOn(*copy, verb, given, output.AsData());
  if (!rehearsed.failure) {
    if (const std::string why = copy->WhyNotWritable(); !why.empty()) {
      throw ToolError(ExitCode::PERMISSION, why);
    }
  }
  const HostDifference difference = copy->Difference();
  // What was refused as a whole leaves nothing to tell but that.
  if (!rehearsed.failure || !rehearsed.printed.empty() || !difference.IsEmpty()) {
    Print(rehearsed, difference, output);
  }
  if (rehearsed.failure) {
    throw ToolError(std::move(*rehearsed.failure));
  }
}

}  // namespace tarnctl
