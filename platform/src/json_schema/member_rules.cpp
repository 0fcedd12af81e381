#include "json_schema/member_rules.h"

#include "json_schema/describe.h"

#include <algorithm>
#include <utility>

namespace JsonValidator {
namespace {

/// The member that holds an id which whoever writes an object has to give; a generated one need not
/// be there yet.
std::string_view GivenInstanceId(Json::SchemaPlace object) {
  const std::string_view member = object.InstanceIdMember();
  return member == Json::kGeneratedInstanceId ? std::string_view() : member;
}

/// Whether dividing a value that is taken apart would find nothing in it that has a part of its own.
bool HoldsOnlyIds(const Json::Value& value, Json::SchemaPlace at) {
  if (value.IsArray()) {
    return std::all_of(value.Begin(), value.End(), [&](const Json::Value& element) {
      return element.IsObject() && HoldsOnlyIds(element, at.Items());
    });
  }
  return std::all_of(value.MemberBegin(), value.MemberEnd(),
                     [&](const auto& member) { return at.IsIdMember(Json::Text(member.name)); });
}

}  // namespace

RuleSet RulesOfUse(RuleSet rules, Tags reachable) {
  const auto drop = [&](Rule rule, Tags needed) {
    if ((reachable & needed) == 0) {
      rules = rules.Without(rule);
    }
  };
  drop(RULE_DECLARED_MEMBERS, kDeclares);
  drop(RULE_NO_VITAL_OR_CACHED, kVitalTag | kCachedTag);
  drop(RULE_NO_READ_ONLY, kReadOnlyTag);
  drop(RULE_INSTANCE_IDS, kInstanceIdTag);
  return rules;
}

void MemberRules::Check(const Node& root, Json::SchemaPlace at, const Json::Value& value) {
  if (rules_.Empty() || check_.Work().Spent()) {
    return;
  }
  Apply(root, value, Place{}, true, 0);
  Tags reachable = 0;
  for (const Applied& applied : applied_) {
    reachable |= applied.node->reachableTags;
  }
  const RuleSet rules = RulesOfUse(rules_, reachable);
  if (rules.Empty()) {
    return;
  }
  if (value.IsObject()) {
    if (rules.Has(RULE_INSTANCE_IDS) && !value.ObjectEmpty()) {
      if (const std::string_view id = GivenInstanceId(at); !id.empty()) {
        CheckInstanceId(id, value, Place{});
      }
    }
    VisitObject(0, value, Place{}, rules, at);
  } else if (value.IsArray()) {
    VisitArray(0, value, Place{}, rules, at);
  }
}

void MemberRules::Apply(const Node& node, const Json::Value& value, const Place& place, bool closes,
                        std::size_t begin) {
  if (!check_.Go(1 + (applied_.size() - begin), place)) {
    return;
  }
  for (std::size_t i = begin; i < applied_.size(); ++i) {
    if (applied_[i].node == &node) {
      if (closes && !applied_[i].closes) {
        applied_[i].closes = true;
        ApplyBeside(node, value, place, closes, begin);
      }
      return;
    }
  }
  applied_.push_back({&node, closes});
  ApplyBeside(node, value, place, closes, begin);
}

void MemberRules::ApplyBeside(const Node& node, const Json::Value& value, const Place& place,
                              bool closes, std::size_t begin) {
  if (node.composition) {
    const Composition& with = *node.composition;
    if (with.reference != nullptr) {
      Apply(*with.reference, value, place, closes, begin);
      return;
    }
    for (const Node* part : with.allOf) {
      Apply(*part, value, place, closes, begin);
    }
    ApplyBranches(with.anyOf, value, place, closes, begin);
    ApplyBranches(with.oneOf, value, place, closes, begin);
    if (with.condition != nullptr) {
      Apply(*with.condition, value, place, false, begin);
      const Node* branch =
          check_.Holds(*with.condition, value, place) ? with.consequence : with.alternative;
      if (branch != nullptr) {
        Apply(*branch, value, place, false, begin);
      }
    }
  }
  if (node.object && value.IsObject()) {
    for (const Dependency& dependency : node.object->dependencies) {
      if (dependency.node != nullptr && Json::FindMember(value, dependency.name) != nullptr) {
        Apply(*dependency.node, value, place, false, begin);
      }
    }
  }
}

void MemberRules::ApplyBranches(const Nodes& branches, const Json::Value& value, const Place& place,
                                bool closes, std::size_t begin) {
  bool any = false;
  for (const Node* branch : branches) {
    if (check_.Holds(*branch, value, place)) {
      any = true;
      Apply(*branch, value, place, closes, begin);
    }
  }
  for (std::size_t i = 0; i < branches.size() && !any; ++i) {
    Apply(*branches[i], value, place, closes, begin);
  }
}

bool MemberRules::ApplyMember(const ObjectRules& rules, const Json::Value::Member& member,
                              const Place& place, bool apply, bool closes, std::size_t begin) {
  const std::string_view name = Json::Text(member.name);
  bool declared = false;
  const auto declare = [&](const Node& node) {
    declared = true;
    if (apply) {
      Apply(node, member.value, place, closes, begin);
    }
  };
  if (const Property* property = rules.properties.Find(name)) {
    declare(*property->node);
  }
  for (const PatternProperty& pattern : rules.patternProperties) {
    if (check_.IsSound(member.name) && check_.Matches(*pattern.pattern, member.name, place)) {
      declare(*pattern.node);
    }
  }
  if (!declared && rules.additional != nullptr && !rules.additional->refusesAll) {
    declare(*rules.additional);
  }
  return declared;
}

void MemberRules::VisitObject(std::size_t begin, const Json::Value& object, const Place& place,
                              RuleSet rules, Json::SchemaPlace at) {
  const std::size_t end = applied_.size();
  const bool closed = rules.Has(RULE_DECLARED_MEMBERS) && IsClosed(begin, end);
  const bool looksAtAll =
      rules.HasAny({RULE_NO_VITAL_OR_CACHED, RULE_NO_READ_ONLY, RULE_VITAL_ONLY, RULE_CACHED_ONLY});
  std::uint32_t index = 0;
  for (const auto& member : object.GetObject()) {
    const Place memberPlace{&place, &member.name, index++};
    const bool visit = looksAtAll || Json::IsContainer(member.value);
    if (!visit && !closed && check_.Reports()) {
      continue;  // what its patterns leave open has been said
    }
    bool declared = false;
    for (std::size_t i = begin; i < end; ++i) {
      const Applied applied = applied_[i];
      if (applied.node->object) {
        declared =
            ApplyMember(*applied.node->object, member, memberPlace, visit, applied.closes, end) ||
            declared;
      }
    }
    if (check_.Work().Spent()) {
      check_.GiveUp(memberPlace);
      return;
    }
    if (!declared && closed) {
      NoteUnknown(begin, end, member.name, memberPlace);
    } else if (visit && !at.IsIdMember(Json::Text(member.name))) {
      // Ids belong to every part of the object.
      VisitChild(end, member.value, memberPlace, rules, at.Property(Json::Text(member.name)));
    }
    applied_.resize(end);
  }
}

bool MemberRules::IsClosed(std::size_t begin, std::size_t end) const {
  return std::any_of(
      applied_.begin() + static_cast<std::ptrdiff_t>(begin),
      applied_.begin() + static_cast<std::ptrdiff_t>(end), [](const Applied& applied) {
        if (!applied.closes || !applied.node->object) {
          return false;
        }
        const ObjectRules& rules = *applied.node->object;
        return rules.additional == nullptr ? rules.hasProperties : rules.additional->refusesAll;
      });
}

void MemberRules::NoteUnknown(std::size_t begin, std::size_t end, const Json::Value& name,
                              const Place& place) {
  std::vector<const ObjectRules*> schemas;
  for (std::size_t i = begin; i < end; ++i) {
    const ObjectRules* rules = applied_[i].node->object.get();
    if (rules == nullptr) {
      continue;
    }
    if (applied_[i].closes && rules->additional != nullptr && check_.Reports()) {
      return;  // "additionalProperties" has said so
    }
    schemas.push_back(rules);
    check_.Work().Take(AssertionCheck::StepsOfUnknownMember(*rules));
  }
  findings_.Add(place, findings_.WordsOf(place).UnknownMember(Json::Text(name), schemas,
                                                              findings_.AreWordy()));
}

void MemberRules::VisitArray(std::size_t begin, const Json::Value& array, const Place& place,
                             RuleSet rules, Json::SchemaPlace at) {
  const std::size_t end = applied_.size();
  InstanceIds ids;
  const Json::SchemaPlace items = at.Items();
  const std::string_view givenId =
      rules.Has(RULE_INSTANCE_IDS) ? GivenInstanceId(items) : std::string_view();
  for (rapidjson::SizeType index = 0; index < array.Size(); ++index) {
    const Json::Value& element = array[index];
    const Place elementPlace{&place, nullptr, index};
    for (std::size_t i = begin; i < end; ++i) {
      const Applied applied = applied_[i];
      const Node* node = applied.node->array ? applied.node->array->Element(index) : nullptr;
      if (node != nullptr) {
        Apply(*node, element, elementPlace, applied.closes, end);
      }
    }
    if (check_.Work().Spent()) {
      return;
    }
    if (!givenId.empty() && element.IsObject() && !element.ObjectEmpty()) {
      const std::string_view id = CheckInstanceId(givenId, element, elementPlace);
      if (!id.empty()) {
        ids.push_back({id, index, givenId});
      }
    }
    VisitChild(end, element, elementPlace, rules, items);
    applied_.resize(end);
  }
  CheckIdsAreUnique(ids, array, place);
}

// The place, or the innermost around it whose field leads there. What is read-only may be given as it
// is stored, and whoever allows for that follows the field.
const Place& MemberRules::Nameable(const Place& place) const {
  const Place* nameable = &place;
  for (const Place* step = &place; step->parent != nullptr; step = step->parent) {
    if (findings_.WordsOf(*step).HidesName()) {
      nameable = step->parent;
    }
  }
  return *nameable;
}

void MemberRules::VisitChild(std::size_t begin, const Json::Value& value, const Place& place,
                             RuleSet rules, Json::SchemaPlace at) {
  Tags tags = 0;
  Tags reachable = 0;
  for (std::size_t i = begin; i < applied_.size(); ++i) {
    tags |= applied_[i].node->tags;
    reachable |= applied_[i].node->reachableTags;
  }
  if (rules.Has(RULE_NO_READ_ONLY) && (tags & kReadOnlyTag) != 0) {
    findings_.Add(Nameable(place), "is read-only and may not be given");
    rules = rules.Without(RULE_NO_READ_ONLY);
  }
  rules = RulesOfUse(CheckPart(value, place, rules, at), reachable);
  if (rules.Empty()) {
    return;
  }
  if (value.IsObject()) {
    VisitObject(begin, value, place, rules, at);
  } else if (value.IsArray()) {
    VisitArray(begin, value, place, rules, at);
  }
}

RuleSet MemberRules::CheckPart(const Json::Value& value, const Place& place, RuleSet rules,
                               Json::SchemaPlace at) {
  if (!rules.HasAny({RULE_NO_VITAL_OR_CACHED, RULE_VITAL_ONLY, RULE_CACHED_ONLY})) {
    return rules;
  }
  const bool takenApart = Json::IsContainer(value) && at.IsMixed();
  // An element of nothing but its id stands for itself in every part of its list.
  if (takenApart && (!HoldsOnlyIds(value, at) || (place.name == nullptr && value.IsObject()))) {
    return rules;
  }
  const Json::Kind kind = at.WholeKind();
  // A rule that has spoken is silent about what lies beneath.
  if (rules.Has(RULE_NO_VITAL_OR_CACHED) && kind != Json::Kind::USER) {
    findings_.Add(place, kind == Json::Kind::VITAL ? "vital configuration may not be given here"
                                                   : "cached configuration may not be given here");
  }
  if (rules.Has(RULE_VITAL_ONLY) && kind != Json::Kind::VITAL) {
    findings_.Add(place, "only vital configuration may be given here");
  }
  if (rules.Has(RULE_CACHED_ONLY) && kind != Json::Kind::CACHED) {
    findings_.Add(place, "only cached configuration may be given here");
  }
  return rules.Without(RULE_NO_VITAL_OR_CACHED).Without(RULE_VITAL_ONLY).Without(RULE_CACHED_ONLY);
}

std::string_view MemberRules::CheckInstanceId(std::string_view name, const Json::Value& object,
                                              const Place& place) {
  const auto member = object.FindMember(Json::Reference(name));
  if (member == object.MemberEnd()) {
    findings_.Add(place, MissingMember(name));
    return {};
  }
  const Place memberPlace{&place, &member->name,
                          static_cast<std::uint32_t>(member - object.MemberBegin())};
  if (!member->value.IsString()) {
    findings_.Add(memberPlace,
                  "expected a text, found " + findings_.WordsOf(memberPlace).Found(member->value));
    return {};
  }
  if (member->value.GetStringLength() == 0) {
    findings_.Add(memberPlace, "the instance id may not be empty");
  }
  return Json::Text(member->value);
}

void MemberRules::CheckIdsAreUnique(InstanceIds& ids, const Json::Value& array,
                                    const Place& place) {
  if (ids.size() < 2) {
    return;
  }
  std::sort(ids.begin(), ids.end(), [](const InstanceIdAt& a, const InstanceIdAt& b) {
    return a.id != b.id ? a.id < b.id : a.index < b.index;
  });
  const InstanceIdAt* first = &ids.front();
  for (std::size_t i = 1; i < ids.size(); ++i) {
    if (ids[i].id != first->id) {
      first = &ids[i];
      continue;
    }
    const Json::Value& element = array[ids[i].index];
    const auto member = element.FindMember(Json::Reference(ids[i].member));
    const Place elementPlace{&place, nullptr, ids[i].index};
    const Place memberPlace{&elementPlace, &member->name,
                            static_cast<std::uint32_t>(member - element.MemberBegin())};
    findings_.Add(memberPlace, "the instance id " +
                                   findings_.WordsOf(memberPlace).Literal(member->value) +
                                   " is taken by element " + std::to_string(first->index));
  }
}

}  // namespace JsonValidator
