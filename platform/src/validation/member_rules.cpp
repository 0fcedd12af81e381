#include "validation/member_rules.h"

#include "validation/describe.h"
#include "validation/known_members.h"

#include <algorithm>
#include <utility>

namespace JsonValidator {
namespace {

bool IsContainer(const Json::Value& value) {
  return value.IsObject() || value.IsArray();
}

/// The rules that can still find anything under a place.
RuleSet StillOfUse(RuleSet rules, Tags reachable) {
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

}  // namespace

void MemberRules::Check(const Node& root, const Json::Value& value) {
  if (rules_.Empty()) {
    return;
  }
  Apply(root, value, true, 0);
  Tags tags = 0;
  Tags reachable = 0;
  for (const Applied& applied : applied_) {
    tags |= applied.node->tags;
    reachable |= applied.node->reachableTags;
  }
  const Part part = PartOf(tags, Part::USER);
  // What the root's own tag governs is looked for in its members.
  const RuleSet rules = part == Part::USER ? StillOfUse(rules_, reachable) : rules_;
  if (rules.Empty()) {
    return;
  }
  if (value.IsObject()) {
    const Property* instanceId = rules.Has(RULE_INSTANCE_IDS) ? InstanceId(0) : nullptr;
    if (instanceId != nullptr && !value.ObjectEmpty()) {
      CheckInstanceId(*instanceId, value, Place{});
    }
    VisitObject(0, value, Place{}, rules, part);
  } else if (value.IsArray()) {
    VisitArray(0, value, Place{}, rules, part);
  }
}

MemberRules::Part MemberRules::PartOf(Tags tags, Part inherited) {
  if (inherited != Part::USER) {
    return inherited;
  }
  return (tags & kVitalTag) != 0    ? Part::VITAL
         : (tags & kCachedTag) != 0 ? Part::CACHED
                                    : Part::USER;
}

void MemberRules::Apply(const Node& node, const Json::Value& value, bool closes,
                        std::size_t begin) {
  for (std::size_t i = begin; i < applied_.size(); ++i) {
    if (applied_[i].node == &node) {
      if (closes && !applied_[i].closes) {
        applied_[i].closes = true;
        ApplyBeside(node, value, closes, begin);
      }
      return;
    }
  }
  applied_.push_back({&node, closes});
  ApplyBeside(node, value, closes, begin);
}

void MemberRules::ApplyBeside(const Node& node, const Json::Value& value, bool closes,
                              std::size_t begin) {
  if (node.composition) {
    const Composition& with = *node.composition;
    if (with.reference != nullptr) {
      Apply(*with.reference, value, closes, begin);
      return;
    }
    for (const Node* part : with.allOf) {
      Apply(*part, value, closes, begin);
    }
    ApplyBranches(with.anyOf, value, closes, begin);
    ApplyBranches(with.oneOf, value, closes, begin);
    if (with.condition != nullptr) {
      Apply(*with.condition, value, false, begin);
      const Node* branch =
          check_.Holds(*with.condition, value, Place{}) ? with.consequence : with.alternative;
      if (branch != nullptr) {
        Apply(*branch, value, false, begin);
      }
    }
  }
  if (node.object && value.IsObject()) {
    for (const Dependency& dependency : node.object->dependencies) {
      if (dependency.node != nullptr && Json::FindMember(value, dependency.name) != nullptr) {
        Apply(*dependency.node, value, false, begin);
      }
    }
  }
}

void MemberRules::ApplyBranches(const Nodes& branches, const Json::Value& value, bool closes,
                                std::size_t begin) {
  bool any = false;
  for (const Node* branch : branches) {
    if (check_.Holds(*branch, value, Place{})) {
      any = true;
      Apply(*branch, value, closes, begin);
    }
  }
  for (std::size_t i = 0; i < branches.size() && !any; ++i) {
    Apply(*branches[i], value, closes, begin);
  }
}

bool MemberRules::ApplyMember(const ObjectRules& rules, const Json::Value::Member& member,
                              bool apply, bool closes, std::size_t begin) {
  const std::string_view name = Json::Text(member.name);
  bool declared = false;
  const auto declare = [&](const Node& node) {
    declared = true;
    if (apply) {
      Apply(node, member.value, closes, begin);
    }
  };
  if (const Property* property = rules.properties.Find(name)) {
    declare(*property->node);
  }
  for (const PatternProperty& pattern : rules.patternProperties) {
    if (check_.IsSound(member.name) && pattern.pattern->Match(name) == Pattern::Result::MATCH) {
      declare(*pattern.node);
    }
  }
  if (!declared && rules.additional != nullptr && !rules.additional->refusesAll) {
    declare(*rules.additional);
  }
  return declared;
}

void MemberRules::VisitObject(std::size_t begin, const Json::Value& object, const Place& place,
                              RuleSet rules, Part part) {
  const std::size_t end = applied_.size();
  const bool closed = rules.Has(RULE_DECLARED_MEMBERS) && IsClosed(begin, end);
  const bool looksAtAll =
      rules.HasAny({RULE_NO_VITAL_OR_CACHED, RULE_NO_READ_ONLY, RULE_VITAL_ONLY, RULE_CACHED_ONLY});
  std::uint32_t index = 0;
  for (const auto& member : object.GetObject()) {
    const Place memberPlace{&place, &member.name, index++};
    const bool visit = looksAtAll || IsContainer(member.value);
    bool declared = false;
    for (std::size_t i = begin; i < end; ++i) {
      const Applied applied = applied_[i];
      if (applied.node->object) {
        declared =
            ApplyMember(*applied.node->object, member, visit, applied.closes, end) || declared;
      }
    }
    if (!declared && closed) {
      NoteUnknown(begin, end, member.name, memberPlace);
    } else if (visit) {
      VisitChild(end, member.value, memberPlace, rules, part);
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
  }
  findings_.Add(place, UnknownMember(Json::Text(name), schemas));
}

void MemberRules::VisitArray(std::size_t begin, const Json::Value& array, const Place& place,
                             RuleSet rules, Part part) {
  const std::size_t end = applied_.size();
  InstanceIds ids;
  for (rapidjson::SizeType index = 0; index < array.Size(); ++index) {
    const Json::Value& element = array[index];
    const Place elementPlace{&place, nullptr, index};
    for (std::size_t i = begin; i < end; ++i) {
      const Applied applied = applied_[i];
      const Node* node = applied.node->array ? applied.node->array->Element(index) : nullptr;
      if (node != nullptr) {
        Apply(*node, element, applied.closes, end);
      }
    }
    if (rules.Has(RULE_INSTANCE_IDS) && element.IsObject() && !element.ObjectEmpty()) {
      const Property* instanceId = InstanceId(end);
      if (instanceId != nullptr) {
        const std::string_view id = CheckInstanceId(*instanceId, element, elementPlace);
        if (!id.empty()) {
          ids.push_back({id, index, instanceId->name});
        }
      }
    }
    VisitChild(end, element, elementPlace, rules, part);
    applied_.resize(end);
  }
  CheckIdsAreUnique(ids, array, place);
}

void MemberRules::VisitChild(std::size_t begin, const Json::Value& value, const Place& place,
                             RuleSet rules, Part part) {
  Tags tags = 0;
  Tags reachable = 0;
  for (std::size_t i = begin; i < applied_.size(); ++i) {
    tags |= applied_[i].node->tags;
    reachable |= applied_[i].node->reachableTags;
  }
  if (rules.Has(RULE_NO_READ_ONLY) && (tags & kReadOnlyTag) != 0) {
    findings_.Add(place, "is read-only and may not be given");
    rules = rules.Without(RULE_NO_READ_ONLY);
  }
  if ((tags & kInstanceIdTag) != 0) {
    return;  // belongs to every part of the object
  }
  const Part own = PartOf(tags, part);
  rules = StillOfUse(CheckPart(value, place, rules, own, reachable), reachable);
  if (rules.Empty()) {
    return;
  }
  if (value.IsObject()) {
    VisitObject(begin, value, place, rules, own);
  } else if (value.IsArray()) {
    VisitArray(begin, value, place, rules, own);
  }
}

RuleSet MemberRules::CheckPart(const Json::Value& value, const Place& place, RuleSet rules,
                               Part part, Tags reachable) {
  // A rule that has spoken is silent about what lies beneath.
  if (rules.Has(RULE_NO_VITAL_OR_CACHED) && part != Part::USER) {
    findings_.Add(place, part == Part::VITAL ? "vital configuration may not be given here"
                                             : "cached configuration may not be given here");
    rules = rules.Without(RULE_NO_VITAL_OR_CACHED);
  }
  const auto only = [&](Rule rule, Part wanted, Tags tag, std::string_view error) {
    if (!rules.Has(rule)) {
      return;
    }
    const bool mayHoldIt = part == Part::USER && IsContainer(value) && (reachable & tag) != 0;
    if (part != wanted && !mayHoldIt) {
      findings_.Add(place, error);
    }
    if (part == wanted || !mayHoldIt) {
      rules = rules.Without(rule);
    }
  };
  only(RULE_VITAL_ONLY, Part::VITAL, kVitalTag, "only vital configuration may be given here");
  only(RULE_CACHED_ONLY, Part::CACHED, kCachedTag, "only cached configuration may be given here");
  return rules;
}

const Property* MemberRules::InstanceId(std::size_t begin) const {
  for (std::size_t i = begin; i < applied_.size(); ++i) {
    const Node& node = *applied_[i].node;
    if (node.object && node.object->instanceId != nullptr) {
      return node.object->instanceId;
    }
  }
  return nullptr;
}

std::string_view MemberRules::CheckInstanceId(const Property& property, const Json::Value& object,
                                              const Place& place) {
  const auto member = object.FindMember(Json::Reference(property.name));
  if (member == object.MemberEnd()) {
    findings_.Add(place, MissingMember(property.name));
    return {};
  }
  const Place memberPlace{&place, &member->name,
                          static_cast<std::uint32_t>(member - object.MemberBegin())};
  if (!member->value.IsString()) {
    findings_.Add(memberPlace, "expected a text, found " + Found(member->value));
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
    findings_.Add(Place{&elementPlace, &member->name,
                        static_cast<std::uint32_t>(member - element.MemberBegin())},
                  "the instance id " + Quoted(ids[i].id) + " is taken by element " +
                      std::to_string(first->index));
  }
}

}  // namespace JsonValidator
