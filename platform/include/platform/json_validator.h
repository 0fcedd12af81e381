// Checking JSON values against JSON Schema (draft-07) and the rules of configuration types.
#pragma once

#include "json/json.h"

#include <string>
#include <unordered_set>

namespace JsonValidator {

/// What a validation checks. Callers pass sets of the numbers; numbers that are not listed are
/// accepted and check nothing. Whatever the rules: texts and names are UTF-8, numbers finite,
/// nesting at most Json::kMaxDepth.
///
/// A member is declared when any schema that applies to its object declares it, through references,
/// "allOf", the branches that the object fits, and conditions. What is vital, cached and the user's
/// is as Json::SchemaPlace tells, and so is what holds an instance id; ids belong to every part of
/// an object. A value that is written alone is one that dividing an object could have put there: an
/// empty object or list, or a list of nothing but ids, belongs to the part of its place.
enum Rule : int {
  RULE_DECLARED_MEMBERS = 0,    ///< no undeclared member, and none twice
  RULE_JSON_SCHEMA = 1,         ///< the assertions of the schema
  RULE_NO_VITAL_OR_CACHED = 3,  ///< no vital and no cached members, instance ids excepted
  RULE_NO_READ_ONLY = 4,        ///< no read-only members
  RULE_VITAL_ONLY = 5,          ///< vital members and instance ids only
  RULE_INSTANCE_IDS = 7,        ///< instance ids are present, and unique in their array
  RULE_REQUIRED = 8,            ///< "required"; without this rule, plainly missing members pass
  RULE_CACHED_ONLY = 9,         ///< cached members and instance ids only
  // "required" holds for members that can belong to the part named; several may be asked for. What
  // is required of another part is that part's to hold, so RULE_REQUIRED beside a rule about parts
  // asks for members of that part only.
  RULE_REQUIRED_OF_USER = 21,
  RULE_REQUIRED_OF_VITAL = 22,
  RULE_REQUIRED_OF_CACHED = 23,
};

/// Validates a value and fills `result` with an array of findings, {"field": JSON Pointer, "error":
/// text}, one for each fault, in document order; an empty array means valid. A value of the wrong
/// type is one fault, whatever else is asked of it, and so is one that fits none of several forms.
/// A schema that cannot be used is one finding on the root. The field of the root is "/".
///
/// Findings get into logs. Of a value that is secret, lies in a secret or stands where secrets belong
/// (as Json::SchemaPlace tells) they hold nothing, and neither do they of names in a secret that the
/// schema does not know: "***" stands for each, in fields, too. Values that the schema lists for such
/// a place are not named.
///
/// A validation has so many steps of work as large values of ordinary types need many times over;
/// where they end is a finding, "... could not be checked ...: it takes too much work", and what
/// comes behind it is not checked. Safe from several threads.
/// \param schema   of an installed type (SchemaObject::GetSchemaDocument), or any other
/// \param context  not used
void Validate(const Json::Value& schema, const Json::Value& value, Json::Document& result,
              const std::unordered_set<int>& rules, const std::string& context);

}  // namespace JsonValidator
