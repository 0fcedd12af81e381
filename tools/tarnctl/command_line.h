// The command line as data: what verbs there are, and what each of them takes.
#pragma once

#include "shown/output.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnctl {

/// Whole numbers that an argument may be; its value has to be one of them.
struct NumberRange {
  std::uint64_t smallest = 0;
  std::uint64_t largest = 0;
};

/// What follows the name of an option, or stands for a positional argument.
enum class Takes {
  NOTHING,
  ONE_TEXT,
  TEXTS,  ///< one each time, for an option that may be repeated
  REST    ///< what follows, up to the next option
};

struct Argument {
  std::string name;  ///< "--all" for an option, "OBJECT" for a positional argument
  std::string help = {};
  Takes takes = Takes::ONE_TEXT;
  bool isRequired = false;
  std::string valueName = {};  ///< of an option that takes something
  std::optional<NumberRange> range = {};
  std::vector<std::string> excludes = {};  ///< options named before
  std::vector<std::string> aliases = {};   ///< other names of the same option
};

/// An option that takes nothing.
Argument Flag(std::string name, std::string help, std::vector<std::string> excludes = {});

/// The option with which a verb that writes says what it would do, in a way of its own.
inline constexpr const char* kCheck = "--check";
/// The option with which any verb that writes is run on a copy of the host (rehearsal/dry_run.h).
inline constexpr const char* kDryRun = "--dry-run";
Argument CheckArgument(std::string help);

/// Arguments of which at most one may be given.
struct Choice {
  std::string name;
  std::string help = {};
  bool isRequired = false;
  std::vector<Argument> arguments = {};
};

/// What was given for some arguments, by their names. Asking for another name is a mistake in the
/// tool, and raises std::logic_error.
class Given {
 public:
  /// True for an option that was given.
  bool Has(std::string_view name) const { return !Texts(name).empty(); }
  /// Empty for what was not given.
  const std::string& Text(std::string_view name) const;
  const std::vector<std::string>& Texts(std::string_view name) const;
  /// Whether the verb takes such an argument at all.
  bool Takes(std::string_view name) const { return values_.find(name) != values_.end(); }
  /// Of an argument with a range.
  std::optional<std::uint64_t> Number(std::string_view name) const;

  void Add(const std::string& name, std::vector<std::string> texts) {
    values_[name] = std::move(texts);
  }

 private:
  std::map<std::string, std::vector<std::string>, std::less<>> values_;
};

/// A verb, or a word that only stands before other verbs.
struct Verb {
  std::string name;
  std::string help;
  std::vector<Argument> arguments = {};
  std::optional<Choice> choice = {};
  std::string note = {};  ///< more, at the end of the verb's own help
  std::function<void(const Given&, const Output&)> run = {};
  std::vector<Verb> verbs = {};
  bool isHidden = false;  ///< from help: for programs, not for people
  bool writes = false;    ///< the host's stores
};

struct Program {
  std::string name;
  std::string help;
  std::string footer;  ///< of every help
  std::string version;
  std::vector<Argument> arguments = {};  ///< that can stand before or after any verb's own
  std::vector<Verb> verbs = {};
};

/// What a command line asks for: a verb, or a text.
struct Call {
  Given options;  ///< the program's own
  const Verb* verb = nullptr;
  Given given;
  std::string text;  ///< help or version, where there is no verb
};

/// Reads a command line. Runs nothing, so that what a verb raises is never taken for a usage error.
/// Raises ToolError USAGE. The program has to outlive the call.
Call ParseCommandLine(const Program& program, int argumentCount, char** arguments);

}  // namespace tarnctl
