#include "tarnconfigstore/default_instances.h"
#include "tarnconfigstore/explain.h"
#include "tarnconfigstore/stored_views.h"

#include "failure.h"
#include "given/member_values.h"
#include "shown/group_tree.h"
#include "store/stored_objects.h"
#include "table/instance_table.h"
#include "verbs/option_names.h"
#include "verbs/verbs.h"

#include <memory>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

constexpr const char* kDefault = "--default";
constexpr const char* kDuringBoot = "--during-boot";
constexpr const char* kEffective = "--effective";
constexpr const char* kPointer = "--pointer";
constexpr const char* kWithShipped = "--with-shipped";
constexpr const char* kChangedOnly = "--changed-only";

void RequireWith(const Given& given, const char* option, bool isRight, const std::string& other) {
  if (given.Has(option) && !isRight) {
    throw ToolError(ExitCode::USAGE, std::string(option) + " takes " + other + " (see --help)");
  }
}

std::shared_ptr<ConfigStoreObject> ReadStored(const ConfigStoreObjectId& id) {
  auto stored = OpenStore()->Get(id);
  if (!stored && TarnConfigStore::GetEffectiveConfig(id).hasDefaults) {
    throw ToolError(ExitCode::NOT_FOUND, "no object " + FormatObject(id) +
                                             " is stored; the defaults of its type are shown by "
                                             "--effective");
  }
  if (!stored) {
    RaiseNotStored(id);
  }
  return stored;
}

// What is not stored must not pass for being so.
std::shared_ptr<ConfigStoreObject> ReadEffective(const ConfigStoreObjectId& id) {
  auto effective = TarnConfigStore::GetEffectiveConfig(id);
  if (!effective.isStored && !effective.hasDefaults) {
    RaiseNotStored(id);
  }
  if (!effective.isStored) {
    Say("no object " + FormatObject(id) + " is stored: these are the defaults of its type");
  }
  return std::move(effective.object);
}

std::shared_ptr<ConfigStoreObject> ReadShipped(const ConfigStoreObjectId& id) {
  auto shipped = OpenStore()->GetDefaultConfig(id);
  if (!shipped) {
    throw ToolError(ExitCode::NOT_FOUND, "no object " + FormatObject(id) + " is shipped");
  }
  return shipped;
}

std::shared_ptr<ConfigStoreObject> ReadDuringBoot(const ConfigStoreObjectId& id, bool automatic) {
  auto seen = TarnConfigStore::GetConfigDuringBoot(
      id, automatic ? TarnConfigStore::AUTO_CONFIG : TarnConfigStore::EXTERNAL);
  if (!seen) {
    throw ToolError(ExitCode::NOT_FOUND, "nothing of " + FormatObject(id) +
                                             (automatic ? " was set by automatic configuration"
                                                        : " is seen while the host boots"));
  }
  return seen;
}

void GetObject(const Given& given, const Output& output) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  const MemberPath member = ParseMemberIfGiven(given.Text(kMember));
  RequireNoColumns(given);
  RequireWith(given, kPointer, member.empty(), "the place of a MEMBER");
  const auto pointer =
      given.Has(kPointer) ? std::optional(ParsePlace(given.Text(kPointer))) : std::nullopt;
  const auto object = given.Has(kDefault)      ? ReadShipped(id)
                      : given.Has(kEffective)  ? ReadEffective(id)
                      : given.Has(kDuringBoot) ? ReadDuringBoot(id, given.Has(kAutomatic))
                                               : ReadStored(id);
  if (pointer) {
    PrintPlace(*object, *pointer, ShownData(given), output);
  } else {
    PrintObject(*object, member, ShownData(given), output);
  }
}

void GetInstances(const Given& given, const Output& output) {
  const ConfigStoreObjectId type = ParseType(given.Text(kObject));
  const auto store = OpenStore();
  InstancePrinter printer(given, output, type);
  const auto filter = MakeFilter(type, given.Texts(kWhere));
  auto objects =
      given.Has(kDefault) ? store->GetDefaultConfigInstances(filter) : store->GetInstances(filter);
  if (given.Has(kWithShipped)) {
    TarnConfigStore::AddDefaultConfigInstances(type, objects);
  }
  if (given.Has(kChangedOnly)) {
    TarnConfigStore::FilterDefaultConfigInstances(type, objects);
  }
  printer.Print(objects);
}

