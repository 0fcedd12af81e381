#include "documents/part_rules.h"

#include "objects/access.h"
#include "validation/object_validation.h"

#include <algorithm>
#include <memory>
#include <string_view>

namespace TarnConfigStore {
namespace {

const RuleSet& RulesOf(Section section) {
  switch (section) {
    case Section::VITAL:
      return VitalRules();
    case Section::CACHED:
      return CachedRules();
    case Section::USER:
    case Section::AUTOMATIC:
    case Section::PENDING:
      break;
  }
  return PartialRules();  // what one part leaves out, others may hold
}

bool HoldsOnlyIds(const Json::Value& value, Json::SchemaPlace place) {
  if (value.IsArray()) {
    return std::all_of(value.Begin(), value.End(), [&](const Json::Value& element) {
      return element.IsObject() && HoldsOnlyIds(element, place.Items());
    });
  }
  return value.IsObject() &&
         std::all_of(value.MemberBegin(), value.MemberEnd(), [&](const auto& member) {
           const std::string_view name = Json::Text(member.name);
           return place.IsIdMember(name) || (Json::IsContainer(member.value) &&
                                             HoldsOnlyIds(member.value, place.Property(name)));
         });
}

// Takes out the members that hold nothing but ids.
void DropBareIds(Json::Value& value, Json::SchemaPlace place) {
  if (value.IsArray()) {
    for (Json::Value& element : value.GetArray()) {
      DropBareIds(element, place.Items());
    }
    return;
  }
  if (!value.IsObject()) {
    return;
  }
  for (auto member = value.MemberBegin(); member != value.MemberEnd();) {
    const Json::SchemaPlace property = place.Property(Json::Text(member->name));
    if (Json::IsContainer(member->value) && HoldsOnlyIds(member->value, property)) {
      member = value.EraseMember(member);
    } else {
      DropBareIds(member++->value, property);
    }
  }
}

}  // namespace

std::vector<ErrorInfo> FaultsOfPart(const SchemaHandle& schema, const ObjectHandle& object,
                                    Section section) {
  std::vector<ErrorInfo> errors;
  if (ValidateObjectData(schema, object, RulesOf(section), errors, true)) {
    return {};
  }
  const auto rest = std::make_shared<ConfigStoreObject>(object->GetConfigStoreObjectId());
  ConfigStoreObjectImpl& data = Internal::Access::Of(*rest);
  data.GetRoot().CopyFrom(Internal::Access::Of(*object).GetRoot(), data.GetAllocator());
  DropBareIds(data.GetRoot(), schema->GetSchemaPlace());
  std::vector<ErrorInfo> others;
  const bool fits = ValidateObjectData(schema, rest, RulesOf(section), others, true) &&
                    ValidateObjectData(schema, object, UpdateRules(), others, true);
  return fits ? std::vector<ErrorInfo>() : errors;
}

}  // namespace TarnConfigStore
