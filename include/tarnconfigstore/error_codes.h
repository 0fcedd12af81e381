// The codes of failures.
#pragma once

#include <cstdint>

namespace TarnConfigStore {

/// Codes of exceptions (ConfigStoreException::GetErrorCode) and of log lines.
///
/// The numbers are part of the interface: none changes its meaning, and none is used again.
/// "Logged only" marks codes that no exception carries.
enum CSErrorCodes : std::int32_t {
  CS_STORE_CONNECTION_FAILED = 1002,       ///< no connection for a key/value entry
  CS_INCORRECT_TYPE = 1030,                ///< a JSON value has another type than expected
  CS_INSTANCE_ID_INVALID = 1032,           ///< an instance id is missing, or is not a string
  CS_SCHEMA_NOT_FOUND = 1037,              ///< the configuration type is not installed
  CS_NULL_ARGUMENT = 1041,                 ///< an empty handle was given (logged only)
  CS_DRIFT_INSTANCES_NOT_FOUND = 1046,     ///< reserved for drift records
  CS_SUBOBJECT_NOT_FOUND = 1048,           ///< the type has instances, and no instance id is given
  CS_SUBOBJECT_INSTANCE_NOT_FOUND = 1049,  ///< the type has no instances, and an id is given
  CS_NO_OBJECTS = 1061,                    ///< a list of objects holds only empty handles
  CS_MIXED_TYPES = 1062,                   ///< a list of objects holds objects of several types
  CS_JSON_PARSE_FAILED = 1080,             ///< a text is not valid JSON
  CS_JSON_FILE_FAILED = 1081,              ///< a file cannot be read, or is not valid JSON
  CS_JSON_ASSERTION = 1082,                ///< a JSON value was used as another type than it has
  CS_VALIDATION_FINDING = 1083,            ///< one finding of a validation (logged only)
  CS_CACHED_CONFIG_INVALID = 1084,         ///< cached configuration does not fit its type
  CS_VITAL_CONFIG_INVALID = 1086,          ///< vital configuration does not fit its type
  CS_USER_CONFIG_INVALID = 1087,           ///< user configuration does not fit its type
  CS_PARTIAL_CONFIG_INVALID = 1088,        ///< partial configuration does not fit its type
  CS_SET_INVALID = 1089,                   ///< an object to be set does not fit its type
  CS_UPDATE_INVALID = 1090,                ///< an update does not fit its type
  CS_APPLY_FILE_INVALID = 1091,            ///< a file to be applied does not fit its types
  CS_PROCESS_START_FAILED = 1102,  ///< ExecCommand could not start its program (logged only)
  CS_PROCESS_WAIT_FAILED = 1103,   ///< ExecCommand could not wait for it (logged only)
  CS_PROCESS_EXIT_STATUS = 1104,   ///< its program ended with another status (logged only)
  CS_GENERIC = 2000,               ///< every other failure; the message says which
};

}  // namespace TarnConfigStore
