#include "tarnconfigstore/kernel_options.h"
#include "tarnconfigstore/listing.h"
#include "tarnconfigstore/next_boot_update.h"

#include "failure.h"
#include "given/given_object.h"
#include "given/member_values.h"
#include "shown/descriptions.h"
#include "store/stored_objects.h"
#include "table/instance_table.h"
#include "table/record_list.h"
#include "verbs/verbs.h"

#include <cstddef>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::StagedChange;

// The current configuration stays as it is until the staged changes are applied. All but the listing
// raise ValidationException 2000 for a type that needs no reboot, and while the host boots or is
// upgraded.

void GetStaged(const Given& given, const Output& output) {
  RequireNoColumns(given);
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  const MemberPath member = ParseMemberIfGiven(given.Text(kMember));
  const auto staged = OpenStore()->GetNextBootStore()->Get(id);
  if (!staged) {
    const bool goes = !TarnConfigStore::ListStaged(id).empty();
    throw ToolError(ExitCode::NOT_FOUND,
                    goes ? "the object " + FormatObject(id) + " is staged to be deleted"
                         : "no object " + FormatObject(id) + " is staged");
  }
  PrintObject(*staged, member, ShownData(given), output);
}

void GetStagedInstances(const Given& given, const Output& output) {
  const ConfigStoreObjectId type = ParseType(given.Text(kObject));
  const auto nextBoot = OpenStore()->GetNextBootStore();
  InstancePrinter printer(given, output, type);
  printer.Print(nextBoot->GetInstances(MakeFilter(type, given.Texts(kWhere))));
}

void Stage(const Given& given, const Output& /*output*/) {
  WriteObject(ParseObject(given.Text(kObject)), DataOf(given),
              [](TarnConfigStore::ConfigStore& store, const auto& object) {
                store.GetNextBootStore()->Set(object);
              });
}

std::vector<Argument> ReadStagedArguments() {
  std::vector<Argument> arguments = ReadArguments();
  arguments.push_back(ColumnsArgument("of instances, members by dotted paths"));
  return arguments;
}

std::vector<Argument> StageArguments() {
  std::vector<Argument> arguments = DataOrSecretArguments();
  arguments.insert(arguments.begin(), ObjectArgument());
  return arguments;
}

// Answers whether anything was staged.
bool ChangeStaged(const ConfigStoreObjectId& id, const ObjectData& data) {
  bool isStaged = false;
  UpdateObject(id, data, [&isStaged](auto&, const auto& object) {
    isStaged = TarnConfigStore::UpdateNextBoot(object);
  });
  return isStaged;
}

void UpdateStaged(const Given& given, const Output& /*output*/) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  if (!ChangeStaged(id, DataOf(given))) {
    Say("nothing was staged: " + FormatObject(id) + " is to be so already");
  }
}

void UnsetStaged(const Given& given, const Output& /*output*/) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  ObjectData removals;
  for (const std::string& member : given.Texts(kMember)) {
    if (member.find('=') != std::string::npos) {
      throw ToolError(ExitCode::USAGE, "\"" + member + "\" is no MEMBER");
    }
    removals.data.push_back(member + "=null");
  }
  if (!ChangeStaged(id, removals)) {
    throw ToolError(ExitCode::NOT_FOUND,
                    "nothing was staged: " + FormatObject(id) + " is to have no such member");
  }
}

void StageDelete(const Given& given) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  const auto store = OpenStore();
  const auto nextBoot = store->GetNextBootStore();
  if (store->GetRevision(id) == TarnConfigStore::kDefaultRevision && !nextBoot->Get(id)) {
    throw ToolError(ExitCode::NOT_FOUND, "no object " + FormatObject(id) + " is stored or staged");
  }
  nextBoot->Delete(id);
}

void StageDeleteInstances(const Given& given) {
  const ConfigStoreObjectId type = ParseType(given.Text(kObject));
  const auto store = OpenStore();
  const auto nextBoot = store->GetNextBootStore();
  const auto filter = MakeFilter(type, given.Texts(kWhere));
  const std::size_t count = store->GetInstances(filter).size();
  if (count == 0) {
    RaiseNoInstances(type, given.Texts(kWhere));
  }
  nextBoot->DeleteInstances(filter);
  SayHowMany(count, type, "staged to be deleted");
}

