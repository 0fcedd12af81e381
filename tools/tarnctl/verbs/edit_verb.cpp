#include "editing/editor.h"
#include "editing/private_file.h"
#include "editing/remarks.h"
#include "editing/user_part.h"
#include "json/print.h"
#include "verbs/verbs.h"
#include "yaml/yaml_writer.h"

#include <algorithm>

namespace tarnctl {
namespace {

class Editing {
 public:
  Editing(const TarnConfigStore::ConfigStoreObjectId& id, bool reveals, bool asJson)
      : id_(id),
        part_(id, reveals),
        asJson_(asJson),
        offered_(TextOf(part_.Data())),
        file_(id.key + (asJson ? ".json" : ".yaml")) {}

  void Run() {
    std::vector<Remark> remarks = {
        {0, "What the user set of " + FormatObject(id_) + ". Other parts stay as they are;"},
        {0, "\"tarnctl explain\" shows them. An empty text, or the same, writes nothing."}};
    for (std::string text = offered_;;) {
      text = Edit(text, remarks);
      if (text == offered_ || IsBlank(text)) {
        Say("nothing was written: the text is " +
            std::string(text == offered_ ? "as it was" : "empty"));
        return;
      }
      if (Write(remarks)) {
        return;
      }
    }
  }

 private:
  std::string TextOf(const Json::Value& value) const {
    std::string text;
    const bool isWritten =
        asJson_ ? Json::Print(value, Json::Layout::INDENTED, Json::BadText::REFUSED, text)
                : WriteYaml(value, text);
    if (!isWritten) {
      throw ToolError(ExitCode::FAILED, "cannot print what is not UTF-8");
    }
    return text + (asJson_ ? "\n" : "");
  }

  static bool IsBlank(const std::string& text) {
    return text.find_first_not_of(" \t\r\n") == std::string::npos;
  }

  // What comes back is in the file, too, without remarks.
  std::string Edit(const std::string& text, const std::vector<Remark>& remarks) {
    RemarkedText remarked;
    file_.Write(remarked.With(text, remarks));
    try {
      RunEditor(file_.Path());
    } catch (const ToolError& error) {
      const std::string left = remarked.Without(file_.Read());
      if (left == offered_ || IsBlank(left)) {
        throw;
      }
      file_.Write(left);
      RaiseKept(error.GetFailure());
    }
    std::string edited = remarked.Without(file_.Read());
    file_.Write(edited);
    return edited;
  }

  // Answers whether it is done; if not, the remarks say why.
  bool Write(std::vector<Remark>& remarks) {
    GivenData given;
    try {
      given = GivenData::Read(file_.Path(), PlaceOfData(part_.Schema().Root()), YamlNull::OF_TYPE,
                              Wanted::OBJECT);
      JsonMaker make;
      if (!part_.Write(make.Parse(given.Text()))) {
        Say("nothing was written: " + FormatObject(id_) + " is that already");
      }
      return true;
    } catch (...) {
      Failure failure = DescribeCurrentException();
      if (failure.exitCode != ExitCode::INVALID) {
        RaiseKept(std::move(failure));
      }
      remarks = RemarksOf(failure, given);
      failure.details = given.WithLines(std::move(failure.details));
      if (!IsAttended()) {
        RaiseKept(std::move(failure));
      }
      Report(failure, false);
      if (!Confirms("edit again?")) {
        failure.details.clear();
        RaiseKept(std::move(failure));
      }
      return false;
    }
  }

  static std::vector<Remark> RemarksOf(const Failure& failure, const GivenData& given) {
    std::vector<Remark> remarks;
    for (const auto& [field, error] : failure.details) {
      remarks.push_back({given.LineOf(field), std::string(field).append(": ").append(error)});
    }
    if (remarks.empty()) {
      remarks.push_back({0, failure.message});
    }
    return remarks;
  }

  [[noreturn]] void RaiseKept(Failure failure) {
    file_.Keep();
    failure.message += "; the text is kept in " + file_.Path();
    throw ToolError(std::move(failure));
  }

  const TarnConfigStore::ConfigStoreObjectId id_;
  const UserPart part_;
  const bool asJson_;
  const std::string offered_;
  PrivateFile file_;
};

}  // namespace

Verb EditVerb() {
  return {
      .name = "edit",
      .help = "Change what the user set of an object, in an editor",
      .arguments = {ObjectArgument(), RevealArgument()},
      .note =
          "The editor is $VISUAL or $EDITOR, the text YAML, or JSON with --json. What is refused "
          "is told in the text, to be tried again. Where somebody else changes the object "
          "meanwhile, nothing is written (exit code 5), and the text is kept. Masked secrets "
          "stay as they are.",
      .run =
          [](const Given& given, const Output& output) {
            Editing(ParseObject(given.Text(kObject)), Reveals(given), output.AsJson()).Run();
          },
      .writes = true};
}

}  // namespace tarnctl
