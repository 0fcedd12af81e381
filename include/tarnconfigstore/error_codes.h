// The numbers by which failures are told apart. Other programs of the host store and compare them,
// so a number is never reused and never changes its meaning.
#pragma once

#include <cstdint>

namespace TarnConfigStore {

/// Codes carried by ConfigStoreException::GetErrorCode() and by coded log lines.
enum CSErrorCodes : std::int32_t {
  CS_STORE_CONNECTION_FAILED = 1002,       ///< no connection for a key/value access
  CS_INCORRECT_TYPE = 1030,                ///< a JSON value is not of the expected type
  CS_INSTANCE_ID_INVALID = 1032,           ///< an instance id is missing or is not a string
  CS_SCHEMA_NOT_FOUND = 1037,              ///< the configuration type is not installed
  CS_NULL_ARGUMENT = 1041,                 ///< an empty handle was given (logged only)
  CS_DRIFT_INSTANCES_NOT_FOUND = 1046,     ///< reserved for drift records
  CS_SUBOBJECT_NOT_FOUND = 1048,           ///< an instance id is missing where the type needs one
  CS_SUBOBJECT_INSTANCE_NOT_FOUND = 1049,  ///< an instance id was given where the type has none
  CS_NO_OBJECTS = 1061,                    ///< a list of objects holds nothing but empty handles
  CS_MIXED_TYPES = 1062,                   ///< a list of objects holds objects of several types
  CS_JSON_PARSE_FAILED = 1080,             ///< a text is not valid JSON
  CS_JSON_FILE_FAILED = 1081,              ///< a file cannot be read or is not valid JSON
  CS_JSON_ASSERTION = 1082,                ///< a JSON value was used as something it is not
  CS_VALIDATION_FINDING = 1083,            ///< one finding of a validation (logged only)
  CS_CACHED_CONFIG_INVALID = 1084,         ///< cached configuration does not fit its type
  CS_VITAL_CONFIG_INVALID = 1086,          ///< vital configuration does not fit its type
  CS_USER_CONFIG_INVALID = 1087,           ///< user configuration does not fit its type
  CS_PARTIAL_CONFIG_INVALID = 1088,        ///< partial configuration does not fit its type
  CS_SET_INVALID = 1089,                   ///< an object to be set does not fit its type
  CS_UPDATE_INVALID = 1090,                ///< an update does not fit its type
  CS_APPLY_FILE_INVALID = 1091,            ///< a file to be applied does not fit its types
  CS_PROCESS_START_FAILED = 1102,  ///< ExecCommand could not start its program (logged only)
  CS_PROCESS_WAIT_FAILED = 1103,   ///< ExecCommand could not wait for its child (logged only)
  CS_PROCESS_EXIT_STATUS = 1104,   ///< ExecCommand's child exited non-zero (logged only)
  CS_GENERIC = 2000,               ///< every other failure; the message tells
};

}  // namespace TarnConfigStore
