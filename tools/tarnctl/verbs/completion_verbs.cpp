#include "tarnconfigstore/host.h"

#include "completion/candidates.h"
#include "failure.h"
#include "program.h"
#include "shell/shell_line.h"
#include "verbs/verbs.h"

#include <completion/shell_functions.h>

namespace tarnctl {
namespace {

constexpr const char* kShell = "SHELL";
constexpr const char* kLine = "LINE";
constexpr const char* kBreaks = "--breaks";

void PrintFunction(const Given& given, const Output& output) {
  for (const ShellFunction& function : kShellFunctions) {
    if (given.Text(kShell) == function.shell) {
      output.PrintText(function.text);
      return;
    }
  }
  throw ToolError(ExitCode::USAGE, "there is completion for bash, zsh and fish");
}

// bash replaces what stands behind the last of its breaks only, and takes what it gets as it is.
std::string AsBashWantsIt(const std::string& candidate, const std::string& typed,
                          const std::string& breaks) {
  std::size_t begin = 0;
  for (std::size_t i = 0; i < typed.size(); ++i) {
    if (breaks.find(typed[i]) != std::string::npos && typed[i] != ' ') {
      begin = i + 1;
    }
  }
  return QuoteForShell(std::string_view(candidate).substr(begin));
}

void PrintCandidates(const Given& given, const Output& output) {
  std::vector<std::string> words = SplitShellLine(given.Text(kLine));
  words.erase(words.begin());
  const Program program = MakeProgram();
  const Position position = FindPosition(program, words);
  if (const std::string& root = position.given.Text("--root"); !root.empty()) {
    TarnConfigStore::SetHostRoot(root);
  }
  const std::string typed = position.option + position.word;
  std::string text;
  for (const std::string& candidate : FindCandidates(program, position)) {
    text += given.Has(kBreaks) ? AsBashWantsIt(candidate, typed, given.Text(kBreaks)) : candidate;
    text += "\n";
  }
  output.PrintText(text);
}

}  // namespace

Verb CompletionVerb() {
  return {.name = "completion",
          .help = "Print what a shell needs to complete command lines of tarnctl",
          .arguments = {{.name = kShell, .help = "bash, zsh or fish", .isRequired = true}},
          .note = "In bash: source <(tarnctl completion bash)",
          .run = PrintFunction};
}

Verb CandidatesVerb() {
  return {.name = "candidates",
          .help = "Print what the last word of a line can become",
          .arguments = {{.name = kBreaks,
                         .help = "Characters at which bash begins a new word; quote for bash",
                         .valueName = "CHARACTERS"},
                        {.name = kLine,
                         .help = "The line up to the cursor, with the tool's name",
                         .isRequired = true}},
          .run = PrintCandidates,
          .isHidden = true};
}

}  // namespace tarnctl
