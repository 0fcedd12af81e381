#include "json_schema/composition_words.h"

#include "json_schema/assertion_check.h"
#include "json_schema/describe.h"
#include "json_schema/equality.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace JsonValidator {
namespace {

const Node& Target(const Node& node) {
  const Node* target = &node;
  while (target->composition && target->composition->reference != nullptr) {
    target = target->composition->reference;
  }
  return *target;
}

/// Members whose value is not the one that the schema fixes: they tell which of several forms was
/// meant.
std::size_t CountOtherConstants(const Node& node, const Json::Value& value) {
  if (!node.object || !value.IsObject()) {
    return 0;
  }
  std::size_t count = 0;
  for (const auto& member : value.GetObject()) {
    const Property* property = node.object->properties.Find(Json::Text(member.name));
    const Json::Value* fixed = property != nullptr ? Target(*property->node).constant : nullptr;
    count += static_cast<std::size_t>(fixed != nullptr && !Equal(*fixed, member.value));
  }
  return count;
}

/// All values that the schemas allow, where each of them is just a list of values.
std::optional<std::vector<std::string>> AllowedValues(const Nodes& branches) {
  std::vector<std::string> values;
  for (const Node* branch : branches) {
    const Node& node = Target(*branch);
    if (node.constant != nullptr) {
      values.push_back(Literal(*node.constant));
    } else if (node.enumeration != nullptr) {
      for (const Json::Value& value : node.enumeration->GetArray()) {
        values.push_back(Literal(value));
      }
    } else {
      return std::nullopt;
    }
  }
  return values;
}

}  // namespace

std::string WhyNoBranch(const Nodes& branches, const Json::Value& value, const Place& place,
                        bool textsAreSound) {
  if (const auto values = AllowedValues(branches)) {
    return "expected one of " + Listed(*values) + ", found " + Found(value);
  }
  const TypeSet type = TypeOf(value);
  TypeSet allowed = 0;
  for (const Node* branch : branches) {
    allowed |= Target(*branch).refusesAll ? TypeSet{0} : Target(*branch).types;
  }
  if ((allowed & type) == 0) {
    return allowed == 0 ? "is not allowed here"
                        : "expected " + ExpectedTypes(allowed) + ", found " + Found(value);
  }
  const AssertionCheck check({true, true, textsAreSound, nullptr});
  std::pair<std::size_t, std::size_t> leastFaults{static_cast<std::size_t>(-1), 0};
  std::size_t closest = 0;
  Findings::Finding reason;
  for (std::size_t i = 0; i < branches.size(); ++i) {
    const Node& node = Target(*branches[i]);
    if (node.refusesAll || (node.types & type) == 0) {
      continue;
    }
    Findings findings;
    check.Check(node, value, place, findings);
    const std::pair faults{CountOtherConstants(node, value), findings.Sorted().size()};
    if (!findings.Empty() && faults < leastFaults) {
      leastFaults = faults;
      closest = i;
      reason = findings.Sorted().front();
    }
  }
  return "fits none of the " + std::to_string(branches.size()) +
         " allowed forms; the closest is number " + std::to_string(closest + 1) + ", where " +
         reason.field + ": " + reason.error;
}

std::string WhyExcluded(const Node& excluded, const Json::Value& value) {
  const Node& node = Target(excluded);
  if (node.constant != nullptr || node.enumeration != nullptr) {
    return "the value is one of those that are not allowed: " + Literal(value);
  }
  if (node.text && node.text->pattern && value.IsString()) {
    return "the text " + Quoted(Json::Text(value)) + " must not match the pattern " +
           node.text->pattern->Text();
  }
  if (node.object && !node.object->required.empty() && value.IsObject()) {
    std::vector<std::string> names;
    for (const std::string_view name : node.object->required) {
      names.push_back(Quoted(name));
    }
    return names.size() == 1 && !node.object->hasProperties
               ? "member " + names.front() + " is not allowed here"
               : "the members " + Listed(names) + " are not allowed together, as they are here";
  }
  if (node.types != kAnyType && !node.object && !node.array && !node.number && !node.text) {
    return "expected something else than " + ExpectedTypes(node.types) + ", found " + Found(value);
  }
  return "is of a form that is not allowed, found " + Found(value);
}

}  // namespace JsonValidator
