#include "next_boot_verbs.h"

#include "tarnconfigstore/listing.h"

#include "descriptions.h"
#include "failure.h"
#include "given_object.h"
#include "instance_filter.h"
#include "object_name.h"
#include "object_output.h"
#include "store_access.h"

#include <cstddef>
#include <cstdio>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::StagedChange;

std::vector<StagedChange> ListStagedOfType(const ConfigStoreObjectId& id) {
  return TarnConfigStore::ListStaged({id.key, id.group, id.component});
}

}  // namespace

void GetStaged(const std::string& object, const std::string& member, const Output& output) {
  const ConfigStoreObjectId id = ParseObject(object);
  const MemberPath path = ParseMemberIfGiven(member);
  const auto staged = OpenStore()->GetNextBootStore()->Get(id);
  if (!staged) {
    const bool goes = !TarnConfigStore::ListStaged(id).empty();
    throw ToolError(ExitCode::NOT_FOUND,
                    goes ? "the object " + FormatObject(id) + " is staged to be deleted"
                         : "no object " + FormatObject(id) + " is staged");
  }
  PrintObject(*staged, path, output);
}

void GetStagedInstances(const std::string& type, const std::vector<std::string>& conditions,
                        const Output& output) {
  const ConfigStoreObjectId id = ParseType(type);
  const auto nextBoot = OpenStore()->GetNextBootStore();
  PrintObjects(nextBoot->GetInstances(MakeFilter(id, conditions)), output);
}

void StageObject(const std::string& object, const std::vector<std::string>& data) {
  const ConfigStoreObjectId id = ParseObject(object);
  const TypeSchema schema(id);
  const auto given = MakeObject(id, data, schema);
  OpenStore()->GetNextBootStore()->Set(given);
}

void StageDelete(const std::string& object) {
  const ConfigStoreObjectId id = ParseObject(object);
  const auto store = OpenStore();
  const auto nextBoot = store->GetNextBootStore();
  if (store->GetRevision(id) == TarnConfigStore::kDefaultRevision && !nextBoot->Get(id)) {
    throw ToolError(ExitCode::NOT_FOUND, "no object " + FormatObject(id) + " is stored or staged");
  }
  nextBoot->Delete(id);
}

void StageDeleteInstances(const std::string& type, const std::vector<std::string>& conditions) {
  const ConfigStoreObjectId id = ParseType(type);
  const auto store = OpenStore();
  const auto nextBoot = store->GetNextBootStore();
  const auto filter = MakeFilter(id, conditions);
  const std::size_t count = store->GetInstances(filter).size();
  if (count == 0) {
    RaiseNoInstances(id, conditions);
  }
  nextBoot->DeleteInstances(filter);
  std::fprintf(stderr, "tarnctl: %zu %s of %s staged to be deleted\n", count,
               count == 1 ? "instance" : "instances", FormatObject(id).c_str());
}

void ResetStaged(const std::string& object) {
  const ConfigStoreObjectId id = ParseObject(object);
  const auto nextBoot = OpenStore()->GetNextBootStore();
  const auto staged = ListStagedOfType(id);
  nextBoot->Reset(id);
  if (staged.empty()) {
    throw ToolError(ExitCode::NOT_FOUND, "nothing is staged for " + FormatObject(id));
  }
  for (const StagedChange& change : staged) {
    std::fprintf(stderr, "tarnctl: %s of %s taken back\n", NameAction(change.action),
                 FormatObject(change.id).c_str());
  }
}

void ListStagedChanges(const std::string& prefix, const Output& output) {
  output.Print(DescribeStaged(ParsePrefixIfGiven(prefix)));
}

}  // namespace tarnctl
