#include "object_output.h"

#include "failure.h"
#include "json_text.h"
#include "type_schema.h"

namespace tarnctl {

using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

void PrintObject(const ConfigStoreObject& object, const MemberPath& member, const Output& output) {
  const Json data = Json::parse(object.GetData());
  if (member.empty()) {
    output.Print(data);
    return;
  }
  const ConfigStoreObjectId& id = object.GetConfigStoreObjectId();
  const TypeSchema schema(id);
  const Json* value = schema.Read(data, member);
  if (value == nullptr) {
    throw ToolError(ExitCode::NOT_FOUND, "the object " + FormatObject(id) + " has no member \"" +
                                             FormatMember(member) + "\"");
  }
  output.PrintMember(*value);
}

void PrintObjects(const std::vector<std::shared_ptr<ConfigStoreObject>>& objects,
                  const Output& output) {
  Json list = Json::array();
  for (const auto& object : objects) {
    list.push_back(Json::parse(object->GetData()));
  }
  output.Print(list);
}

}  // namespace tarnctl
