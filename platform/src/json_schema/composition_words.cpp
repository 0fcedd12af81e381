#include "json_schema/composition_words.h"

#include "json_schema/assertion_check.h"
#include "json_schema/branch_reasons.h"
#include "json_schema/describe.h"
#include "json_schema/equal_elements.h"

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
std::size_t CountOtherConstants(const Node& node, const Json::Value& value, Budget& budget) {
  if (!node.object || !value.IsObject()) {
    return 0;
  }
  std::size_t count = 0;
  for (const auto& member : value.GetObject()) {
    const Property* property = node.object->properties.Find(Json::Text(member.name));
    const Json::Value* fixed = property != nullptr ? Target(*property->node).constant : nullptr;
    count += static_cast<std::size_t>(fixed != nullptr && !Equal(*fixed, member.value, budget));
  }
  return count;
}

/// All values that the schemas allow, where each of them is just a list of values.
std::optional<std::vector<const Json::Value*>> AllowedValues(const Nodes& branches) {
  std::vector<const Json::Value*> values;
  for (const Node* branch : branches) {
    const Node& node = Target(*branch);
    if (node.constant != nullptr) {
      values.push_back(node.constant);
    } else if (node.enumeration != nullptr) {
      for (const Json::Value& value : node.enumeration->GetArray()) {
        values.push_back(&value);
      }
    } else {
      return std::nullopt;
    }
  }
  return values;
}

std::string QuotedNames(const std::vector<std::string_view>& names, std::string_view word) {
  std::vector<std::string> quoted;
  quoted.reserve(names.size());
  for (const std::string_view name : names) {
    quoted.push_back(Quoted(name));
  }
  return Joined(quoted, word);
}

/// The name that the schema has, in quotes; empty where it has none.
std::string Title(const Node& branch) {
  for (const Node* node : {&branch, &Target(branch)}) {
    const Json::Value* title =
        node->source->IsObject() ? Json::FindMember(*node->source, "title") : nullptr;
    if (title != nullptr && title->IsString() && title->GetStringLength() > 0) {
      return Quoted(Json::Text(*title));
    }
  }
  return {};
}

/// What fits the schema, as far as few words can tell.
std::string Form(const Node& branch, Budget& budget) {
  const Node& node = Target(branch);
  if (std::string title = Title(branch); !title.empty()) {
    return title;
  }
  if (node.constant != nullptr) {
    return Literal(*node.constant, budget);
  }
  if (node.format != nullptr) {
    return std::string(node.format->expected);
  }
  if (node.text && node.text->pattern) {
    return "a text of " + PatternInWords(*node.text);
  }
  if (node.object) {
    std::vector<std::string_view> names = node.object->required;
    for (const Property& property : node.object->properties.All()) {
      if (node.object->required.empty()) {
        names.push_back(property.name);
      }
    }
    return names.empty() ? "an object" : "an object with " + QuotedNames(names, "and");
  }
  return ExpectedTypes(node.types);
}

}  // namespace

std::string WhyNoBranch(const Nodes& branches, const Json::Value& value, const Place& place,
                        const BranchWords& words) {
  const AssertionCheck& check = words.check;
  const ValueWords say(place, check.Root());
  if (const auto values = AllowedValues(branches)) {
    return say.NotAmong(*values, value, words.wordy, check.Work());
  }
  const TypeSet type = TypeOf(value);
  TypeSet allowed = 0;
  for (const Node* branch : branches) {
    allowed |= Target(*branch).refusesAll ? TypeSet{0} : Target(*branch).types;
  }
  if ((allowed & type) == 0) {
    return allowed == 0 ? "is not allowed here"
                        : "expected " + ExpectedTypes(allowed) + ", found " + say.Found(value);
  }
  std::pair<std::size_t, std::size_t> leastFaults{static_cast<std::size_t>(-1), 0};
  BranchReasons reasons(value, place, check.Root());
  for (const Node* branch : branches) {
    const Node& node = Target(*branch);
    if (node.refusesAll) {
      continue;
    }
    if ((node.types & type) == 0) {
      reasons.AddTypes(node.types);
      continue;
    }
    Findings findings(check.Root(), words.wordy);
    check.Check(node, value, place, findings);
    const std::pair faults{CountOtherConstants(node, value, check.Work()),
                           findings.Sorted().size()};
    if (findings.Empty() || faults > leastFaults) {
      continue;
    }
    if (faults < leastFaults) {
      leastFaults = faults;
      reasons.Forget();
    }
    reasons.Add(Title(*branch), findings.Sorted().front());
  }
  return reasons.InOneSentence(branches.size());
}

std::string WhySeveralBranches(const Nodes& fitting, std::size_t branches, const ValueWords& say,
                               Budget& budget) {
  std::vector<std::string> forms;
  for (std::size_t i = 0; i < fitting.size() && !say.HidesListedValues(); ++i) {
    forms.push_back(Form(*fitting[i], budget));
  }
  return "fits " + std::to_string(fitting.size()) + " of the " + std::to_string(branches) +
         " allowed forms at once" + (forms.empty() ? "" : " (" + Joined(forms, "and") + ")") +
         ", and may fit only one";
}

std::string WhyExcluded(const Node& excluded, const Json::Value& value, const Place& place,
                        const AssertionCheck& check) {
  const Node& node = Target(excluded);
  const ValueWords say(place, check.Root());
  if (node.constant != nullptr || node.enumeration != nullptr) {
    return "the value is one of those that are not allowed: " + say.Literal(value, check.Work());
  }
  if (node.text && node.text->pattern && value.IsString()) {
    return say.Text(Json::Text(value)) + " must not match " + PatternInWords(*node.text);
  }
  if (node.composition && !node.composition->anyOf.empty() && !node.object) {
    for (const Node* branch : node.composition->anyOf) {
      if (check.Holds(*branch, value, place)) {
        return WhyExcluded(*branch, value, place, check);
      }
    }
  }
  if (node.object && !node.object->required.empty() && value.IsObject()) {
    const std::vector<std::string_view>& names = node.object->required;
    return "must not have the member" + std::string(names.size() == 1 ? " " : "s ") +
           QuotedNames(names, "and") +
           (node.object->hasProperties ? " with what is given there"
            : names.size() > 1         ? " together"
                                       : "");
  }
  if (node.types != kAnyType && !node.object && !node.array && !node.number && !node.text) {
    return "expected something else than " + ExpectedTypes(node.types) + ", found " +
           say.Found(value);
  }
  return "is of a form that is not allowed, found " + say.Found(value);
}

}  // namespace JsonValidator
