// The assertions that are made of other schemas, for the same value.
#include "json_schema/assertion_check.h"
#include "json_schema/composition_words.h"
#include "json_schema/describe.h"

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
    ok = Fail(findings, place, [&] { return WhyExcluded(*with.negated, value); });
  }
  return ok;
}

bool AssertionCheck::VisitAnyOf(const Nodes& branches, const Json::Value& value, const Place& place,
                                Findings* findings) const {
  return std::any_of(branches.begin(), branches.end(),
                     [&](const Node* branch) { return Holds(*branch, value, place); }) ||
         Fail(findings, place,
              [&] { return WhyNoBranch(branches, value, place, scope_.textsAreSound); });
}

bool AssertionCheck::VisitOneOf(const Nodes& branches, const Json::Value& value, const Place& place,
                                Findings* findings) const {
  std::vector<std::string> fitting;
  std::size_t count = 0;
  for (std::size_t i = 0; i < branches.size(); ++i) {
    if (Holds(*branches[i], value, place)) {
      ++count;
      if (findings != nullptr) {
        fitting.push_back(std::to_string(i + 1));
      }
    }
  }
  return count == 1 || Fail(findings, place, [&] {
           return count == 0
                      ? WhyNoBranch(branches, value, place, scope_.textsAreSound)
                      : "fits " + std::to_string(count) + " of the " +
                            std::to_string(branches.size()) + " allowed forms at once (numbers " +
                            Listed(fitting) + "), and may fit only one";
         });
}

}  // namespace JsonValidator
