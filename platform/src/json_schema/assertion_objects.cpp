// The assertions on objects and their members.
#include "json_schema/assertion_check.h"
#include "json_schema/describe.h"

#include <algorithm>
#include <bit>

namespace JsonValidator {
namespace {

bool HasMember(const Json::Value& object, std::string_view name, Budget& budget) {
  constexpr rapidjson::SizeType kMembersOfAStep = 4;
  return budget.Take(object.MemberCount() / kMembersOfAStep) &&
         Json::FindMember(object, name) != nullptr;
}

}  // namespace

bool AssertionCheck::VisitObject(const ObjectRules& rules, const Json::Value& value,
                                 const Place& place, Findings* findings) const {
  bool ok = true;
  if (Asserting(findings)) {
    if (value.MemberCount() < rules.minProperties) {
      ok = Fail(findings, place, [&](const ValueWords& say) {
        return "expected at least " + Count(rules.minProperties, "member") + ", found " +
               say.Size(value, value.MemberCount());
      });
    }
    if (value.MemberCount() > rules.maxProperties) {
      ok = Fail(findings, place, [&](const ValueWords& say) {
        return "expected at most " + Count(rules.maxProperties, "member") + ", found " +
               say.Size(value, value.MemberCount());
      });
    }
  }
  std::uint64_t seen = 0;
  std::uint32_t index = 0;
  for (const auto& member : value.GetObject()) {
    if (!ok && findings == nullptr) {
      return false;
    }
    const Property* property = rules.properties.Find(Json::Text(member.name));
    if (property != nullptr) {
      seen |= property->requiredBit;
    }
    ok = VisitMember(rules, property, member, Place{&place, &member.name, index++}, findings) && ok;
  }
  if (findings == nullptr || scope_.required) {
    ok = VisitRequired(rules, value, seen, place, findings) && ok;
  }
  return VisitDependencies(rules, value, place, findings) && ok;
}

bool AssertionCheck::VisitMember(const ObjectRules& rules, const Property* property,
                                 const Json::Value::Member& member, const Place& place,
                                 Findings* findings) const {
  bool ok = property == nullptr || Visit(*property->node, member.value, place, findings);
  bool declared = property != nullptr;
  for (const PatternProperty& pattern : rules.patternProperties) {
    if (!IsSound(member.name)) {
      break;
    }
    if (Matches(*pattern.pattern, member.name, place)) {
      declared = true;
      ok = Visit(*pattern.node, member.value, place, findings) && ok;
    }
  }
  if (!declared && rules.additional != nullptr) {
    if (!rules.additional->refusesAll) {
      ok = Visit(*rules.additional, member.value, place, findings) && ok;
    } else if (Asserting(findings)) {
      ok = Fail(
          findings, place,
          [&](const ValueWords& say) {
            return say.UnknownMember(Json::Text(member.name), {&rules}, findings->AreWordy());
          },
          StepsOfUnknownMember(rules));
    }
  }
  if (!declared && findings != nullptr &&
      (rules.additional == nullptr || rules.additional->refusesAll)) {
    findings->NoteUndeclared();
  }
  return (rules.propertyNames == nullptr || !Asserting(findings) ||
          VisitName(*rules.propertyNames, member.name, place, findings)) &&
         ok;
}

bool AssertionCheck::Matches(const Pattern& pattern, const Json::Value& name,
                             const Place& place) const {
  const Pattern::Result result = pattern.Match(Json::Text(name), Work());
  if (result == Pattern::Result::UNDECIDED) {
    Work().LeaveOpen(place, "the member name", "against the pattern " + pattern.Text());
  }
  return result == Pattern::Result::MATCH;
}

bool AssertionCheck::VisitName(const Node& node, const Json::Value& name, const Place& place,
                               Findings* findings) const {
  return Holds(node, name, place) || Fail(findings, place, [&](const ValueWords&) {
           Findings reasons(scope_.root);
           InWords().Check(node, name, place, reasons);
           return "the member name is not allowed: " +
                  (reasons.Empty() ? "it could not be checked" : reasons.Sorted().front().error);
         });
}

bool AssertionCheck::VisitRequired(const ObjectRules& rules, const Json::Value& value,
                                   std::uint64_t seen, const Place& place,
                                   Findings* findings) const {
  if (rules.required.empty()) {
    return true;
  }
  bool ok = true;
  const auto ticked = static_cast<std::size_t>(std::popcount(rules.requiredBits));
  if (seen != rules.requiredBits || ticked < rules.required.size()) {
    for (std::size_t i = 0; i < rules.required.size(); ++i) {
      const bool given =
          i < ticked ? (seen >> i & 1U) != 0 : HasMember(value, rules.required[i], Work());
      if (!given && !(findings != nullptr && IsOfAnotherPart(place, rules.required[i]))) {
        ok = Fail(findings, place,
                  [&](const ValueWords&) { return MissingMember(rules.required[i]); });
      }
    }
  }
  return ok;
}

bool AssertionCheck::IsOfAnotherPart(const Place& object, std::string_view member) const {
  if (scope_.askedParts == ~0U) {
    return false;
  }
  const Json::SchemaPlace place = SchemaPlaceOf(object, scope_.root);
  return !place.IsIdMember(member) && (place.Property(member).Kinds() & scope_.askedParts) == 0;
}

bool AssertionCheck::VisitDependencies(const ObjectRules& rules, const Json::Value& value,
                                       const Place& place, Findings* findings) const {
  bool ok = true;
  for (const Dependency& dependency : rules.dependencies) {
    if (!HasMember(value, dependency.name, Work())) {
      continue;
    }
    for (const std::string_view name : dependency.members) {
      if (Asserting(findings) && !HasMember(value, name, Work()) &&
          !(findings != nullptr && IsOfAnotherPart(place, name))) {
        ok = Fail(findings, place, [&](const ValueWords&) {
          return MissingMember(name) + " because member " + Quoted(dependency.name) + " is given";
        });
      }
    }
    ok = (dependency.node == nullptr || Visit(*dependency.node, value, place, findings)) && ok;
  }
  return ok;
}

}  // namespace JsonValidator
