#include "script_lines/script.h"

#include "given/part_name.h"
#include "shell/shell_text.h"
#include "verbs/option_names.h"
#include "writes/if_revision.h"
#include "writes/layers.h"
#include "writes/object_writes.h"

#include <optional>
#include <utility>

namespace tarnctl {
namespace {

using Prepare = std::function<PreparedWrite(const Given&)>;

ObjectData DataOfLine(const Given& given) {
  ObjectData data = DataOf(given);
  data.areSeen = false;
  if (IsFile(data.data) && data.data.front() == "-") {
    throw ToolError(ExitCode::USAGE, "a line cannot take its data from standard input");
  }
  return data;
}

// The verbs as a line takes them: nothing that asks for more than the line and the files it names, and
// nothing that is of many objects.
class LineVerbs {
 public:
  LineVerbs() {
    const Argument data = DataArgument();
    Add({.name = "set", .help = {}, .arguments = {data}, .choice = LayerChoice()},
        [](const Given& given) { return PrepareSet(given, DataOfLine(given)); });
    Add({.name = "update",
         .help = {},
         .arguments = {data, Flag(kAutomatic, "On behalf of automatic configuration")}},
        [](const Given& given) { return PrepareUpdate(given, DataOfLine(given)); });
    Add({.name = "unset",
         .help = {},
         .arguments = {{.name = kMember, .takes = Takes::TEXTS, .isRequired = true},
                       PartArgument("Take them out of this part alone")}},
        PrepareUnset);
    Add({.name = "delete", .help = {}}, PrepareDelete);
  }
  LineVerbs(const LineVerbs&) = delete;
  LineVerbs& operator=(const LineVerbs&) = delete;

  /// Raises ToolError USAGE.
  ScriptLine Read(const ShellCommand& command) const {
    if (!command.fault.empty()) {
      throw ToolError(ExitCode::USAGE, command.fault);
    }
    std::vector<std::string> words = command.words;
    std::vector<char*> arguments = {const_cast<char*>("")};
    for (std::string& word : words) {
      arguments.push_back(word.data());
    }
    Call call = ParseCommandLine(program_, static_cast<int>(arguments.size()), arguments.data());
    if (call.verb == nullptr) {
      throw ToolError(ExitCode::USAGE, "a line says what is to be written, and asks for no help");
    }
    ScriptLine line{command.line,
                    call.verb->name,
                    ParseObject(call.given.Text(kObject)),
                    std::move(call.given),
                    {}};
    return line;
  }

  PreparedWrite PrepareLine(const ScriptLine& line) const {
    return prepare_.at(line.verb)(line.given);
  }

 private:
  void Add(Verb verb, Prepare prepare) {
    verb.arguments.insert(verb.arguments.begin(), ObjectArgument());
    verb.arguments.push_back(IfRevisionArgument());
    verb.run = [](const Given&, const Output&) {};
    prepare_[verb.name] = std::move(prepare);
    program_.verbs.push_back(std::move(verb));
  }

  Program program_;
  std::map<std::string, Prepare> prepare_;
};

}  // namespace

std::vector<ScriptLine> ReadScript(const std::string& text, LineFaults& faults) {
  const LineVerbs verbs;
  std::vector<ScriptLine> lines;
  for (const ShellCommand& command : ReadShellCommands(text)) {
    std::optional<ScriptLine> line;
    faults.Try(command.line, nullptr, [&] { line = verbs.Read(command); });
    if (line) {
      faults.Try(command.line, &line->given, [&] {
        line->write = verbs.PrepareLine(*line);
        lines.push_back(std::move(*line));
      });
    }
  }
  return lines;
}

}  // namespace tarnctl
