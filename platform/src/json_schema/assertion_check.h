// The assertions of JSON Schema draft-07.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"
#include "json_schema/compiled_node.h"
#include "json_schema/composition_words.h"
#include "json_schema/place.h"
#include "json_schema/validation_findings.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace JsonValidator {

/// Checks values against nodes. The value's depth is checked already.
class AssertionCheck {
 public:
  /// What is noted of a value that does not fit. The verdict of Holds is always that of the whole
  /// schema.
  struct Scope {
    bool assertions = true;     ///< all assertions but "required"
    bool required = true;       ///< members that are plainly missing
    bool textsAreSound = true;  ///< all texts of the value are known to be UTF-8
    /// Gets what could not be checked where the schema is asked quietly, and would be hidden there.
    Findings* undecided = nullptr;
    /// Members that can belong to none of these parts may be missing; bits of Json::Kind.
    unsigned askedParts = ~0U;
    /// What is known of the value's places; needed where not all parts are asked.
    Json::SchemaPlace root = {};
  };

  explicit AssertionCheck(Scope scope) : scope_(scope) {}

  /// Notes a finding for each assertion that fails.
  void Check(const Node& node, const Json::Value& value, const Place& place,
             Findings& findings) const {
    Visit(node, value, place, &findings);
  }

  /// Whether the value fits.
  bool Holds(const Node& node, const Json::Value& value, const Place& place) const {
    return Visit(node, value, place, nullptr);
  }

  /// Whether Check notes the assertions that fail.
  bool Reports() const { return scope_.assertions; }

  /// Whether formats and patterns may be asked of a text: what is no UTF-8 has its finding already.
  bool IsSound(const Json::Value& text) const;

 private:
  // All of these return whether the value fits. Without findings they are quiet and stop at the
  // first failure; with findings they note every failure, and their answer is of no use.
  bool Visit(const Node& node, const Json::Value& value, const Place& place,
             Findings* findings) const;
  bool VisitValue(const Node& node, const Json::Value& value, const Place& place,
                  Findings* findings) const;
  bool VisitNumber(const NumberRules& rules, const Json::Value& value, const Place& place,
                   Findings* findings) const;
  bool VisitText(const TextRules& rules, const Json::Value& value, const Place& place,
                 Findings* findings) const;
  bool VisitFormat(const Format& format, const Json::Value& value, TypeSet type, const Place& place,
                   Findings* findings) const;
  bool VisitArray(const ArrayRules& rules, const Json::Value& value, const Place& place,
                  Findings* findings) const;
  bool VisitObject(const ObjectRules& rules, const Json::Value& value, const Place& place,
                   Findings* findings) const;
  bool VisitMember(const ObjectRules& rules, const Property* property,
                   const Json::Value::Member& member, const Place& place, Findings* findings) const;
  bool VisitName(const Node& node, const Json::Value& name, const Place& place,
                 Findings* findings) const;
  bool VisitRequired(const ObjectRules& rules, const Json::Value& value, std::uint64_t seen,
                     const Place& place, Findings* findings) const;
  bool VisitDependencies(const ObjectRules& rules, const Json::Value& value, const Place& place,
                         Findings* findings) const;
  bool VisitComposition(const Composition& with, const Json::Value& value, const Place& place,
                        Findings* findings) const;
  bool VisitAnyOf(const Nodes& branches, const Json::Value& value, const Place& place,
                  Findings* findings) const;
  bool VisitOneOf(const Nodes& branches, const Json::Value& value, const Place& place,
                  Findings* findings) const;

  /// How a finding is to be worded.
  BranchWords Words(const Findings* findings) const {
    return {scope_.textsAreSound, findings->AreWordy()};
  }

  /// Whether a member that an object lacks is another part's to hold.
  bool IsOfAnotherPart(const Place& object, std::string_view member) const;

  bool Asserting(const Findings* findings) const {
    return findings == nullptr || scope_.assertions;
  }
  /// Notes a failure, in words that are only made when somebody wants them.
  template <class Words>
  bool FailUndecided(Findings* findings, const Place& place, const Words& words) const {
    return Fail(findings != nullptr ? findings : scope_.undecided, place, words);
  }
  template <class Words>
  static bool Fail(Findings* findings, const Place& place, const Words& words) {
    if (findings != nullptr) {
      findings->Add(place, words());
    }
    return false;
  }

  Scope scope_;
};

}  // namespace JsonValidator
