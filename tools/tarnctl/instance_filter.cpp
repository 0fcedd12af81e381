#include "instance_filter.h"

#include "failure.h"
#include "member_value.h"
#include "object_name.h"
#include "type_schema.h"

#include <utility>

namespace tarnctl {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::FilterSpecObject;

std::shared_ptr<FilterSpecObject> MakeFilter(const ConfigStoreObjectId& type,
                                             const std::vector<std::string>& conditions) {
  const TypeSchema schema(type);
  auto filter = std::make_shared<FilterSpecObject>(type);
  if (conditions.empty()) {
    return filter;
  }
  Json data = Json::object();
  AddMembers(data, conditions, schema);
  // A condition on such a member would quietly match nothing.
  if (Findings unknown = schema.FindUndeclared(data); !unknown.empty()) {
    throw ToolError(ExitCode::INVALID, "the type " + FormatObject(type) + " has no such member",
                    TarnConfigStore::CS_GENERIC, std::move(unknown));
  }
  filter->SetData(data.dump().c_str());
  return filter;
}

}  // namespace tarnctl
