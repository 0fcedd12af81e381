#include "tarnconfigstore/dry_run.h"

#include "given/given_instances.h"
#include "given/given_object.h"
#include "given/member_values.h"
#include "store/stored_objects.h"
#include "verbs/option_names.h"
#include "verbs/verbs.h"

#include <cstddef>
#include <memory>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStore;
using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::FilterSpecObject;
using TarnConfigStore::WriteKind;

constexpr const char* kUser = "--user";
constexpr const char* kVital = "--vital";
constexpr const char* kCached = "--cached";

void SetLayers(ConfigStore& store, const std::shared_ptr<ConfigStoreObject>& object,
               const Given& given) {
  if (given.Has(kUser)) {
    store.SetUserData(object, TarnConfigStore::EXTERNAL);
  } else if (given.Has(kAutomatic)) {
    store.SetUserData(object, TarnConfigStore::AUTO_CONFIG);
  } else if (given.Has(kVital)) {
    store.SetVitalData(object);
  } else if (given.Has(kCached)) {
    store.SetCachedData(object);
  } else {
    store.Set(object, TarnConfigStore::EXTERNAL);
  }
}

WriteKind KindOf(const Given& given) {
  return given.Has(kVital)                           ? WriteKind::SET_VITAL_DATA
         : given.Has(kCached)                        ? WriteKind::SET_CACHED_DATA
         : given.Has(kUser) || given.Has(kAutomatic) ? WriteKind::SET_USER_DATA
                                                     : WriteKind::SET;
}

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

void SetLayersOfInstances(ConfigStore& store,
                          const std::vector<std::shared_ptr<ConfigStoreObject>>& objects,
                          const Given& given) {
  if (given.Has(kUser)) {
    store.SetUserDataInstances(objects, TarnConfigStore::EXTERNAL);
  } else if (given.Has(kAutomatic)) {
    store.SetUserDataInstances(objects, TarnConfigStore::AUTO_CONFIG);
  } else if (given.Has(kVital)) {
    store.SetVitalDataInstances(objects);
  } else if (given.Has(kCached)) {
    store.SetCachedDataInstances(objects);
  } else {
    store.SetInstances(objects, TarnConfigStore::EXTERNAL);
  }
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
    WriteObject(ParseObject(given.Text(kObject)), DataOf(given),
                [&](ConfigStore& store, const auto& object) { SetLayers(store, object, given); });
  }
}

void ChangeObject(const Given& given, const Output& /*output*/) {
  const auto context =
      given.Has(kAutomatic) ? TarnConfigStore::AUTO_CONFIG : TarnConfigStore::EXTERNAL;
  UpdateObject(ParseObject(given.Text(kObject)), DataOf(given),
               [&](ConfigStore& store, const auto& object) { store.Update(object, context); });
}

void DeleteObject(const Given& given) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  const auto store = OpenStore();
  if (store->GetRevision(id) == TarnConfigStore::kDefaultRevision) {
    RaiseNotStored(id);
  }
  store->Delete(id);
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

Choice LayerChoice() {
  return {.name = "Layers",
          .help = "Replace one layer and keep the others",
          .arguments = {Flag(kUser, "Replace what the user set"),
                        Flag(kAutomatic, "Replace what automatic configuration set"),
                        Flag(kVital, "Replace what the system must keep"),
                        Flag(kCached, "Replace what the system remembers")}};
}

}  // namespace

Verb SetVerb() {
  return {.name = "set",
          .help = "Replace an object, or one layer, by what is given",
          .arguments = WriteArguments(
              {InstancesFlag(), CheckArgument("List what would be refused; write nothing")}),
          .choice = LayerChoice(),
          .note =
              "With --all-instances, instances that are not listed are deleted; with a layer "
              "they lose that layer alone.",
          .run = Set};
}

Verb UpdateVerb() {
  return {.name = "update",
          .help = "Change what is given, and keep the rest; MEMBER=null removes a member",
          .arguments = WriteArguments({Flag(kAutomatic, "On behalf of automatic configuration")}),
          .run = ChangeObject};
}

Verb DeleteVerb() {
  return {.name = "delete",
          .help = "Delete an object, or instances",
          .arguments = ObjectOrInstancesArguments(),
          .run = [](const Given& given, const Output& /*output*/) {
            (MeansInstances(given) ? DeleteInstances : DeleteObject)(given);
          }};
}

Verb ValidateVerb() {
  return {.name = "validate",
          .help = "List all that set would refuse; write nothing",
          .arguments = {ObjectArgument(), DataArgument(), InstancesFlag()},
          .choice = LayerChoice(),
          .run = CheckObject};
}

}  // namespace tarnctl
