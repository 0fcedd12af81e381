#include "platform/error_messages.h"

#include <cstddef>

using namespace TarnConfigStore;

namespace {

struct Message {
  CSErrorCodes code;
  std::size_t conversions;
  const char* text;
};

constexpr Message kMessages[] = {
    {CS_STORE_CONNECTION_FAILED, 1, "Cannot connect to the store database %s."},
    {CS_INCORRECT_TYPE, 1, "Incorrect type: %s"},
    {CS_INSTANCE_ID_INVALID, 1, "Member %s does not hold an instance id."},
    {CS_SCHEMA_NOT_FOUND, 1, "No schema is installed for %s."},
    {CS_NULL_ARGUMENT, 0, "The argument is null."},
    {CS_DRIFT_INSTANCES_NOT_FOUND, 1, "No sub-object instances are held for %s."},
    {CS_SUBOBJECT_NOT_FOUND, 1,
     "No object is found at %s; where there are instances, one has to be named."},
    {CS_SUBOBJECT_INSTANCE_NOT_FOUND, 1,
     "No instance is found at %s; where there are no instances, none can be named."},
    {CS_NO_OBJECTS, 0, "The list holds no objects."},
    {CS_MIXED_TYPES, 0, "The list holds objects of more than one configuration type."},
    {CS_JSON_PARSE_FAILED, 0, "The text is not valid JSON."},
    {CS_JSON_FILE_FAILED, 1, "File %s cannot be read or is not valid JSON."},
    {CS_JSON_ASSERTION, 0, "The JSON value is not an object."},
    {CS_VALIDATION_FINDING, 2, "Validation: %s: %s"},
    {CS_CACHED_CONFIG_INVALID, 0, "The cached configuration does not fit its type."},
    {CS_VITAL_CONFIG_INVALID, 0, "The vital configuration does not fit its type."},
    {CS_USER_CONFIG_INVALID, 0, "The user configuration does not fit its type."},
    {CS_PARTIAL_CONFIG_INVALID, 0, "The partial configuration does not fit its type."},
    {CS_SET_INVALID, 0, "The object to be set does not fit its type."},
    {CS_UPDATE_INVALID, 0, "The update does not fit its type."},
    {CS_APPLY_FILE_INVALID, 0, "The file to be applied does not fit its types."},
    {CS_PROCESS_START_FAILED, 1, "The process could not be started: %s"},
    {CS_PROCESS_WAIT_FAILED, 2, "Waiting for process %d failed: %s"},
    {CS_PROCESS_EXIT_STATUS, 1, "The process ended with status %d."},
    {CS_GENERIC, 1, "%s"},
};

constexpr std::size_t CountConversions(const char* text) {
  std::size_t count = 0;
  for (; *text != '\0'; ++text) {
    if (*text == '%') {
      ++text;
      if (*text != '%') {
        ++count;
      }
    }
  }
  return count;
}

constexpr bool AllAsDeclared() {
  for (const Message& message : kMessages) {
    if (CountConversions(message.text) != message.conversions) {
      return false;
    }
  }
  return true;
}
static_assert(AllAsDeclared(), "callers pass exactly as many arguments as a template converts");

}  // namespace

const char* ErrorMessageForId(CSErrorCodes code) noexcept {
  for (const Message& message : kMessages) {
    if (message.code == code) {
      return message.text;
    }
  }
  return "Unknown error.";
}
