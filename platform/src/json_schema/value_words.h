// The one road by which what a value holds gets into a finding.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"
#include "json_schema/budget.h"
#include "json_schema/compiled_node.h"
#include "json_schema/place.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace JsonValidator {

/// Puts what stands at one place into words. Findings are read, logged and sent around by people who
/// may not know the host's secrets: of a secret and of all that lies in one they say what was
/// expected, and "***" for what was found. So they do of a text that stands where an object or a list
/// with secrets belongs: it may well be one. Values that the schema lists for such a place are not
/// named either, since what is stored is one of them.
class ValueWords {
 public:
  /// \param root  what is known of the value's places
  ValueWords(const Place& place, Json::SchemaPlace root);

  /// What was found: `the text "abc"`, `99`, `an object`.
  std::string Found(const Json::Value& value) const;
  /// `the text "abc"`
  std::string Text(std::string_view text) const;
  /// A value as JSON would write it, shortened.
  std::string Literal(const Json::Value& value, Budget& budget) const;
  std::string Literal(const Json::Value& value) const;
  /// How long or large a value is.
  std::string Size(const Json::Value& value, std::uint64_t count) const;
  std::string Size(const Json::Value& value, std::uint64_t count, std::string_view noun) const;
  /// The name of the member at this place: `member "abc"`, or `a member`.
  std::string Member(std::string_view name) const;
  /// `"abc"`: the name of the member at this place.
  std::string Name(std::string_view name) const;

  /// `expected one of "low", "high", found the text "hihg"; did you mean "high"?`: as in describe.h.
  std::string NotAmong(const std::vector<const Json::Value*>& allowed, const Json::Value& value,
                       bool suggests, Budget& budget) const;
  /// `member "timeot" is not known; known members: servers, timeout; did you mean "timeout"?`
  /// Of the member at this place.
  std::string UnknownMember(std::string_view name, const std::vector<const ObjectRules*>& schemas,
                            bool suggests) const;

  /// Values that the schema lists for this place are not told.
  bool HidesListedValues() const { return isSecret_ || holdsSecrets_; }
  /// The name of the member at this place is not told.
  bool HidesName() const { return hidesName_; }

 private:
  bool Hides(const Json::Value& value) const {
    return isSecret_ || (holdsSecrets_ && !Json::IsContainer(value));
  }

  bool isSecret_ = false;      ///< the value is a secret, or lies in one
  bool holdsSecrets_ = false;  ///< secrets belong below the place
  bool hidesName_ = false;     ///< the member's name is what somebody made part of a secret
};

/// The JSON Pointer of a place, "/" for the root. Names that are part of a secret are "***".
std::string FieldOf(const Place& place, Json::SchemaPlace root);

/// What is known of a place.
Json::SchemaPlace SchemaPlaceOf(const Place& place, Json::SchemaPlace root);

}  // namespace JsonValidator
