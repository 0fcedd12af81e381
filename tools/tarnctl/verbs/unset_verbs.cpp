#include "tarnconfigstore/explain.h"
#include "tarnconfigstore/taking_back.h"

#include "failure.h"
#include "given/object_name.h"
#include "given/part_name.h"
#include "store/stored_objects.h"
#include "store/type_schema.h"
#include "verbs/verbs.h"
#include "writes/if_revision.h"
#include "writes/object_writes.h"

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigPart;
using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::ResetOutcome;
using TarnConfigStore::ResetTarget;

constexpr const char* kTo = "--to";

void SayPending(bool dropped) {
  if (dropped) {
    Say(kPendingWent);
  }
}

ResetTarget TargetOf(const Given& given) {
  const std::string& target = given.Text(kTo);
  if (target == "default") {
    return ResetTarget::DEFAULTS;
  }
  if (target == "shipped") {
    return ResetTarget::SHIPPED;
  }
  throw ToolError(ExitCode::USAGE, "\"" + target + "\" is neither default nor shipped");
}

void ResetGiven(const Given& given, const Output& /*output*/) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  const std::string place = ParsePlaceNameIfGiven(given.Text(kMember));
  const ResetTarget target = TargetOf(given);
  const ConfigPart part = PartOf(given).value_or(ConfigPart::USER);
  const auto store = OpenStore();
  RefuseStagedType(id);
  if (target == ResetTarget::DEFAULTS &&
      store->GetRevision(id) == TarnConfigStore::kDefaultRevision) {
    RaiseNotStored(id);
  }
  if (!place.empty() && TarnConfigStore::ExplainObject(id, place).members.empty() &&
      target == ResetTarget::DEFAULTS) {
    throw ToolError(ExitCode::NOT_FOUND, "the object " + FormatObject(id) + " has no member \"" +
                                             ShownPlace(place) + "\"" +
                                             TypeSchema(id).Suggest(ParsePlace(place)));
  }
  TarnConfigStore::ResetResult result;
  AtRevision(*store, id, given,
             [&] { result = TarnConfigStore::ResetObject(*store, id, target, place, part); });
  switch (result.outcome) {
    case ResetOutcome::NOT_SHIPPED:
      throw ToolError(ExitCode::NOT_FOUND, "no object " + FormatObject(id) + " is shipped");
    case ResetOutcome::UNCHANGED:
      Say("nothing was written: the " + std::string(NameOf(part)) + " part is that already");
      break;
    case ResetOutcome::CHANGED:
    case ResetOutcome::REMOVED:
      break;
  }
  SayPending(result.dropsPending);
}

}  // namespace

Verb UnsetVerb() {
  return {.name = "unset",
          .help = "Take members out of a stored object, so that their defaults are read",
          .arguments =
              {ObjectArgument(),
               {.name = kMember, .help = kPlaceHelp, .takes = Takes::TEXTS, .isRequired = true},
               PartArgument("Take them out of this part alone; otherwise of all but what "
                            "automatic configuration set"),
               IfRevisionArgument()},
          .note = "Nothing is written unless each MEMBER is set.",
          .run = [](const Given& given, const Output& /*output*/) { Run(PrepareUnset(given)); },
          .writes = true};
}

Verb ResetVerb() {
  return {.name = "reset",
          .help = "Take back what the user set of an object, or of a member of it",
          .arguments = {ObjectArgument(),
                        {.name = kMember, .help = kPlaceHelp},
                        {.name = kTo,
                         .help = "default: as if nothing had been set; shipped: as the type came",
                         .isRequired = true,
                         .valueName = "default|shipped"},
                        PartArgument("Reset this part instead of the user's"),
                        IfRevisionArgument()},
          .note = "Other parts are kept: what automatic configuration set is read again.",
          .run = ResetGiven,
          .writes = true};
}

}  // namespace tarnctl
