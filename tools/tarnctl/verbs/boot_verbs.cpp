#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/key_values.h"
#include "tarnconfigstore/listing.h"

#include "failure.h"
#include "given/given_object.h"
#include "shown/descriptions.h"
#include "store/stored_objects.h"
#include "verbs/option_names.h"
#include "verbs/verbs.h"

#include <utility>
#include <vector>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreException;
using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::StoredObject;

// The entry that tells the host what its next boot is about.
constexpr const char* kBootMode = "BOOT_MODE";
constexpr const char* kRemediation = "1";

constexpr const char* kAll = "--all";
constexpr const char* kShared = "--shared";
constexpr const char* kPart = "--part";

Json::Value EntryOrNull(const char* key, JsonMaker& make) {
  const std::string value = TarnConfigStore::GetKeyValue(key);
  return value.empty() ? Json::Value() : make.Of(value);
}

/// What cannot be told is reported, and null.
Json::Value NumberOrNull(int (*ask)(), const Output& output) {
  try {
    return JsonMaker::Of(ask());
  } catch (const ConfigStoreException& error) {
    Report({ExitCode::DONE, error.GetErrorCode(), error.what(), {}}, output.AsJson());
    return {};
  }
}

Json::Value BootInfoOrNull(const Output& output) {
  if (TarnConfigStore::GetKeyValue("BOOT_INFO").empty()) {  // a host that never said
    return {};
  }
  return NumberOrNull(TarnConfigStore::GetBootInfo, output);
}

/// Why nothing can be staged now; null when something can.
Json::Value StagingObstacle(JsonMaker& make) {
  if (TarnConfigStore::GetKeyValue(kBootMode) == kRemediation) {
    return make.Of("the host is being remediated");
  }
  try {
    OpenStore()->GetNextBootStore();
    return {};
  } catch (const ConfigStoreException& error) {
    return make.Of(error.what());
  }
}

bool IsWaiting(const StoredObject& object) {
  return object.hasPending || !object.confirmed;
}

std::vector<StoredObject> ListConcerned(const ConfigStoreObjectId& prefix, bool isAccepted) {
  std::vector<StoredObject> objects;
  TarnConfigStore::VisitStored(prefix, [&](StoredObject object) {
    if (isAccepted ? IsWaiting(object) : object.hasPending) {
      objects.push_back(std::move(object));
    }
  });
  return objects;
}

Json::Value DescribeWaiting(JsonMaker& make) {
  return make.List(ListConcerned(ParsePrefixIfGiven(""), true), [&](const StoredObject& object) {
    return make.Object("object", FormatObject(object.id), "pending", object.hasPending, "confirmed",
                       object.confirmed);
  });
}

// What of it makes no sense is reported, and keeps nobody from the rest.
void ShowStatus(const Given& /*given*/, const Output& output) {
  JsonMaker make;
  const bool booting = TarnConfigStore::IsBoot();
  Json::Value bootInfo = BootInfoOrNull(output);
  Json::Value obstacle = StagingObstacle(make);
  const bool canStage = obstacle.IsNull();
  output.Print(make.Object("booting", booting, "bootInfo", std::move(bootInfo), "bootMode",
                           EntryOrNull(kBootMode, make), "upgradeContext",
                           NumberOrNull(TarnConfigStore::GetUpgradeContext, output), "canStage",
                           canStage, "obstacle", std::move(obstacle), "staged",
                           DescribeStaged(ParsePrefixIfGiven(""), make), "waiting",
                           DescribeWaiting(make), "rebootTypes", ListRebootTypes(make)));
}

void ShowInfo(const Given& /*given*/, const Output& output) {
  output.PrintMember(JsonMaker::Of(TarnConfigStore::GetBootInfo()));
}

void JudgeObject(const ConfigStoreObjectId& id, bool isAccepted) {
  if (TarnConfigStore::ListStored(id).empty()) {
    RaiseNotStored(id);
  }
  TarnConfigStore::SetBootStatus(id, isAccepted);
}

