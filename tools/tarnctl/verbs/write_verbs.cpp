#include "tarnconfigstore/dry_run.h"

#include "given/given_instances.h"
#include "given/given_object.h"
#include "given/member_values.h"
#include "store/stored_objects.h"
#include "verbs/option_names.h"
#include "verbs/verbs.h"
#include "writes/if_revision.h"
#include "writes/layers.h"
#include "writes/object_writes.h"

#include <cstddef>
#include <memory>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStore;
using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::FilterSpecObject;

// What a set with the same arguments would say.
Findings FindFaults(const Given& given) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  OpenStore();  // a host without a store has nothing to set
  GivenObject made;
  try {
    const TypeSchema schema(id);
    made = MakeObject(id, DataOf(given), schema);
  } catch (const ToolError& error) {
    if (error.GetFailure().details.empty()) {
      throw;
    }
    return error.GetFailure().details;  // data that describes no object
  }
  return made.source.WithLines(TarnConfigStore::FindingsOfWrite(made.object, KindOf(given)));
}

const std::string& FileOfInstances(const Given& given) {
  if (!IsFile(DataOf(given).data)) {
    throw ToolError(ExitCode::USAGE,
                    std::string(kAllInstances) + " takes one file with a list of objects");
  }
  return given.Texts(kData).front();
}

void CheckObject(const Given& given, const Output& output) {
  PrintFindings(given.Has(kAllInstances) ? FindFaults(ReadInstances(ParseType(given.Text(kObject)),
                                                                    FileOfInstances(given)),
                                                      KindOf(given))
                                         : FindFaults(given),
                output);
}

void Set(const Given& given, const Output& output) {
  if (given.Has(kCheck)) {
    CheckObject(given, output);
  } else if (given.Has(kAllInstances)) {
    WriteGivenInstances(ParseType(given.Text(kObject)), FileOfInstances(given), KindOf(given),
                        [&](ConfigStore& store, const auto& objects) {
                          SetLayersOfInstances(store, objects, given);
                        });
  } else {
    Run(PrepareSet(given, DataOf(given)));
  }
}

// Rows are counted without being read where all are meant: what nobody can read can still be
// deleted.
std::size_t CountInstances(ConfigStore& store, const std::shared_ptr<FilterSpecObject>& filter) {
  return filter->IsEmpty() ? store.GetInstanceIds(filter->GetConfigStoreObjectId()).size()
                           : store.GetInstances(filter).size();
}

void DeleteInstances(const Given& given) {
  const ConfigStoreObjectId type = ParseType(given.Text(kObject));
  const auto store = OpenStore();
  const auto filter = MakeFilter(type, given.Texts(kWhere));
  const std::size_t count = CountInstances(*store, filter);
  if (count == 0) {
    RaiseNoInstances(type, given.Texts(kWhere));
  }
  store->DeleteInstances(filter);
  SayHowMany(count, type, "deleted");
}

Argument InstancesFlag() {
  return Flag(kAllInstances,
              "All instances of the TYPE that OBJECT names; DATA is a file with a list");
}

// Of verbs that make an object, and more.
std::vector<Argument> WriteArguments(const std::vector<Argument>& more) {
  std::vector<Argument> arguments = DataOrSecretArguments();
  arguments.insert(arguments.begin(), ObjectArgument());
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

std::vector<Argument> DeleteArguments() {
  std::vector<Argument> arguments = ObjectOrInstancesArguments();
  arguments.push_back(IfRevisionArgument({kAllInstances, kWhere}));
  return arguments;
}

}  // namespace

Verb SetVerb() {
  return {.name = "set",
          .help = "Replace an object, or one layer, by what is given",
          .arguments = WriteArguments({InstancesFlag(),
                                       CheckArgument("List what would be refused; write nothing"),
                                       IfRevisionArgument({kAllInstances, kCheck})}),
          .choice = LayerChoice(),
          .note =
              "With --all-instances, instances that are not listed are deleted; with a layer "
              "they lose that layer alone.",
          .run = Set,
          .writes = true};
}

Verb UpdateVerb() {
  return {.name = "update",
          .help = "Change what is given, and keep the rest; MEMBER=null removes a member",
          .arguments = WriteArguments(
              {Flag(kAutomatic, "On behalf of automatic configuration"), IfRevisionArgument()}),
          .run = [](const Given& given,
                    const Output& /*output*/) { Run(PrepareUpdate(given, DataOf(given))); },
          .writes = true};
}

Verb DeleteVerb() {
  return {.name = "delete",
          .help = "Delete an object, or instances",
          .arguments = DeleteArguments(),
          .run =
              [](const Given& given, const Output& /*output*/) {
                if (MeansInstances(given)) {
                  DeleteInstances(given);
                } else {
                  Run(PrepareDelete(given));
                }
              },
          .writes = true};
}

Verb ValidateVerb() {
  return {.name = "validate",
          .help = "List all that set would refuse; write nothing",
          .arguments = {ObjectArgument(), DataArgument(), InstancesFlag()},
          .choice = LayerChoice(),
          .run = CheckObject};
}

}  // namespace tarnctl
