#include "arguments.h"

#include "tarnconfigstore/diagnostics.h"
#include "tarnconfigstore/host.h"

#include "boot_arguments.h"
#include "failure.h"
#include "host_verbs.h"
#include "object_arguments.h"
#include "output.h"
#include "type_verbs.h"
#include "verb_arguments.h"
#include "watch.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>

namespace tarnctl {
namespace {

constexpr const char* kFooter =
    "An OBJECT is COMPONENT/GROUP/KEY[/INSTANCE], a TYPE the same without an instance.\n"
    "Exit codes: 0 done, 1 failed, 2 usage, 3 not found, 4 invalid, 6 permission, 7 busy, 8 "
    "corrupt.";

void AddTypeVerbs(CLI::App& app, Arguments& a) {
  CLI::App* family = AddFamily(app, "schema", "Install, show and remove configuration types");
  CLI::App* install =
      AddVerb(*family, a, "install", "Install types: all of those given, or none",
              [&a](const Output& output) { InstallTypes(a.list, a.checkOnly, a.force, output); });
  install->add_option("PATH", a.list, "Type files, or directories of them")->required();
  install->add_flag("--check", a.checkOnly, "Check everything, install nothing");
  install->add_flag(
      "--force", a.force,
      "Allow an older version than the installed one, and stored objects that no longer fit");
  CLI::App* check =
      AddVerb(*family, a, "check", "Check type files without a store, and list all that is wrong",
              [&a](const Output& output) { CheckTypes(a.list, output); });
  check->add_option("PATH", a.list, "Type files, or directories of them")->required();
  AddVerb(*family, a, "list", "List the installed types", ListTypes);
  CLI::App* show = AddVerb(*family, a, "show", "Print the type file of a type",
                           [&a](const Output& output) { ShowType(a.name, output); });
  show->add_option("TYPE", a.name)->required();
  CLI::App* remove = AddVerb(*family, a, "remove", "Remove a type and its shipped objects",
                             [&a](const Output&) { RemoveType(a.name, a.force); });
  remove->add_option("TYPE", a.name)->required();
  remove->add_flag("--force", a.force, "Even if objects of the type are stored; they stay");
}

void AddEntryVerbs(CLI::App& app, Arguments& a) {
  CLI::App* family = AddFamily(app, "kv", "Read and write the key/value entries");
  CLI::App* get = AddVerb(*family, a, "get", "Print an entry; nothing when it is absent",
                          [&a](const Output& output) { GetEntry(a.name, output); });
  get->add_option("KEY", a.name)->required();
  CLI::App* set = AddVerb(*family, a, "set", "Create or replace an entry",
                          [&a](const Output&) { SetEntry(a.name, a.detail); });
  set->add_option("KEY", a.name)->required();
  set->add_option("VALUE", a.detail)->required();
}

void AddWatchVerb(CLI::App& app, Arguments& a) {
  CLI::App* watch = AddVerb(
      app, a, "watch", "Print the notifications of changes as they arrive, one line of JSON each",
      [&a](const Output& output) { WatchNotifications(a.socket, a.count, output); });
  watch->add_option("--socket", a.socket, "Listen there instead")->type_name("PATH");
  watch->add_option("--count", a.count, "End after so many")
      ->type_name("N")
      ->check(CLI::Range(std::uint64_t{1}, std::numeric_limits<std::uint64_t>::max()));
}

void AddEverything(CLI::App& app, Arguments& a) {
  app.add_flag("--json", a.asJson, "Print everything as JSON, errors too");
  app.add_option("--root", a.root, "Directory that the host's paths are resolved under")
      ->type_name("DIR");
  app.add_option("--log", a.logLevel, "Print log lines of priority up to N on standard error")
      ->type_name("N")
      ->check(CLI::Range(0, 4));
  app.set_version_flag("--version", "tarnctl " TARNCTL_VERSION);
  app.footer(kFooter);
  app.get_formatter()->label("TEXT", "");  // what a value is shows in its name
  app.get_formatter()->label("REQUIRED", "");
  app.require_subcommand(1);
  app.fallthrough();
  AddVerb(app, a, "init", "Make the directories and databases of the store", InitializeHost);
  AddTypeVerbs(app, a);
  AddObjectVerbs(app, a);
  AddNextBootVerbs(app, a);
  AddBootVerbs(app, a);
  AddKernelOptionVerbs(app, a);
  AddEntryVerbs(app, a);
  AddWatchVerb(app, a);
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

void Prepare(const Arguments& arguments) {
  if (arguments.root) {
    if (arguments.root->empty()) {  // an unset variable must not mean the real host
      throw ToolError(ExitCode::USAGE, "--root takes the name of a directory");
    }
    TarnConfigStore::SetHostRoot(*arguments.root);
  }
  if (arguments.logLevel) {
    TarnConfigStore::SetLogLevel(*arguments.logLevel);
    TarnConfigStore::SetLogSink(
        [](int priority, const char* line) { std::fprintf(stderr, "<%d> %s\n", priority, line); });
  }
}

void ParseAndRun(int argumentCount, char** arguments) {
  Arguments parsed;
  CLI::App app("Looks at the host's configuration store and changes it.", "tarnctl");
  AddEverything(app, parsed);
  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::CallForHelp&) {
    Output(false).PrintText(app.help());
    return;
  } catch (const CLI::CallForVersion& version) {
    Output(false).PrintText(std::string(version.what()) + "\n");
    return;
  } catch (const CLI::ParseError& error) {
    throw ToolError(ExitCode::USAGE, std::string(error.what()) + " (see --help)");
  }
  Prepare(parsed);
  TarnConfigStore::ClearLastStoreError();
  parsed.verb(Output(parsed.asJson));
}

}  // namespace

int Run(int argumentCount, char** arguments) {
  ExitCode exitCode = ExitCode::DONE;
  try {
    ParseAndRun(argumentCount, arguments);
  } catch (...) {
    const Failure failure = DescribeCurrentException();
    Report(failure, AsksForJson(argumentCount, arguments));
    exitCode = failure.exitCode;
  }
  return static_cast<int>(exitCode);
}

}  // namespace tarnctl
