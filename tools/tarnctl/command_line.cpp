// The only source that includes the argument parser, which costs more to compile than all others.
#include "command_line.h"

#include "advice/usage_advice.h"
#include "failure.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <utility>

namespace tarnctl {
namespace {

CLI::Range MakeRange(const NumberRange& range) {
  constexpr int kLargest = std::numeric_limits<int>::max();
  return range.largest <= kLargest
             ? CLI::Range(static_cast<int>(range.smallest), static_cast<int>(range.largest))
             : CLI::Range(range.smallest, range.largest);
}

std::string NamesOf(const Argument& argument) {
  std::string names = argument.name;
  for (const std::string& alias : argument.aliases) {
    names += "," + alias;
  }
  return names;
}

// Options have no variables: conversions to them would take a text such as "{}" for an empty list.
CLI::Option* AddOption(CLI::App& app, const Argument& argument) {
  if (argument.takes == Takes::NOTHING) {
    return app.add_flag(NamesOf(argument));
  }
  CLI::Option* option = app.add_option(NamesOf(argument));
  option->type_name(argument.valueName.empty() ? "TEXT" : argument.valueName);
  option->required(argument.isRequired);
  if (argument.takes == Takes::TEXTS || argument.takes == Takes::REST) {
    option->expected(CLI::detail::expected_max_vector_size);
    option->allow_extra_args(argument.takes == Takes::REST || option->get_positional());
  }
  if (argument.range) {
    option->check(MakeRange(*argument.range));
  }
  return option;
}

void AddArguments(CLI::App& app, const std::vector<Argument>& arguments) {
  for (const Argument& argument : arguments) {
    CLI::Option* option = AddOption(app, argument);
    option->description(argument.help);
    for (const std::string& other : argument.excludes) {
      option->excludes(other);
    }
  }
}

void Collect(const CLI::App& app, const std::vector<Argument>& arguments, Given& given) {
  for (const Argument& argument : arguments) {
    const CLI::Option* option = app.get_option(argument.name);
    const bool isSet = option->count() > 0 &&
                       (argument.takes != Takes::NOTHING || option->as<bool>());  // "--flag=false"
    given.Add(argument.name, isSet ? option->results() : std::vector<std::string>());
  }
}

void AddVerb(CLI::App& parent, const Verb& verb, Call& call);

void FillVerb(CLI::App& app, const Verb& verb, Call& call) {
  for (const Verb& inner : verb.verbs) {
    AddVerb(app, inner, call);
  }
  if (!verb.run) {
    app.require_subcommand(1);
    return;
  }
  AddArguments(app, verb.arguments);
  if (verb.choice) {
    CLI::App* choice = app.add_option_group(verb.choice->name, verb.choice->help);
    choice->fallthrough(false);  // as for those that are there before parsing begins
    AddArguments(*choice, verb.choice->arguments);
    choice->require_option(verb.choice->isRequired ? 1 : 0, 1);
  }
  if (!verb.note.empty()) {
    app.footer(verb.note + "\n\n" + app.get_footer());
  }
  app.callback([&app, &verb, &call] {
    call.verb = &verb;
    Collect(app, verb.arguments, call.given);
    if (verb.choice) {
      Collect(app, verb.choice->arguments, call.given);
    }
  });
}

// What a verb takes is added once it is named: one of forty is.
void AddVerb(CLI::App& parent, const Verb& verb, Call& call) {
  CLI::App* app = parent.add_subcommand(verb.name, verb.help);
  if (verb.isHidden) {
    app->group("");
  }
  app->preparse_callback([app, &verb, &call](std::size_t) { FillVerb(*app, verb, call); });
}

// Those that can be meant; where none is named, as in help, all.
void AddVerbs(CLI::App& app, const std::vector<Verb>& verbs, const std::vector<std::string>& line,
              Call& call) {
  const auto isNamed = [&line](const Verb& verb) {
    return std::find(line.begin(), line.end(), verb.name) != line.end();
  };
  const bool isAnyNamed = std::any_of(verbs.begin(), verbs.end(), isNamed);
  for (const Verb& verb : verbs) {
    if (!isAnyNamed || isNamed(verb)) {
      AddVerb(app, verb, call);
    }
  }
}

}  // namespace

Argument Flag(std::string name, std::string help, std::vector<std::string> excludes) {
  return {.name = std::move(name),
          .help = std::move(help),
          .takes = Takes::NOTHING,
          .excludes = std::move(excludes)};
}

Argument CheckArgument(std::string help) {
  return Flag(kCheck, std::move(help));
}

const std::vector<std::string>& Given::Texts(std::string_view name) const {
  const auto found = values_.find(name);
  if (found == values_.end()) {
    throw std::logic_error("the verb takes no " + std::string(name));
  }
  return found->second;
}

const std::string& Given::Text(std::string_view name) const {
  static const std::string none;
  const std::vector<std::string>& texts = Texts(name);
  return texts.empty() ? none : texts.front();
}

std::optional<std::uint64_t> Given::Number(std::string_view name) const {
  if (!Has(name)) {
    return std::nullopt;
  }
  return std::strtoull(Text(name).c_str(), nullptr, 0);  // as its range was checked
}

Call ParseCommandLine(const Program& program, int argumentCount, char** arguments) {
  Call call;
  CLI::App app(program.help, program.name);
  AddArguments(app, program.arguments);
  app.set_version_flag("--version", program.version);
  app.footer(program.footer);
  app.get_formatter()->label("TEXT", "");  // what a value is shows in its name
  app.get_formatter()->label("REQUIRED", "");
  app.require_subcommand(1);
  app.fallthrough();
  AddVerbs(app, program.verbs, {arguments, arguments + argumentCount}, call);
  try {
    app.parse(argumentCount, arguments);
    Collect(app, program.arguments, call.options);
  } catch (const CLI::CallForHelp&) {
    return {{}, nullptr, {}, app.help()};
  } catch (const CLI::CallForVersion& version) {
    return {{}, nullptr, {}, std::string(version.what()) + "\n"};
  } catch (const CLI::ParseError& error) {
    const std::string unknown = ExplainUnknown(program, {arguments + 1, arguments + argumentCount});
    throw ToolError(ExitCode::USAGE,
                    (unknown.empty() ? std::string(error.what()) : unknown) + " (see --help)");
  }
  return call;
}

}  // namespace tarnctl
