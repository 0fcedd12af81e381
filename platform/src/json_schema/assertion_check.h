// The assertions of JSON Schema draft-07.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"
#include "json_schema/budget.h"
#include "json_schema/compiled_node.h"
#include "json_schema/place.h"
#include "json_schema/validation_findings.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace JsonValidator {

/// Checks values against nodes. The value's depth is checked already. Once the budget is spent the
/// answers mean nothing, and the budget's owner has a finding of it.
class AssertionCheck {
 public:
  /// What is noted of a value that does not fit. The verdict of Holds is always that of the whole
  /// schema.
  struct Scope {
    bool assertions = true;     ///< all assertions but "required"
    bool required = true;       ///< members that are plainly missing
    bool textsAreSound = true;  ///< all texts of the value are known to be UTF-8
    /// Of the whole validation; never null. Gets what could not be checked, even where the schema is asked
    /// quietly and its answer would be turned round.
    Budget* budget = nullptr;
    /// Members that can belong to none of these parts may be missing; bits of Json::Kind.
    unsigned askedParts = ~0U;
    /// What is known of the value's places: the parts that they belong to, and what is secret.
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

  /// One that says why a value does not fit, out of the same budget.
  AssertionCheck InWords() const {
    return AssertionCheck({true, true, scope_.textsAreSound, scope_.budget, ~0U, scope_.root});
  }

  Budget& Work() const { return *scope_.budget; }

  /// What is known of the value's places.
  Json::SchemaPlace Root() const { return scope_.root; }

  /// What it takes to say of a member that the object's schema does not know it.
  static std::uint64_t StepsOfUnknownMember(const ObjectRules& rules) {
    constexpr std::uint64_t kNamesOfAStep = 16;
    const std::uint64_t known = rules.properties.All().size();
    return known + known * known / kNamesOfAStep;
  }

  /// Takes so many steps, and answers whether there are any left.
  bool Go(std::uint64_t steps, const Place& place) const {
    return Work().Take(steps) || GiveUp(place);
  }
  /// Notes that the budget was spent at the place, and answers false.
  bool GiveUp(const Place& place) const;

  /// Whether a member's name matches. What cannot be decided is left open at the place.
  bool Matches(const Pattern& pattern, const Json::Value& name, const Place& place) const;

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
  bool HoldsForAny(const Node& node, const Json::Value& array, const Place& place) const;
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

  /// Whether a member that an object lacks is another part's to hold.
  bool IsOfAnotherPart(const Place& object, std::string_view member) const;

  bool Asserting(const Findings* findings) const {
    return findings == nullptr || scope_.assertions;
  }
  /// Notes a failure, in words that are only made when somebody wants them and that take so many
  /// steps. They are given those for the value.
  template <class Words>
  bool Fail(Findings* findings, const Place& place, const Words& words,
            std::uint64_t steps = 0) const {
    constexpr std::uint64_t kStepsOfAFinding = 32;
    if (findings != nullptr && Work().Take(kStepsOfAFinding + steps)) {
      findings->Add(place, words(findings->WordsOf(place)));
    }
    return false;
  }

  Scope scope_;
};

}  // namespace JsonValidator
