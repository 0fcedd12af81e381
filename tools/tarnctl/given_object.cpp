#include "given_object.h"

#include "input.h"
#include "member_value.h"
#include "object_name.h"

#include <optional>
#include <stdexcept>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

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

bool IsFile(const std::vector<std::string>& data) {
  return data.size() == 1 && data.front().find('=') == std::string::npos;
}

std::shared_ptr<ConfigStoreObject> CollectMembers(const ConfigStoreObjectId& id,
                                                  const std::vector<std::string>& members,
                                                  const TypeSchema& schema) {
  auto object = std::make_shared<ConfigStoreObject>(id);
  Json data = Json::parse(object->GetData());
  AddMembers(data, members, schema);
  object->SetData(data.dump().c_str());
  return object;
}

}  // namespace

std::shared_ptr<ConfigStoreObject> ReadObject(const ConfigStoreObjectId& id,
                                              const std::string& path) {
  const std::string text = ReadData(path);
  auto object = std::make_shared<ConfigStoreObject>(id);
  object->SetData(text.c_str());
  return object;
}

std::shared_ptr<ConfigStoreObject> MakeObject(const ConfigStoreObjectId& id,
                                              const std::vector<std::string>& data,
                                              const TypeSchema& schema) {
  auto object = IsFile(data) ? ReadObject(id, data.front()) : CollectMembers(id, data, schema);
  if (Findings findings = KeepInstanceId(*object, schema); !findings.empty()) {
    throw ToolError(ExitCode::INVALID, "the data is of another instance than " + id.instanceId,
                    TarnConfigStore::CS_GENERIC, std::move(findings));
  }
  return object;
}

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

}  // namespace tarnctl
