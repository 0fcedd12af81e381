#include "validation/object_validation.h"

#include "platform/generated_instance_id.h"
#include "platform/json_validator.h"
#include "platform/logger.h"

#include "errors/raise.h"
#include "json/number_kinds.h"
#include "json/pointer.h"
#include "json/utf8.h"
#include "objects/access.h"
#include "objects/division.h"
#include "objects/document.h"
#include "objects/schema_lookup.h"
#include "objects/working_data.h"
#include "validation/cleanup.h"

#include <utility>

namespace TarnConfigStore {
namespace {

void AddFinding(ErrorInfo finding, std::vector<ErrorInfo>& errors, bool quiet) {
  if (!quiet) {
    CSLogger::LogErrCode(CSLogger::kFailure, CS_VALIDATION_FINDING, finding.field.c_str(),
                         finding.error.c_str());
  }
  errors.push_back(std::move(finding));
}

// The member in which the data of this instance hold its id; empty where they hold none.
std::string_view IdMember(const SchemaHandle& schema, const ConfigStoreObjectId& id) {
  return schema->IsNonSingleton() && !id.instanceId.empty()
             ? schema->GetSchemaPlace().InstanceIdMember()
             : std::string_view();
}

// Data without an id; nothing at all has no id to hold either.
bool LacksId(const Json::Value& data, std::string_view member) {
  if (member.empty() || data.ObjectEmpty()) {
    return false;
  }
  const Json::Value* id = Json::FindMember(data, member);
  return id == nullptr || id->IsNull();
}

void PutId(Json::Value& data, std::string_view member, const std::string& id,
           Json::Allocator& allocator) {
  data.RemoveMember(Json::Reference(member));  // a null counts as absent
  Json::AddMember(data, Json::Copy(member, allocator), Json::Copy(id, allocator), allocator);
}

void CheckId(const Json::Value& data, std::string_view member, const std::string& id,
             std::vector<ErrorInfo>& errors, bool quiet) {
  const Json::Value* given = member.empty() ? nullptr : Json::FindMember(data, member);
  if (given == nullptr || !given->IsString() || given->GetStringLength() == 0 ||
      Json::Text(*given) == id) {
    return;  // what is no id at all is the schema's to refuse
  }
  std::string field;
  Json::AppendToken(field, member);
  AddFinding({std::move(field), "expected \"" + Json::Utf8::Escaped(id) + "\", found \"" +
                                    Json::Utf8::Escaped(Json::Text(*given)) + "\""},
             errors, quiet);
}

// What storing adds to data that fit: the instance's id, and the kinds of numbers.
void Complete(const SchemaHandle& schema, const ObjectHandle& object) {
  const ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
  ConfigStoreObjectImpl& data = Internal::Access::Of(*object);
  const std::string_view member = IdMember(schema, id);
  if (LacksId(data.GetRoot(), member)) {
    PutId(data.GetRoot(), member, id.instanceId, data.GetAllocator());
  }
  Json::SettleNumbers(data.GetRoot(), schema->GetSchemaPlace());
}

void RequireAsItIs(const SchemaHandle& schema, const ObjectHandle& object, const RuleSet& rules,
                   CSErrorCodes code) {
  std::vector<ErrorInfo> errors;
  if (!ValidateObjectData(schema, object, rules, errors, false)) {
    ThrowException<ValidationException>(code, errors);
  }
}

void Require(const SchemaHandle& schema, const ObjectHandle& object, const RuleSet& rules,
             CSErrorCodes code) {
  RequireAsItIs(schema, object, rules, code);
  Complete(schema, object);
}

// Whether the object fits once it is cleaned; if not, it is as it was.
bool FitsCleaned(const SchemaHandle& schema, const ObjectHandle& object, const RuleSet& rules,
                 Writes writes) {
  WorkingData cleaned(object);
  CleanupObject(object, schema, writes);
  std::vector<ErrorInfo> errors;
  if (!ValidateObjectData(schema, object, rules, errors, true)) {
    return false;
  }
  Complete(schema, object);
  cleaned.Keep();
  return true;
}

// Findings are of what was given. What fits as it was given, but not without what is empty (a schema
// may count members), stays as it is.
void CleanAndRequire(const SchemaHandle& schema, const ObjectHandle& object, const RuleSet& rules,
                     CSErrorCodes code, Writes writes) {
  if (!HoldsEmptyContent(Internal::Access::Of(*object).GetRoot())) {
    CleanupObject(object, schema, writes);
  } else if (FitsCleaned(schema, object, rules, writes)) {
    return;
  }
  Require(schema, object, rules, code);
}

// A tag at the root of a schema has to be true or false.
bool HasTag(const Json::Value& schema, const char* tag) {
  const Json::Value* value = Json::FindMember(schema, tag);
  return value != nullptr && value->GetBool();
}

const RuleSet& RulesOfType(const Json::Value& schema) {
  if (HasTag(schema, "vital")) {
    return VitalRules();
  }
  return HasTag(schema, "cached") ? CachedRules() : SetRules();
}

}  // namespace

bool StoringChangesData(const SchemaHandle& schema, const ObjectHandle& object) {
  const Json::Value& data = Internal::Access::Of(*object).GetRoot();
  if (!data.IsObject()) {
    return false;
  }
  const Json::SchemaPlace place = schema->GetSchemaPlace();
  return (!data.ObjectEmpty() && place.HoldsNothingBesideId(data)) || HoldsEmptyContent(data) ||
         LacksId(data, IdMember(schema, object->GetConfigStoreObjectId())) ||
         !Json::NumbersAreSettled(data, place) ||
         (place.HoldsGeneratedIds() && LacksGeneratedInstanceId(place, data));
}

bool ValidateObjectData(const SchemaHandle& schema, const ObjectHandle& object,
                        const RuleSet& rules, std::vector<ErrorInfo>& errors, bool quiet) {
  const Json::Value& value = Internal::Access::Of(*object).GetRoot();
  if (!value.IsObject()) {
    AppendErrorInfo("/", CS_INCORRECT_TYPE, errors, "Expected JSON of type object.");
    return false;
  }
  const std::string& id = object->GetConfigStoreObjectId().instanceId;
  const std::string_view member = IdMember(schema, object->GetConfigStoreObjectId());
  if (LacksId(value, member)) {
    Json::Document whole;
    whole.CopyFrom(value, whole.GetAllocator());
    PutId(whole, member, id, whole.GetAllocator());
    ValidateValue(schema->GetSchemaDocument(), whole, rules, errors, quiet);
  } else {
    ValidateValue(schema->GetSchemaDocument(), value, rules, errors, quiet);
    CheckId(value, member, id, errors, quiet);
  }
  return errors.empty();
}

void ValidateValue(const Json::Value& schema, const Json::Value& value, const RuleSet& rules,
                   std::vector<ErrorInfo>& errors, bool quiet) {
  Json::Document result;
  JsonValidator::Validate(schema, value, result, rules, kEmptyString);
  ConvertFindings(result, errors, quiet);
}

void ConvertFindings(const Json::Value& result, std::vector<ErrorInfo>& errors, bool quiet) {
  for (const Json::Value& finding : result.GetArray()) {
    AddFinding({finding["field"].GetString(), finding["error"].GetString()}, errors, quiet);
  }
}

void ValidateCachedConfig(const SchemaHandle& schema, const ObjectHandle& object) {
  Require(schema, object, CachedRules(), CS_CACHED_CONFIG_INVALID);
}

void ValidateVitalConfig(const SchemaHandle& schema, const ObjectHandle& object) {
  Require(schema, object, VitalRules(), CS_VITAL_CONFIG_INVALID);
}

void ValidateUserConfig(const SchemaHandle& schema, const ObjectHandle& object) {
  CleanAndRequire(schema, object, UserRules(), CS_USER_CONFIG_INVALID, Writes::ONE_PART);
}

void ValidatePartialConfig(const SchemaHandle& schema, const ObjectHandle& object) {
  CleanAndRequire(schema, object, PartialRules(), CS_PARTIAL_CONFIG_INVALID, Writes::ONE_PART);
}

void ValidateSet(const SchemaHandle& schema, const ObjectHandle& object) {
  CleanAndRequire(schema, object, SetRules(), CS_SET_INVALID, Writes::WHOLE_ROW);
}

void ValidateUnchanged(const SchemaHandle& schema, const ObjectHandle& object) {
  RequireAsItIs(schema, object, SetRules(), CS_SET_INVALID);
}

void ValidateUpdate(const SchemaHandle& schema, const ObjectHandle& object) {
  CleanAndRequire(schema, object, UpdateRules(), CS_UPDATE_INVALID, Writes::ONE_PART);
}

void ValidateNames(const SchemaHandle& schema, const ObjectHandle& object) {
  std::vector<ErrorInfo> errors;
  ValidateValue(schema->GetSchemaDocument(), Internal::Access::Of(*object).GetRoot(), NameRules(),
                errors, false);
  if (!errors.empty()) {
    ThrowException<ValidationException>(CS_UPDATE_INVALID, errors);
  }
}

void ValidateUpdated(const SchemaHandle& schema, const ObjectHandle& object, unsigned written) {
  RequireAsItIs(schema, object, UpdatedRules(written), CS_UPDATE_INVALID);
}

void ValidateRestored(const SchemaHandle& schema, const ObjectHandle& object) {
  Require(schema, object, UpdatedRules(static_cast<unsigned>(Json::Kind::USER)),
          CS_PARTIAL_CONFIG_INVALID);
}

void ValidateNoCachedData(const SchemaHandle& schema, const ObjectHandle& object) {
  const std::optional<std::string> cached = DivideObject(*object, *schema, EXTERNAL).values.cached;
  if (!cached) {
    return;
  }
  std::vector<ErrorInfo> errors;
  const auto part = CreateDocumentFromString(*cached);
  for (const auto& member : part->GetJsonValuePtr()->GetObject()) {
    std::string field;
    Json::AppendToken(field, Json::Text(member.name));
    AddFinding({std::move(field), "cached configuration may not be given here"}, errors, false);
  }
  ThrowException<ValidationException>(CS_SET_INVALID, errors);
}

void ValidateApplyFile(const Json::Value& value, const Json::Value& schema) {
  std::vector<ErrorInfo> errors;
  ValidateValue(schema, value, ApplyFileRules(), errors, false);
  if (!errors.empty()) {
    ThrowException<ValidationException>(CS_APPLY_FILE_INVALID, errors);
  }
}

bool ValidateIdentity(const SchemaHandle& schema, const ConfigStoreObjectId& id,
                      std::vector<ErrorInfo>& errors) {
  const auto refuse = [&](CSErrorCodes code) {
    AppendErrorInfo("/", code, errors, "/" + id.component + "/" + id.group + "/" + id.key);
    return false;
  };
  if (!schema) {
    return refuse(CS_SCHEMA_NOT_FOUND);
  }
  if (schema->IsNonSingleton() && id.instanceId.empty()) {
    return refuse(CS_SUBOBJECT_NOT_FOUND);
  }
  if (!schema->IsNonSingleton() && !id.instanceId.empty()) {
    return refuse(CS_SUBOBJECT_INSTANCE_NOT_FOUND);
  }
  return true;
}

void ValidateCSO(const SchemaHandle& schema, const ObjectHandle& object,
                 std::vector<ErrorInfo>& errors) {
  if (ValidateIdentity(schema, object->GetConfigStoreObjectId(), errors)) {
    ValidateObjectData(schema, object, RulesOfType(schema->GetSchemaDocument()), errors, true);
  }
}

bool validateObject(const ObjectHandle& object, ACTION action, std::vector<ErrorInfo>& errors,
                    const std::string& /*unused*/) {
  const ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
  const SchemaHandle schema = FindSchema(id);
  if (!schema) {
    CSLogger::LogErrCode(CSLogger::kFailure, CS_SCHEMA_NOT_FOUND, id.toString().c_str());
    errors.push_back({id.component + "/" + id.key, "Schema not found."});
    return false;
  }
  const bool writesData = action != ACTION_DELETE && action != ACTION_RESET;
  if (writesData && !ValidateObjectData(schema, object, UserRules(), errors, false)) {
    CSLogger::Log(CSLogger::kFailure, "validate completed with errors");
    return false;
  }
  CSLogger::Log(CSLogger::kOutcome, "validate completed successfully");
  return true;
}

}  // namespace TarnConfigStore
