#include "tarnconfigstore/explain.h"
#include "tarnconfigstore/taking_back.h"

#include "failure.h"
#include "given/object_name.h"
#include "given/part_name.h"
#include "store/stored_objects.h"
#include "store/type_schema.h"
#include "verbs/verbs.h"

#include <algorithm>
#include <iterator>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigPart;
using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::ResetOutcome;
using TarnConfigStore::ResetTarget;
using TarnConfigStore::UnsetMember;
using TarnConfigStore::UnsetResult;

constexpr const char* kTo = "--to";

void RefuseStagedType(const ConfigStoreObjectId& id) {
  // The type's own page has no members below such a place: only what is said of it as a whole.
  if (!TarnConfigStore::DescribeType({id.key, id.group, id.component}, "/").needsReboot) {
    return;
  }
  throw ToolError(ExitCode::INVALID,
                  FormatObject(id) + " changes at the next boot only: \"tarnctl next-boot unset " +
                      FormatObject(id) +
                      " MEMBER\" stages it without a member, \"next-boot set\" as it "
                      "is to be, \"next-boot delete\" its deletion");
}

std::string NamesOf(const std::vector<ConfigPart>& parts) {
  std::string names;
  for (const ConfigPart part : parts) {
    names += (names.empty() ? "" : " and ") + std::string(NameOf(part));
  }
  return names;
}

void SayPending(bool dropped) {
  if (dropped) {
    Say("what was pending for the next boot went with it");
  }
}

// Nothing is taken away unless all of it was set.
void RequireSet(const ConfigStoreObjectId& id, const UnsetResult& result) {
  Findings findings;
  for (const UnsetMember& member : result.members) {
    if (member.taken.empty()) {
      findings.push_back(
          {member.pointer, member.left.empty()
                               ? "is not set" + TypeSchema(id).Suggest(ParsePlace(member.pointer))
                               : "is set in another part: " + NamesOf(member.left)});
    }
  }
  if (!findings.empty()) {
    throw ToolError(ExitCode::NOT_FOUND,
                    "nothing was written: not all of it is set of " + FormatObject(id),
                    TarnConfigStore::CS_GENERIC, std::move(findings));
  }
}

void UnsetGiven(const Given& given, const Output& /*output*/) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  std::vector<std::string> places;
  std::transform(given.Texts(kMember).begin(), given.Texts(kMember).end(),
                 std::back_inserter(places), ParsePlaceName);
  const auto part = PartOf(given);
  RequireStore();
  RefuseStagedType(id);
  const UnsetResult result = TarnConfigStore::UnsetMembers(id, places, part);
  RequireSet(id, result);
  for (const UnsetMember& member : result.members) {
    if (!member.left.empty()) {
      Say(ShownPlace(member.pointer) + " is still set in another part: " + NamesOf(member.left));
    }
  }
  SayPending(result.dropsPending);
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
  const auto result = TarnConfigStore::ResetObject(id, target, place, part);
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
                            "automatic configuration set")},
          .note = "Nothing is written unless each MEMBER is set.",
          .run = UnsetGiven};
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
                        PartArgument("Reset this part instead of the user's")},
          .note = "Other parts are kept: what automatic configuration set is read again.",
          .run = ResetGiven};
}

}  // namespace tarnctl
