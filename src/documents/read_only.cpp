#include "documents/read_only.h"

#include "platform/json_validator.h"

#include "json/equality.h"
#include "json/pointer.h"
#include "objects/named_places.h"
#include "validation/object_validation.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

namespace TarnConfigStore {
namespace {

// The same place in two values.
struct Both {
  const Json::Value* given;
  const Json::Value* stored;  // null where there is none
  Json::SchemaPlace place;
};

const Json::Value* SameElement(const Both& list, const Json::Value& given, rapidjson::SizeType at) {
  if (list.stored == nullptr || !list.stored->IsArray()) {
    return nullptr;
  }
  const std::string_view idMember = list.place.Items().InstanceIdMember();
  const Json::Value* id = idMember.empty() ? nullptr : Json::FindMember(given, idMember);
  if (id == nullptr) {
    return at < list.stored->Size() ? &(*list.stored)[at] : nullptr;
  }
  return id->IsString() ? FindInstance(*list.stored, idMember, Json::Text(*id)) : nullptr;
}

Both Below(const Both& at, const std::string& name) {
  if (at.given->IsArray()) {
    rapidjson::SizeType index = 0;
    std::from_chars(name.data(), name.data() + name.size(), index);
    const Json::Value* given = index < at.given->Size() ? &(*at.given)[index] : nullptr;
    return {given, given == nullptr ? nullptr : SameElement(at, *given, index), at.place.Items()};
  }
  return {Json::FindMember(*at.given, name),
          at.stored == nullptr ? nullptr : Json::FindMember(*at.stored, name),
          at.place.Property(name)};
}

bool IsTheSame(const std::string& pointer, Both at) {
  const auto names = Json::ParsePointer(pointer == "/" ? "" : pointer);
  if (!names) {
    return false;
  }
  for (const std::string& name : *names) {
    at = Below(at, name);
    if (at.given == nullptr) {
      return false;
    }
  }
  return at.stored != nullptr && Json::Equal(*at.given, *at.stored);
}

}  // namespace

void FindReadOnlyChanges(const Json::Value& value, const Json::Value* stored,
                         const TarnSchemaStore::SchemaObject& type,
                         std::vector<ErrorInfo>& findings) {
  const Json::Value& schema = type.GetSchemaDocument();
  try {
    ValidateApplyFile(value, schema);
    return;
  } catch (const ValidationException& refused) {
    // Of what is refused here, the rest has been judged together with the row.
    std::vector<ErrorInfo> readOnly;
    ValidateValue(schema, value, {JsonValidator::RULE_NO_READ_ONLY}, readOnly, true);
    for (const ErrorInfo& finding : refused.GetErrors()) {
      if (std::find(readOnly.begin(), readOnly.end(), finding) != readOnly.end() &&
          !IsTheSame(finding.field, {&value, stored, type.GetSchemaPlace()})) {
        findings.push_back(finding);
      }
    }
  }
}

}  // namespace TarnConfigStore
