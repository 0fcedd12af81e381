#include "writes/object_writes.h"

#include "tarnconfigstore/explain.h"
#include "tarnconfigstore/taking_back.h"

#include "given/part_name.h"
#include "store/stored_objects.h"
#include "verbs/option_names.h"
#include "writes/if_revision.h"
#include "writes/layers.h"

#include <algorithm>
#include <iterator>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigPart;
using TarnConfigStore::ConfigStore;
using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::UnsetMember;
using TarnConfigStore::UnsetResult;

std::string NamesOf(const std::vector<ConfigPart>& parts) {
  std::string names;
  for (const ConfigPart part : parts) {
    names += (names.empty() ? "" : " and ") + std::string(NameOf(part));
  }
  return names;
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

}  // namespace

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

PreparedWrite PrepareSet(const Given& given, const ObjectData& data) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  return PrepareObject(id, data, [id, given](ConfigStore& store, const auto& object) {
    AtRevision(store, id, given, [&] { SetLayers(store, object, given); });
  });
}

PreparedWrite PrepareUpdate(const Given& given, const ObjectData& data) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  const auto context =
      given.Has(kAutomatic) ? TarnConfigStore::AUTO_CONFIG : TarnConfigStore::EXTERNAL;
  return PrepareUpdate(id, data, [id, given, context](ConfigStore& store, const auto& object) {
    AtRevision(store, id, given, [&] { store.Update(object, context); });
  });
}

PreparedWrite PrepareUnset(const Given& given) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  std::vector<std::string> places;
  std::transform(given.Texts(kMember).begin(), given.Texts(kMember).end(),
                 std::back_inserter(places), ParsePlaceName);
  const auto part = PartOf(given);
  RequireStore();
  RefuseStagedType(id);
  return [id, given, places, part](ConfigStore& store) {
    UnsetResult result;
    AtRevision(store, id, given,
               [&] { result = TarnConfigStore::UnsetMembers(store, id, places, part); });
    RequireSet(id, result);
    Notes notes;
    for (const UnsetMember& member : result.members) {
      if (!member.left.empty()) {
        notes.push_back(ShownPlace(member.pointer) +
                        " is still set in another part: " + NamesOf(member.left));
      }
    }
    if (result.dropsPending) {
      notes.push_back(kPendingWent);
    }
    return notes;
  };
}

PreparedWrite PrepareDelete(const Given& given) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  return [id, given](ConfigStore& store) {
    AtRevision(store, id, given, [&] {
      if (store.GetRevision(id) == TarnConfigStore::kDefaultRevision) {
        RaiseNotStored(id);
      }
      store.Delete(id);
    });
    return Notes();
  };
}

}  // namespace tarnctl