void Reset(const Given& given, const Output& /*output*/) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  const auto nextBoot = OpenStore()->GetNextBootStore();
  const auto staged = TarnConfigStore::ListStaged({id.key, id.group, id.component});
  nextBoot->Reset(id);
  if (staged.empty()) {
    throw ToolError(ExitCode::NOT_FOUND, "nothing is staged for " + FormatObject(id));
  }
  for (const StagedChange& change : staged) {
    Say(std::string(NameAction(change.action)) + " of " + FormatObject(change.id) + " taken back");
  }
}

const Columns kStagedColumns = {{"object"}, {"action"}, {"version"}, {"values"}};

void ListStagedChanges(const Given& given, const Output& output) {
  RecordList list(given, output, kStagedColumns);
  for (const StagedChange& change :
       TarnConfigStore::ListStaged(ParsePrefixIfGiven(given.Text(kPrefix)))) {
    JsonMaker make;
    list.Add(Describe(change, make));
  }
  list.End();
}

ConfigStoreObjectId KernelOptions() {
  return {"options", "tkernel", TarnConfigStore::kDefaultComponent};
}

void GetKernelOptions(const Given& given, const Output& output) {
  const MemberPath member = ParseMemberIfGiven(given.Text(kMember));
  const auto options = TarnConfigStore::GetKernelOptions(KernelOptions());
  if (!options) {
    RaiseNotStored(KernelOptions());
  }
  PrintObject(*options, member, ShownData(given), output);
}

void SetKernelOptions(const Given& given, const Output& /*output*/) {
  WriteObject(KernelOptions(), DataOf(given),
              [](auto&, const auto& object) { TarnConfigStore::SetKernelOptions(object); });
}

}  // namespace

Verb NextBootVerbs() {
  return {
      .name = "next-boot",
      .help = "Stage changes of types that need a reboot, and take them back",
      .verbs = {
          {.name = "get",
           .help = "Print what is staged: an object, a member, instances",
           .arguments = ReadStagedArguments(),
           .run =
               [](const Given& given, const Output& output) {
                 (MeansInstances(given) ? GetStagedInstances : GetStaged)(given, output);
               }},
          {.name = "set",
           .help = "Stage the whole new content of an object",
           .arguments = StageArguments(),
           .run = Stage,
           .writes = true},
          {.name = "update",
           .help = "Stage a change of what is given, and keep the rest of what is staged or, where "
                   "nothing is, current; MEMBER=null removes a member",
           .arguments = StageArguments(),
           .run = UpdateStaged,
           .writes = true},
          {.name = "unset",
           .help = "Stage the removal of members, and keep the rest as update does",
           .arguments = {ObjectArgument(),
                         {.name = kMember,
                          .help = "A dotted path to what is to be removed",
                          .takes = Takes::TEXTS,
                          .isRequired = true}},
           .run = UnsetStaged,
           .writes = true},
          {.name = "delete",
           .help = "Stage the deletion of an object, or of instances",
           .arguments = ObjectOrInstancesArguments(),
           .note = "Instances are chosen among those stored; those that are only staged stay so.",
           .run =
               [](const Given& given, const Output& /*output*/) {
                 (MeansInstances(given) ? StageDeleteInstances : StageDelete)(given);
               },
           .writes = true},
          {.name = "reset",
           .help = "Take back everything that is staged for an object's type",
           .arguments = {ObjectArgument()},
           .note = "All records of the type are cleared, those of other instances than OBJECT too.",
           .run = Reset,
           .writes = true},
          {.name = "list",
           .help = "List the staged changes",
           .arguments = {PrefixArgument(), ColumnsArgument(NamesOf(kStagedColumns))},
           .run = ListStagedChanges}}};
}

Verb KernelOptionVerbs() {
  return {.name = "kernel-options",
          .help = "Read and replace the kernel options of the next boot",
          .verbs = {
              {.name = "get",
               .help = "Print the options, or a member of them",
               .arguments = {MemberArgument(), RevealArgument()},
               .run = GetKernelOptions},
              {.name = "set",
               .help = "Replace the options; boot accept puts them in force",
               .arguments = DataOrSecretArguments(),
               .note = "Replaces what automatic configuration set, too. Vital members are in force "
                       "at once, and gone at once where DATA has none; cached members are refused.",
               .run = SetKernelOptions,
               .writes = true}}};
}

}  // namespace tarnctl
