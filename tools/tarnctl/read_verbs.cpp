#include "read_verbs.h"

#include "tarnconfigstore/listing.h"

#include "descriptions.h"
#include "failure.h"
#include "instance_filter.h"
#include "object_name.h"
#include "object_output.h"
#include "store_access.h"

#include <memory>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

std::shared_ptr<ConfigStoreObject> Read(const ConfigStoreObjectId& id, Source source) {
  const auto store = OpenStore();
  if (source == Source::SHIPPED) {
    if (auto shipped = store->GetDefaultConfig(id)) {
      return shipped;
    }
    throw ToolError(ExitCode::NOT_FOUND, "no object " + FormatObject(id) + " is shipped");
  }
  if (auto stored = store->Get(id)) {
    return stored;
  }
  RaiseNotStored(id);
}

}  // namespace

void GetObject(const std::string& object, const std::string& member, Source source,
               const Output& output) {
  const ConfigStoreObjectId id = ParseObject(object);
  const MemberPath path = ParseMemberIfGiven(member);
  PrintObject(*Read(id, source), path, output);
}

void GetInstances(const std::string& type, const std::vector<std::string>& conditions,
                  Source source, const Output& output) {
  const ConfigStoreObjectId id = ParseType(type);
  const auto store = OpenStore();
  const auto filter = MakeFilter(id, conditions);
  PrintObjects(source == Source::SHIPPED ? store->GetDefaultConfigInstances(filter)
                                         : store->GetInstances(filter),
               output);
}

void ListObjects(const std::string& prefix, const Output& output) {
  Json list = Json::array();
  for (const auto& object : TarnConfigStore::ListStored(ParsePrefixIfGiven(prefix))) {
    list.push_back(Describe(object));
  }
  output.Print(list);
}

void ShowRevision(const std::string& object, const Output& output) {
  const ConfigStoreObjectId id = ParseObject(object);
  const std::int32_t revision = OpenStore()->GetRevision(id);
  if (revision == TarnConfigStore::kDefaultRevision) {
    RaiseNotStored(id);
  }
  output.PrintMember(revision);
}

}  // namespace tarnctl
