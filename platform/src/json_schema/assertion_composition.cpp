// The assertions that are made of other schemas, for the same value.
#include "json_schema/assertion_check.h"
#include "json_schema/composition_words.h"

#include <algorithm>
#include <string>
#include <vector>

namespace JsonValidator {

bool AssertionCheck::VisitComposition(const Composition& with, const Json::Value& value,
                                      const Place& place, Findings* findings) const {
  bool ok = true;
  for (const Node* part : with.allOf) {
    ok = Visit(*part, value, place, findings) && ok;
    if (!ok && findings == nullptr) {
      return false;
    }
  }
  if (with.condition != nullptr && (with.consequence != nullptr || with.alternative != nullptr)) {
    const Node* branch = Holds(*with.condition, value, place) ? with.consequence : with.alternative;
    ok = (branch == nullptr || Visit(*branch, value, place, findings)) && ok;
  }
  if (!Asserting(findings)) {
    return true;
  }
  ok = (with.anyOf.empty() || VisitAnyOf(with.anyOf, value, place, findings)) && ok;
  ok = (with.oneOf.empty() || VisitOneOf(with.oneOf, value, place, findings)) && ok;
  if (with.negated != nullptr && Holds(*with.negated, value, place)) {
    ok = Fail(findings, place, [&](const ValueWords&) {
      return WhyExcluded(*with.negated, value, place, InWords());
    });
  }
  return ok;
}

bool AssertionCheck::VisitAnyOf(const Nodes& branches, const Json::Value& value, const Place& place,
                                Findings* findings) const {
  return std::any_of(branches.begin(), branches.end(),
                     [&](const Node* branch) { return Holds(*branch, value, place); }) ||
         Fail(
             findings, place,
             [&](const ValueWords&) {
               return WhyNoBranch(branches, value, place, {InWords(), findings->AreWordy()});
             },
             branches.size());
}

bool AssertionCheck::VisitOneOf(const Nodes& branches, const Json::Value& value, const Place& place,
                                Findings* findings) const {
  Nodes fitting;
  std::size_t count = 0;
  for (const Node* branch : branches) {
    if (Holds(*branch, value, place)) {
      ++count;
      if (findings != nullptr) {
        fitting.push_back(branch);
      }
    }
  }
  const auto words = [&](const ValueWords& say) {
    return count == 0 ? WhyNoBranch(branches, value, place, {InWords(), findings->AreWordy()})
                      : WhySeveralBranches(fitting, branches.size(), say, Work());
  };
  return count == 1 || Fail(findings, place, words, branches.size());
}

}  // namespace JsonValidator
