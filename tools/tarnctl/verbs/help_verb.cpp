#include "failure.h"
#include "manual/manual_page.h"
#include "program.h"
#include "verbs/verbs.h"

namespace tarnctl {
namespace {

constexpr const char* kVerb = "VERB";
constexpr const char* kManual = "--man";

void PrintHelp(const Given& given, const Output& output) {
  const Program program = MakeProgram();
  if (given.Has(kManual)) {
    output.PrintText(MakeManualPage(program));
    return;
  }
  std::vector<std::string> words = given.Texts(kVerb);
  words.insert(words.begin(), program.name);
  words.emplace_back("--help");
  std::vector<char*> arguments;
  arguments.reserve(words.size());
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  output.PrintText(
      ParseCommandLine(program, static_cast<int>(arguments.size()), arguments.data()).text);
}

}  // namespace

Verb HelpVerb() {
  return {.name = "help",
          .help = "Print the help of the tool, or of a verb",
          .arguments = {{.name = kVerb, .help = "As typed: next-boot set", .takes = Takes::REST},
                        Flag(kManual, "All of it as a manual page, as man(1) takes it", {kVerb})},
          .run = PrintHelp};
}

}  // namespace tarnctl
