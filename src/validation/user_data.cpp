#include "validation/user_data.h"

#include "json/type_schema_view.h"
#include "objects/config_store_object_impl.h"

#include <algorithm>

namespace TarnConfigStore {
namespace {

bool IsUserData(const Json::Value& value, Json::SchemaPlace schema) {
  if (schema.MentionsTag()) {
    return false;
  }
  if (value.IsObject()) {
    return std::any_of(value.MemberBegin(), value.MemberEnd(), [&](const auto& member) {
      return IsUserData(member.value, schema.Property(Json::Text(member.name)));
    });
  }
  if (value.IsArray()) {
    return std::any_of(value.Begin(), value.End(), [&](const Json::Value& element) {
      return IsUserData(element, schema.Items());
    });
  }
  return !schema.IsInstanceId();
}

}  // namespace

bool isUserType(const ObjectHandle& object, const SchemaHandle& schema) {
  return IsUserData(object->GetImplementation()->GetRoot(), schema->GetSchemaPlace());
}

}  // namespace TarnConfigStore
