#include "tarnconfigstore/compare_and_set.h"

#include "given/input_file.h"
#include "json/utf8.h"
#include "script_lines/script.h"
#include "store/stored_objects.h"
#include "verbs/option_names.h"
#include "verbs/verbs.h"

#include <set>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStore;
using TarnConfigStore::StoredState;

/// A line that was written.
struct WrittenLine {
  const ScriptLine& line;
  Notes notes;
  std::int32_t revision;
};

class Transaction {
 public:
  Transaction(ConfigStore& store, const std::string& path)
      : store_(store), faults_(NameOfInput(path)) {
    const std::string text = ReadInput(path);
    lines_ = ReadScript(text, faults_);
    if (lines_.empty()) {
      faults_.Raise();
      throw ToolError(ExitCode::INVALID, "nothing was written: " + NameOfInput(path) +
                                             " has no line that says what to write");
    }
  }

  void Write() {
    const auto states = ReadStates();
    const auto changed =
        TarnConfigStore::WriteIfUnchanged(store_, states, [this] { WriteLines(); });
    if (changed.empty()) {
      return;
    }
    faults_.Raise();  // trying again would meet the same
    Findings findings;
    for (const auto& id : changed) {
      findings.push_back({FormatObject(id), "was changed meanwhile"});
    }
    throw ToolError(ExitCode::CONFLICT, "nothing was written: somebody else was faster",
                    TarnConfigStore::CS_GENERIC, std::move(findings));
  }

  // Told once it is committed: until then nothing of it is so.
  void Tell(const Output& output) const {
    JsonMaker make;
    Json::Value done(rapidjson::kArrayType);
    std::string text;
    for (const auto& [line, notes, revision] : written_) {
      const std::string place = faults_.PlaceOf(line.number) + ": ";
      for (const std::string& note : notes) {
        Say(std::string(place).append(note));
      }
      const std::string object = FormatObject(line.id);
      text.append(Json::Utf8::WithoutControls(place)).append(line.verb).append(" ");
      text.append(Json::Utf8::WithoutControls(object)).append("\n");
      done.PushBack(
          make.Object("line", static_cast<int>(line.number), "verb", line.verb, "object", object,
                      "revision",
                      revision == TarnConfigStore::kDefaultRevision ? Json::Value()
                                                                    : Json::Value(revision)),
          make.GetAllocator());
    }
    if (output.AsData()) {
      output.PrintLenient(done);
    } else {
      output.PrintText(text);
    }
  }

 private:
  // From here on nobody else may change any of them, be it before this process may write.
  std::vector<StoredState> ReadStates() {
    std::vector<StoredState> states;
    std::set<std::string> objects;
    for (const ScriptLine& line : lines_) {
      if (objects.insert(FormatObject(line.id)).second) {
        faults_.Try(line.number, &line.given,
                    [&] { states.push_back(TarnConfigStore::GetState(store_, line.id)); });
      }
    }
    return states;
  }

  // Each line sees what those before it wrote. One that is refused has written nothing itself, and the
  // others are tried all the same: what is wrong with them is told, too.
  void WriteLines() {
    for (const ScriptLine& line : lines_) {
      faults_.Try(line.number, &line.given, [&] {
        Notes notes = line.write(store_);
        written_.push_back({line, std::move(notes), store_.GetRevision(line.id)});
      });
    }
    faults_.Raise();
  }

  ConfigStore& store_;
  LineFaults faults_;
  std::vector<ScriptLine> lines_;
  std::vector<WrittenLine> written_;
};

void RunTransaction(const Given& given, const Output& output) {
  const auto store = OpenStore();
  Transaction transaction(*store, given.Text(kFile));
  transaction.Write();
  transaction.Tell(output);
}

}  // namespace

Verb TransactionVerb() {
  return {
      .name = "transaction",
      .help = "Write several objects as one: all lines of a file, or nothing",
      .arguments = {{.name = kFile,
                     .help = "Lines of the verbs set, update, unset and delete, with an OBJECT and "
                             "what else they take; - for standard input",
                     .isRequired = true}},
      .note =
          "Words are quoted as for a shell, # begins a comment; what a shell would expand or "
          "redirect is refused. Each line sees what those before it wrote. All that is wrong "
          "is told, with its line. Where somebody else changes one of the objects meanwhile, "
          "nothing is written (exit code 5).",
      .run = RunTransaction,
      .writes = true};
}

}  // namespace tarnctl
