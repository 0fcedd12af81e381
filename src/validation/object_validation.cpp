#include "validation/object_validation.h"

#include "platform/json_validator.h"
#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/config_store_object_impl.h"
#include "objects/schema_lookup.h"
#include "validation/cleanup.h"

namespace TarnConfigStore {
namespace {

void Require(const SchemaHandle& schema, const ObjectHandle& object, const RuleSet& rules,
             CSErrorCodes code) {
  std::vector<ErrorInfo> errors;
  if (!ValidateObjectData(schema, object, rules, errors, false)) {
    ThrowException<ValidationException>(code, errors);
  }
}

void CleanAndRequire(const SchemaHandle& schema, const ObjectHandle& object, const RuleSet& rules,
                     CSErrorCodes code) {
  CleanupObject(object, schema);
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

bool ValidateObjectData(const SchemaHandle& schema, const ObjectHandle& object,
                        const RuleSet& rules, std::vector<ErrorInfo>& errors, bool quiet) {
  const Json::Value& value = object->GetImplementation()->GetRoot();
  if (!value.IsObject()) {
    AppendErrorInfo("/", CS_INCORRECT_TYPE, errors, "Expected JSON of type object.");
    return false;
  }
  ValidateValue(schema->GetSchemaDocument(), value, rules, errors, quiet);
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
    errors.push_back({finding["field"].GetString(), finding["error"].GetString()});
    if (!quiet) {
      CSLogger::LogErrCode(0, CS_VALIDATION_FINDING, errors.back().field.c_str(),
                           errors.back().error.c_str());
    }
  }
}

void ValidateCachedConfig(const SchemaHandle& schema, const ObjectHandle& object) {
  Require(schema, object, CachedRules(), CS_CACHED_CONFIG_INVALID);
}

void ValidateVitalConfig(const SchemaHandle& schema, const ObjectHandle& object) {
  Require(schema, object, VitalRules(), CS_VITAL_CONFIG_INVALID);
}

void ValidateUserConfig(const SchemaHandle& schema, const ObjectHandle& object) {
  CleanAndRequire(schema, object, UserRules(), CS_USER_CONFIG_INVALID);
}

void ValidatePartialConfig(const SchemaHandle& schema, const ObjectHandle& object) {
  CleanAndRequire(schema, object, PartialRules(), CS_PARTIAL_CONFIG_INVALID);
}

void ValidateSet(const SchemaHandle& schema, const ObjectHandle& object) {
  CleanAndRequire(schema, object, SetRules(), CS_SET_INVALID);
}

void ValidateUpdate(const SchemaHandle& schema, const ObjectHandle& object) {
  CleanAndRequire(schema, object, UpdateRules(), CS_UPDATE_INVALID);
}

void ValidateUpdated(const SchemaHandle& schema, const ObjectHandle& object) {
  Require(schema, object, SetRules(), CS_UPDATE_INVALID);
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
    CSLogger::LogErrCode(0, CS_SCHEMA_NOT_FOUND, id.toString().c_str());
    errors.push_back({id.component + "/" + id.key, "Schema not found."});
    return false;
  }
  const bool writesData = action != ACTION_DELETE && action != ACTION_RESET;
  if (writesData && !ValidateObjectData(schema, object, UserRules(), errors, false)) {
    CSLogger::Log(0, "validate completed with errors");
    return false;
  }
  CSLogger::Log(2, "validate completed successfully");
  return true;
}

}  // namespace TarnConfigStore
