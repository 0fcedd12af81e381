#include "read_verbs.h"

#include "tarnconfigstore/listing.h"

#include "failure.h"
#include "instance_filter.h"
#include "object_name.h"
#include "store_access.h"
#include "type_schema.h"

#include <memory>
#include <utility>

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

Json Describe(const TarnConfigStore::StoredObject& object) {
  Json values = Json::array();
  const std::pair<bool, const char*> kinds[] = {{object.hasUser, "user"},
                                                {object.hasAutomatic, "automatic"},
                                                {object.hasVital, "vital"},
                                                {object.hasCached, "cached"},
                                                {object.hasPending, "pending"}};
  for (const auto& [present, name] : kinds) {
    if (present) {
      values.push_back(name);
    }
  }
  return {{"object", FormatObject(object.id)},   {"version", object.version},
          {"revision", object.revision},         {"creationTime", object.creationTime},
          {"modifiedTime", object.modifiedTime}, {"confirmed", object.confirmed},
          {"values", std::move(values)}};
}

}  // namespace

void GetObject(const std::string& object, const std::string& member, Source source,
               const Output& output) {
  const ConfigStoreObjectId id = ParseObject(object);
  const MemberPath path = member.empty() ? MemberPath() : ParseMember(member);
  const Json data = Json::parse(Read(id, source)->GetData());
  if (path.empty()) {
    output.Print(data);
    return;
  }
  const TypeSchema schema(id);
  const Json* value = schema.Read(data, path);
  if (value == nullptr) {
    throw ToolError(ExitCode::NOT_FOUND,
                    "the object " + FormatObject(id) + " has no member \"" + member + "\"");
  }
  output.PrintMember(*value);
}

void GetInstances(const std::string& type, const std::vector<std::string>& conditions,
                  Source source, const Output& output) {
  const ConfigStoreObjectId id = ParseType(type);
  const auto store = OpenStore();
  const auto filter = MakeFilter(id, conditions);
  Json list = Json::array();
  for (const auto& object : source == Source::SHIPPED ? store->GetDefaultConfigInstances(filter)
                                                      : store->GetInstances(filter)) {
    list.push_back(Json::parse(object->GetData()));
  }
  output.Print(list);
}

void ListObjects(const std::string& prefix, const Output& output) {
  const ConfigStoreObjectId id =
      prefix.empty() ? ConfigStoreObjectId("", "", "") : ParsePrefix(prefix);
  Json list = Json::array();
  for (const auto& object : TarnConfigStore::ListStored(id)) {
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
