#include "verb_arguments.h"

#include <utility>

namespace tarnctl {

CLI::App* AddVerb(CLI::App& parent, Arguments& arguments, const char* name, const char* help,
                  Verb verb) {
  CLI::App* app = parent.add_subcommand(name, help);
  app->callback([&arguments, verb = std::move(verb)] { arguments.verb = verb; });
  return app;
}

void AddNote(CLI::App& verb, const std::string& note) {
  verb.footer(note + "\n\n" + verb.get_footer());
}

CLI::App* AddFamily(CLI::App& parent, const char* name, const char* help) {
  CLI::App* app = parent.add_subcommand(name, help);
  app->require_subcommand(1);
  return app;
}

void AddObject(CLI::App& verb, Arguments& a) {
  verb.add_option("OBJECT", a.name)->required();
}

void AddData(CLI::App& verb, Arguments& a) {
  verb.add_option("DATA", a.list,
                  "A file of JSON, - for standard input, or MEMBER=VALUE ...: each value takes the "
                  "type that the schema gives the member, arrays and objects are JSON text")
      ->required();
}

void AddInstances(CLI::App& verb, Arguments& a) {
  verb.add_option("OBJECT", a.name, "A TYPE with --all-instances or --where")->required();
  verb.add_flag("--all-instances", a.allInstances, "All instances of a type");
  verb.add_option("--where", a.conditions,
                  "The instances of a type whose stored member has this value; can be repeated")
      ->type_name("MEMBER=VALUE")
      ->allow_extra_args(false);
}

bool MeansInstances(const Arguments& a) {
  return a.allInstances || !a.conditions.empty();
}

void AddMember(CLI::App& verb, Arguments& a) {
  verb.add_option("MEMBER", a.detail, "A dotted path, through objects only")
      ->excludes("--all-instances")
      ->excludes("--where");
}

}  // namespace tarnctl
