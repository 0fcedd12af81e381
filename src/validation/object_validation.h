// Checking configuration objects against the schemas of their types.
#pragma once

#include "tarnconfigstore/exceptions.h"

#include "json/json.h"
#include "validation/guards.h"
#include "validation/rule_sets.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// The operation on whose behalf an object is validated.
enum ACTION : int {
  ACTION_DELETE = 0,
  ACTION_SET = 1,
  ACTION_UPDATE = 2,
  ACTION_RESET = 3,
};

/// Adds everything that is wrong with an object's data to the list. Answers true when the list is
/// empty. The data of an instance hold its id: data without it are judged as if they held it, and
/// data that name another instance have a finding at the id, after all others.
/// \param quiet  findings are not logged (as code 1083, priority 0)
bool ValidateObjectData(const SchemaHandle& schema, const ObjectHandle& object,
                        const RuleSet& rules, std::vector<ErrorInfo>& errors, bool quiet);

/// Checks a value against a schema, be it of a type or made for the occasion, and adds the
/// findings.
void ValidateValue(const Json::Value& schema, const Json::Value& value, const RuleSet& rules,
                   std::vector<ErrorInfo>& errors, bool quiet);

/// Turns a validator's result, an array of {"field", "error"}, into records. Anything else raises
/// the JSON assertion, 1082.
void ConvertFindings(const Json::Value& result, std::vector<ErrorInfo>& errors, bool quiet);

/// Whether one of the following, or the write that follows it, may change the object's data.
bool StoringChangesData(const SchemaHandle& schema, const ObjectHandle& object);

// Each raises ValidationException with the code named, and every finding, when the object does not
// fit; the object is then as it was, and so are the places that the findings name. All but the
// first two remove empty content from the object first; where the object fits only with it, it
// stays. Data that fit get what storing adds: those of an instance its id, unless they are empty,
// and numbers the kind that the schema leaves.
void ValidateCachedConfig(const SchemaHandle& schema, const ObjectHandle& object);   // 1084
void ValidateVitalConfig(const SchemaHandle& schema, const ObjectHandle& object);    // 1086
void ValidateUserConfig(const SchemaHandle& schema, const ObjectHandle& object);     // 1087
void ValidatePartialConfig(const SchemaHandle& schema, const ObjectHandle& object);  // 1088
void ValidateSet(const SchemaHandle& schema, const ObjectHandle& object);            // 1089
void ValidateUpdate(const SchemaHandle& schema, const ObjectHandle& object);         // 1090

/// ValidateSet of an object of which StoringChangesData says that nothing changes.
void ValidateUnchanged(const SchemaHandle& schema, const ObjectHandle& object);

/// The names of an object's members alone, whatever they hold; raises ValidationException 1090 for
/// those that its type does not declare.
void ValidateNames(const SchemaHandle& schema, const ObjectHandle& object);

/// What an update makes of an object, checked whole, as it is, as one that is to be set, but that
/// "required" is asked of members of the parts named; raises ValidationException 1090.
/// \param written  bits of Json::Kind
void ValidateUpdated(const SchemaHandle& schema, const ObjectHandle& object, unsigned written);

/// What restoring a part of an object makes of it, checked whole as after an update of user members;
/// raises ValidationException 1088.
void ValidateRestored(const SchemaHandle& schema, const ObjectHandle& object);

/// For a write that has no place for cached data: raises ValidationException 1089 with a finding for
/// each member that holds some.
void ValidateNoCachedData(const SchemaHandle& schema, const ObjectHandle& object);

/// A value of a file that is to be applied, against a schema; raises ValidationException 1091.
void ValidateApplyFile(const Json::Value& value, const Json::Value& schema);

/// Adds what is wrong with an object's type and identifier: that the type is not installed, or has
/// instances and the identifier no instance id, or the other way round. Answers true when nothing is.
bool ValidateIdentity(const SchemaHandle& schema, const ConfigStoreObjectId& id,
                      std::vector<ErrorInfo>& errors);

/// Adds everything that is wrong with an object, its type and its identifier included, without
/// logging it. The type decides what is checked: as a whole vital or cached configuration, or what
/// may be set.
void ValidateCSO(const SchemaHandle& schema, const ObjectHandle& object,
                 std::vector<ErrorInfo>& errors);

/// Validates an object as user configuration. True when it is valid, or when the action writes no
/// data (ACTION_DELETE and ACTION_RESET); a type that is not installed is a finding whatever the
/// action.
/// \param unused  kept for callers that pass it
bool validateObject(const ObjectHandle& object, ACTION action, std::vector<ErrorInfo>& errors,
                    const std::string& unused);

}  // namespace TarnConfigStore
