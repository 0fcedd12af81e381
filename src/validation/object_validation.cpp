#include "validation/object_validation.h"

#include "platform/json_validator.h"
#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/config_store_object_impl.h"
#include "validation/cleanup.h"

namespace TarnConfigStore {

bool ValidateObjectData(const SchemaHandle& schema, const ObjectHandle& object,
                        const RuleSet& rules, std::vector<ErrorInfo>& errors, bool quiet) {
  const Json::Value& value = object->GetImplementation()->GetRoot();
  if (!value.IsObject()) {
    AppendErrorInfo("/", CS_INCORRECT_TYPE, errors, "Expected JSON of type object.");
    return false;
  }
  Json::Document result;
  JsonValidator::Validate(schema->GetSchemaDocument(), value, result, rules, kEmptyString);
  ConvertFindings(result, errors, quiet);
  return errors.empty();
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

void ValidateSet(const SchemaHandle& schema, const ObjectHandle& object) {
  CleanupObject(object, schema);
  std::vector<ErrorInfo> errors;
  if (!ValidateObjectData(schema, object, SetRules(), errors, false)) {
    ThrowException<ValidationException>(CS_SET_INVALID, errors);
  }
}

}  // namespace TarnConfigStore
