#include "errors/raise.h"

#include "platform/error_messages.h"

#include "json/utf8.h"

namespace TarnConfigStore {

// The numbers are part of the interface.
static_assert(CS_STORE_CONNECTION_FAILED == 1002 && CS_INCORRECT_TYPE == 1030 &&
              CS_INSTANCE_ID_INVALID == 1032 && CS_SCHEMA_NOT_FOUND == 1037 &&
              CS_NULL_ARGUMENT == 1041 && CS_DRIFT_INSTANCES_NOT_FOUND == 1046 &&
              CS_SUBOBJECT_NOT_FOUND == 1048 && CS_SUBOBJECT_INSTANCE_NOT_FOUND == 1049);
static_assert(CS_NO_OBJECTS == 1061 && CS_MIXED_TYPES == 1062 && CS_JSON_PARSE_FAILED == 1080 &&
              CS_JSON_FILE_FAILED == 1081 && CS_JSON_ASSERTION == 1082 &&
              CS_VALIDATION_FINDING == 1083 && CS_CACHED_CONFIG_INVALID == 1084);
static_assert(CS_VITAL_CONFIG_INVALID == 1086 && CS_USER_CONFIG_INVALID == 1087 &&
              CS_PARTIAL_CONFIG_INVALID == 1088 && CS_SET_INVALID == 1089 &&
              CS_UPDATE_INVALID == 1090 && CS_APPLY_FILE_INVALID == 1091 &&
              CS_PROCESS_START_FAILED == 1102 && CS_PROCESS_WAIT_FAILED == 1103 &&
              CS_PROCESS_EXIT_STATUS == 1104 && CS_GENERIC == 2000);

namespace {

// Arguments and names in messages come from anywhere, and go to logs and terminals.
std::string Shown(const std::string& text) {
  return Json::Utf8::WithoutControls(text);
}

}  // namespace

template <class Exception>
void ThrowException(CSErrorCodes code) {
  throw Exception(code, Format(ErrorMessageForId(code)).c_str());
}

template <class Exception>
void ThrowException(CSErrorCodes code, const std::string& argument) {
  throw Exception(code, Format(ErrorMessageForId(code), Shown(argument).c_str()).c_str());
}

template <class Exception>
void ThrowException(CSErrorCodes code, std::vector<ErrorInfo>& errors) {
  throw Exception(code, Format(ErrorMessageForId(code)).c_str(), errors);
}

template void ThrowException<InvalidArgumentException>(CSErrorCodes code);
template void ThrowException<ConfigStoreException>(CSErrorCodes code, const std::string& argument);
template void ThrowException<InvalidArgumentException>(CSErrorCodes code,
                                                       const std::string& argument);
template void ThrowException<ValidationException>(CSErrorCodes code,
                                                  std::vector<ErrorInfo>& errors);

void ThrowFailure(const std::string& message) {
  throw ConfigStoreException(CS_GENERIC, Shown(message).c_str());
}

void ThrowArgument(const std::string& message) {
  throw InvalidArgumentException(CS_GENERIC, Shown(message).c_str());
}

void ThrowInvalidType(std::string_view key) {
  throw InvalidTypeException(
      CS_GENERIC, Shown(std::string("Invalid type specified for: ").append(key)).c_str());
}

void ThrowJsonAssertion(const std::string& message) {
  throw ConfigStoreException(CS_JSON_ASSERTION, Shown(message).c_str());
}

void ThrowRefusal(const char* message) {
  std::vector<ErrorInfo> none;
  throw ValidationException(CS_GENERIC, message, none);
}

void AppendErrorInfo(const std::string& field, CSErrorCodes code, std::vector<ErrorInfo>& errors,
                     const std::string& argument) {
  errors.push_back({field, Format(ErrorMessageForId(code), Shown(argument).c_str())});
}

}  // namespace TarnConfigStore