// What cannot be read is told after what can, and the verb fails: what stands on standard output is
// not all that is stored.
void GetGroup(const Given& given, const Output& output) {
  const ConfigStoreObjectId prefix = ParsePrefix(given.Text(kObject));
  auto table = ColumnTable::If(given, output, kMemberColumns);
  for (const char* option : {kMember, kPointer, kDefault, kEffective, kDuringBoot}) {
    if (given.Has(option)) {
      throw ToolError(ExitCode::USAGE, std::string(option) + " is of one OBJECT (see --help)");
    }
  }
  RequireStore();
  const auto config = TarnConfigStore::GetConfigOfGroup(prefix.component, prefix.group);
  for (const ConfigStoreObjectId& id : config.unconfirmed) {
    Say(FormatObject(id) + " is stored, but nothing of it is confirmed");
  }
  if (config.objects.empty() && config.notInstalled.empty()) {
    throw ToolError(ExitCode::NOT_FOUND, "nothing is stored under " + given.Text(kObject));
  }
  if (table) {
    AddMembers(config.objects, ShownData(given), *table);
    table->End();
  } else {
    JsonMaker make;
    output.Print(MakeGroupTree(config.objects, !prefix.group.empty(), ShownData(given), make));
  }
  Findings missing;
  for (const ConfigStoreObjectId& id : config.notInstalled) {
    missing.push_back({FormatObject(id), "its type is not installed"});
  }
  if (!missing.empty()) {
    throw ToolError(ExitCode::FAILED, "not all stored objects could be read",
                    TarnConfigStore::CS_SCHEMA_NOT_FOUND, std::move(missing));
  }
}

void Get(const Given& given, const Output& output) {
  const bool isOfInstances = MeansInstances(given);
  RequireWith(given, kWithShipped, given.Has(kAllInstances) && !given.Has(kWhere), kAllInstances);
  RequireWith(given, kChangedOnly, isOfInstances, std::string(kAllInstances) + " or " + kWhere);
  RequireWith(given, kAutomatic, given.Has(kDuringBoot), kDuringBoot);
  if (isOfInstances) {
    GetInstances(given, output);
  } else if (IsGroup(given.Text(kObject))) {
    GetGroup(given, output);
  } else {
    GetObject(given, output);
  }
}

}  // namespace

Verb GetVerb() {
  Verb verb{.name = "get",
            .help = "Print an object, a member of it, instances, or all of a component or group",
            .arguments = ReadArguments(),
            .note =
                "OBJECT may be COMPONENT[/GROUP] too: what is confirmed of each object there, by "
                "key; instances as a list.",
            .run = Get};
  verb.arguments.push_back(
      ColumnsArgument("of instances, members by dotted paths; of a component or group, " +
                      NamesOf(kMemberColumns)));
  verb.arguments.push_back(Flag(kDefault, "What the type came with, not what is stored"));
  verb.arguments.push_back(Flag(kEffective,
                                "With the defaults of absent members, also of an object that is "
                                "not stored",
                                {kAllInstances, kWhere, kDefault}));
  verb.arguments.push_back(
      {.name = kPointer,
       .help = "A place in the object as a JSON Pointer (RFC 6901), through lists too",
       .valueName = "POINTER",
       .excludes = {kAllInstances, kWhere}});
  verb.arguments.push_back(Flag(kDuringBoot, "What is seen of the object while the host boots",
                                {kAllInstances, kWhere, kDefault, kEffective}));
  verb.arguments.push_back(
      Flag(kAutomatic, "With --during-boot: what automatic configuration sees"));
  verb.arguments.push_back(
      Flag(kWithShipped, "With --all-instances: those that the type came with, too", {kDefault}));
  verb.arguments.push_back(Flag(kChangedOnly,
                                "Without the instances that are as the type came with them",
                                {kDefault, kWithShipped}));
  return verb;
}

}  // namespace tarnctl
