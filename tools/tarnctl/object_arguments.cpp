#include "object_arguments.h"

#include "delete_verbs.h"
#include "read_verbs.h"
#include "write_verbs.h"

namespace tarnctl {
namespace {

void AddGet(CLI::App& app, Arguments& a) {
  CLI::App* get = AddVerb(app, a, "get", "Print an object, a member of it, or instances",
                          [&a](const Output& output) {
                            const Source source = a.shipped ? Source::SHIPPED : Source::STORED;
                            if (MeansInstances(a)) {
                              GetInstances(a.name, a.conditions, source, output);
                            } else {
                              GetObject(a.name, a.detail, source, output);
                            }
                          });
  AddInstances(*get, a);
  AddMember(*get, a);
  get->add_flag("--default", a.shipped, "What the type came with, not what is stored");
}

void AddSet(CLI::App& app, Arguments& a) {
  CLI::App* set = AddVerb(app, a, "set", "Replace an object, or one layer, by what is given",
                          [&a](const Output&) { SetObject(a.name, a.list, a.layer); });
  AddObject(*set, a);
  AddData(*set, a);
  CLI::App* layers = set->add_option_group("Layers", "Replace one layer and keep the others");
  layers->require_option(0, 1);
  const auto add = [&](const char* flag, Layer layer, const char* help) {
    layers->add_flag_callback(
        flag, [&a, layer] { a.layer = layer; }, help);
  };
  add("--user", Layer::USER, "Replace what the user set");
  add("--auto", Layer::AUTOMATIC, "Replace what automatic configuration set");
  add("--vital", Layer::VITAL, "Replace what the system must keep");
  add("--cached", Layer::CACHED, "Replace what the system remembers");
}

void AddUpdate(CLI::App& app, Arguments& a) {
  CLI::App* update =
      AddVerb(app, a, "update", "Change what is given, and keep the rest", [&a](const Output&) {
        UpdateObject(a.name, a.list,
                     a.automatic ? TarnConfigStore::AUTO_CONFIG : TarnConfigStore::EXTERNAL);
      });
  AddObject(*update, a);
  AddData(*update, a);
  update->add_flag("--auto", a.automatic, "On behalf of automatic configuration");
}

void AddDelete(CLI::App& app, Arguments& a) {
  CLI::App* remove =
      AddVerb(app, a, "delete", "Delete an object, or instances", [&a](const Output&) {
        if (MeansInstances(a)) {
          DeleteInstances(a.name, a.conditions);
        } else {
          DeleteObject(a.name);
        }
      });
  AddInstances(*remove, a);
}

}  // namespace

void AddObjectVerbs(CLI::App& app, Arguments& a) {
  AddGet(app, a);
  AddSet(app, a);
  AddUpdate(app, a);
  AddDelete(app, a);
  CLI::App* validate =
      AddVerb(app, a, "validate", "List all that is wrong with an object; write nothing",
              [&a](const Output& output) { ValidateObject(a.name, a.detail, output); });
  AddObject(*validate, a);
  validate->add_option("FILE", a.detail, "A file of JSON, or - for standard input")->required();
  CLI::App* list = AddVerb(app, a, "list", "List the stored objects",
                           [&a](const Output& output) { ListObjects(a.name, output); });
  list->add_option("PREFIX", a.name, "COMPONENT[/GROUP[/KEY[/INSTANCE]]]");
  CLI::App* revision = AddVerb(app, a, "revision", "Print the number of writes of an object",
                               [&a](const Output& output) { ShowRevision(a.name, output); });
  AddObject(*revision, a);
}

}  // namespace tarnctl