// The rest of what waited is dropped.
void AcceptPart(const Given& given) {
  if (!given.Has(kObject)) {
    throw ToolError(ExitCode::USAGE,
                    std::string(kPart) + " is of one " + kObject + " (see --help)");
  }
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  const GivenObject part = MakeObject(id, {.data = given.Texts(kPart)}, TypeSchema(id));
  part.source.Locate([&] { TarnConfigStore::SetPartialBootStatus(part.object); });
  // The library writes nothing, and says nothing, when cleaning leaves nothing of it.
  if (part.object->IsEmpty()) {
    throw ToolError(ExitCode::INVALID,
                    "nothing was accepted: without its empty members the part holds no data");
  }
}

void ShowDesired(const Given& given, const Output& output) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  const auto desired = TarnConfigStore::GetDesiredUserConfig(
      id, given.Has(kAllParts) ? TarnConfigStore::DESIRED_WITH_VITAL_AND_CACHED
                               : TarnConfigStore::DESIRED_USER_ONLY);
  if (!desired) {
    throw ToolError(ExitCode::NOT_FOUND,
                    "nothing of " + FormatObject(id) + " waits to be accepted");
  }
  PrintObject(*desired, {}, ShownData(given), output);
}

void JudgeAll(const std::vector<StoredObject>& concerned, bool isAccepted) {
  std::vector<ConfigStoreObjectId> types;
  for (const StoredObject& object : concerned) {  // sorted: the instances of a type in a row
    const ConfigStoreObjectId type(object.id.key, object.id.group, object.id.component);
    if (types.empty() || type != types.back()) {
      types.push_back(type);
    }
  }
  TarnConfigStore::SetBootStatus(types, isAccepted);
}

// What the host made of the values that waited for its boot: they become the user's, or are dropped.
// Rows that an upgrade left to be confirmed are confirmed by the former, and stay as they are by the
// latter.
void Judge(const Given& given, bool isAccepted) {
  if (given.Has(kShared)) {
    TarnConfigStore::SetSharedBootStatus(isAccepted);
    return;
  }
  const bool isWhole = given.Has(kAll);
  const ConfigStoreObjectId id =
      isWhole ? ParsePrefixIfGiven("") : ParseObject(given.Text(kObject));
  const auto concerned = ListConcerned(id, isAccepted);
  if (isWhole) {
    JudgeAll(concerned, isAccepted);
  } else {
    JudgeObject(id, isAccepted);
  }
  Say(std::to_string(concerned.size()) + (isAccepted ? " object" : " pending value") +
      (concerned.size() == 1 ? " " : "s ") + (isAccepted ? "accepted" : "dropped"));
}

Verb VerdictVerb(const char* name, const char* help, bool isAccepted) {
  return {
      .name = name,
      .help = help,
      .choice =
          Choice{.name = "Which",
                 .isRequired = true,
                 .arguments = {{.name = kObject, .help = "A TYPE means all its instances"},
                               Flag(kAll, "Everything that waits"),
                               Flag(kShared, "What waits of the types shared with a SmartNIC")}},
      .run = [isAccepted](const Given& given,
                          const Output& /*output*/) { Judge(given, isAccepted); },
      .writes = true};
}

Verb AcceptVerb() {
  Verb verb = VerdictVerb("accept", "Make the values that waited for this boot the user's", true);
  verb.arguments.push_back(
      {.name = kPart,
       .help = "This part alone, a file of JSON, - for standard input, or MEMBER=VALUE ...; the "
               "rest of what waited for the OBJECT is dropped",
       .takes = Takes::REST,
       .valueName = kData});
  verb.run = [](const Given& given, const Output& /*output*/) {
    given.Has(kPart) ? AcceptPart(given) : Judge(given, true);
  };
  return verb;
}

Verb DesiredVerb() {
  return {.name = "desired",
          .help = "Print what waits to be accepted of an object",
          .arguments = {ObjectArgument(), Flag(kAllParts, "With its vital and cached part"),
                        RevealArgument()},
          .run = ShowDesired};
}

}  // namespace

Verb BootVerbs() {
  return {.name = "boot",
          .help = "Look at the host's boot, and play the boot process",
          .verbs = {{.name = "status",
                     .help = "Print what boots, what is staged, and what waits to be accepted",
                     .run = ShowStatus},
                    {.name = "info", .help = "Print the kind of the boot", .run = ShowInfo},
                    BootApplyVerb(),
                    DesiredVerb(),
                    AcceptVerb(),
                    VerdictVerb("reject", "Drop the values that waited for this boot", false)}};
}

}  // namespace tarnctl
