#include "object_verbs.h"

#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/listing.h"

#include "failure.h"
#include "findings.h"
#include "input.h"
#include "member_value.h"
#include "object_name.h"
#include "type_schema.h"

#include <memory>
#include <stdexcept>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStore;
using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

std::shared_ptr<ConfigStore> OpenStore() {
  return ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
}

[[noreturn]] void RaiseNotStored(const ConfigStoreObjectId& id) {
  throw ToolError(ExitCode::NOT_FOUND, "no object " + FormatObject(id) + " is stored");
}

/// The text of an object's data, known to be a JSON object. The text itself goes to the library, so
/// that numbers arrive as they were written.
std::string ReadData(const std::string& path) {
  std::string text = ReadInput(path);
  std::string reason = "is no JSON object";
  try {
    if (ParseStrictly(text).is_object()) {
      return text;
    }
  } catch (const std::invalid_argument& error) {
    reason = error.what();
  }
  throw ToolError(ExitCode::INVALID, "the data does not describe an object",
                  TarnConfigStore::CS_JSON_PARSE_FAILED, {{"/", reason}});
}

/// Data without the instance id gets the one of the object's name; any other is the finding that is
/// returned.
Findings KeepInstanceId(ConfigStoreObject& object, const TypeSchema& schema) {
  const std::string& instanceId = object.GetConfigStoreObjectId().instanceId;
  const std::optional<std::string> member = schema.InstanceIdMember();
  if (!member || instanceId.empty()) {
    return {};
  }
  if (!object.CheckKey(member->c_str())) {
    object.SetValue(member->c_str(), instanceId);
    return {};
  }
  const Json data = Json::parse(object.GetData());
  if (data.at(*member) == instanceId) {
    return {};
  }
  return {{FormatPointer({*member}),
           "expected \"" + instanceId + "\", found " + data.at(*member).dump()}};
}

std::shared_ptr<ConfigStoreObject> ReadObject(const ConfigStoreObjectId& id,
                                              const std::string& path) {
  const std::string text = ReadData(path);
  auto object = std::make_shared<ConfigStoreObject>(id);
  object->SetData(text.c_str());
  return object;
}

std::shared_ptr<ConfigStoreObject> MakeObject(const ConfigStoreObjectId& id,
                                              const std::vector<std::string>& members,
                                              const TypeSchema& schema) {
  auto object = std::make_shared<ConfigStoreObject>(id);
  Json data = Json::parse(object->GetData());
  AddMembers(data, members, schema);
  object->SetData(data.dump().c_str());
  return object;
}

Findings FindFaults(const ConfigStoreObjectId& id, const std::string& path,
                    const TypeSchema& schema) {
  const std::shared_ptr<ConfigStore> store = OpenStore();
  std::shared_ptr<ConfigStoreObject> object;
  try {
    object = ReadObject(id, path);
  } catch (const ToolError& error) {
    if (error.GetFailure().details.empty()) {
      throw;
    }
    return error.GetFailure().details;  // data that describes no object
  }
  Findings findings = KeepInstanceId(*object, schema);
  const Findings misfits = store->Validate(object);
  findings.insert(findings.end(), misfits.begin(), misfits.end());
  return findings;
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

void GetObject(const std::string& object, const std::string& member, const Output& output) {
  const ConfigStoreObjectId id = ParseObject(object);
  const MemberPath path = member.empty() ? MemberPath() : ParseMember(member);
  const std::shared_ptr<ConfigStoreObject> stored = OpenStore()->Get(id);
  if (!stored) {
    RaiseNotStored(id);
  }
  const Json data = Json::parse(stored->GetData());
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

void SetObject(const std::string& object, const std::vector<std::string>& data) {
  const ConfigStoreObjectId id = ParseObject(object);
  const bool fromFile = data.size() == 1 && data.front().find('=') == std::string::npos;
  const TypeSchema schema(id);
  const auto changed = fromFile ? ReadObject(id, data.front()) : MakeObject(id, data, schema);
  if (Findings findings = KeepInstanceId(*changed, schema); !findings.empty()) {
    throw ToolError(ExitCode::INVALID, "the data is of another instance than " + id.instanceId,
                    TarnConfigStore::CS_GENERIC, std::move(findings));
  }

  const std::shared_ptr<ConfigStore> store = OpenStore();
  const std::int32_t revision = store->GetRevision(id);
  store->Set(changed, TarnConfigStore::EXTERNAL);
  if (store->GetRevision(id) == revision) {
    throw ToolError(ExitCode::INVALID,
                    "nothing was written: without its empty members the object holds no data");
  }
}

void ValidateObject(const std::string& object, const std::string& path, const Output& output) {
  const ConfigStoreObjectId id = ParseObject(object);
  const TypeSchema schema(id);
  PrintFindings(FindFaults(id, path, schema), output);
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
