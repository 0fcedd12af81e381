// What several schemas say together of one place.
#include "json/near_miss.h"
#include "json_schema/describe.h"
#include "json_schema/schema_sense.h"

#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>

namespace JsonValidator {
namespace {

// References can make a short schema mean a long one at many places.
constexpr std::size_t kMostParts = 1000000;

// What cannot be decided may match.
bool MatchesAny(const ObjectRules& rules, std::string_view name, Budget& budget) {
  return std::any_of(rules.patternProperties.begin(), rules.patternProperties.end(),
                     [&](const PatternProperty& property) {
                       return property.pattern->Match(name, budget) != Pattern::Result::NO_MATCH;
                     });
}

bool Declares(const ObjectRules& rules, std::string_view name, Budget& budget) {
  const Property* property = rules.properties.Find(name);
  return property != nullptr ? !property->node->refusesAll : MatchesAny(rules, name, budget);
}

bool IsClosed(const ObjectRules& rules) {
  return rules.additional == nullptr ? rules.hasProperties : rules.additional->refusesAll;
}

class PlaceSense {
 public:
  PlaceSense(std::size_t& left, Sense& sense, Budget& budget)
      : left_(left), sense_(sense), budget_(budget) {}

  /// \param root  of a member, an element or the whole object
  void Judge(const Node& root) {
    Take(root, true, true);
    TypeSet types = kAnyType;
    for (const Part& part : parts_) {
      if (part.always) {
        types &= part.node->refusesAll ? TypeSet{0} : part.node->types;
        refusesAll_ = refusesAll_ || part.node->refusesAll;
      }
    }
    if (types == 0 && !refusesAll_) {
      sense_.refused.push_back(
          {root.source, "no value is of all the types that have to hold here together"});
    }
    for (std::size_t i = 0; i < parts_.size() && (types & kObjectType) != 0 && left_ > 0; ++i) {
      if (parts_[i].asks && parts_[i].node->object) {
        JudgeRequired(parts_[i]);
      }
    }
  }

 private:
  struct Part {
    const Node* node;
    bool always;  ///< holds whatever the value
    bool asks;    ///< what it requires has to be there, not only may
  };

  void Take(const Node& node, bool always, bool asks) {
    if (!seen_.insert(&node).second || left_ == 0) {
      return;
    }
    --left_;
    parts_.push_back({&node, always, asks});
    if (node.composition && node.composition->reference != nullptr) {
      Take(*node.composition->reference, always, asks);
      return;
    }
    // What holds always comes first, for what is met twice.
    if (node.composition) {
      TakeAll(node.composition->allOf, always, asks);
      TakeAll(node.composition->anyOf, false, asks);
      TakeAll(node.composition->oneOf, false, asks);
      for (const Node* branch : {node.composition->consequence, node.composition->alternative}) {
        if (branch != nullptr && node.composition->condition != nullptr) {
          Take(*branch, false, asks);
        }
      }
      if (node.composition->condition != nullptr) {
        Take(*node.composition->condition, false, false);
      }
    }
    if (node.object) {
      for (const Dependency& dependency : node.object->dependencies) {
        if (dependency.node != nullptr) {
          Take(*dependency.node, false, asks);
        }
      }
    }
  }

  void TakeAll(const Nodes& nodes, bool always, bool asks) {
    for (const Node* node : nodes) {
      Take(*node, always, asks);
    }
  }

  void JudgeRequired(const Part& part) {
    for (const std::string_view name : part.node->object->required) {
      left_ -= std::min(left_, parts_.size());
      const bool impossible = CannotHold(name);
      if (!impossible && IsDeclared(name)) {
        continue;
      }
      const std::string text =
          "member " + Quoted(name) +
          (impossible
               ? " is required and can never be given: nothing declares it, and the object is "
                 "closed to other members"
               : " is required and declared nowhere") +
          Suggestion(name);
      // Where only one of several branches asks for it, the object can still be had without.
      (impossible && part.always ? sense_.refused : sense_.odd)
          .push_back({&Where(*part.node, name), text});
    }
  }

  bool IsDeclared(std::string_view name) const {
    return std::any_of(parts_.begin(), parts_.end(), [&](const Part& part) {
      return part.node->object && Declares(*part.node->object, name, budget_);
    });
  }

  bool CannotHold(std::string_view name) const {
    bool closed = false;
    bool open = false;
    for (const auto& [node, always, asks] : parts_) {
      if (!node->object) {
        continue;
      }
      const ObjectRules& rules = *node->object;
      const Property* property = rules.properties.Find(name);
      const bool refuses = property != nullptr
                               ? property->node->refusesAll
                               : rules.additional != nullptr && rules.additional->refusesAll &&
                                     !MatchesAny(rules, name, budget_);
      if (always && refuses) {
        return true;
      }
      closed = closed || (always && IsClosed(rules));
      open = open || (rules.additional != nullptr && !rules.additional->refusesAll);
    }
    return closed && !open && !IsDeclared(name);
  }

  std::string Suggestion(std::string_view name) const {
    constexpr std::size_t kMost = 100;  // nobody reads more
    if (sense_.refused.size() + sense_.odd.size() >= kMost) {
      return {};
    }
    Json::NearMiss nearest(name);
    for (const Part& part : parts_) {
      if (part.node->object) {
        for (const Property& property : part.node->object->properties.All()) {
          nearest.Offer(property.name);
        }
      }
    }
    return nearest.Best().empty() || nearest.Best() == name
               ? std::string()
               : "; did you mean " + Quoted(nearest.Best()) + "?";
  }

  static const Json::Value& Where(const Node& node, std::string_view name) {
    const Json::Value* names = Json::FindMember(*node.source, "required");
    for (rapidjson::SizeType i = 0; names != nullptr && i < names->Size(); ++i) {
      if (Json::Text((*names)[i]) == name) {
        return (*names)[i];
      }
    }
    return *node.source;
  }

  std::size_t& left_;
  Sense& sense_;
  Budget& budget_;
  std::vector<Part> parts_;
  std::unordered_set<const Node*> seen_;
  bool refusesAll_ = false;
};

}  // namespace

void JudgePlaces(const CompiledSchema& schema, Sense& sense, Budget& budget) {
  std::unordered_set<const Node*> roots;
  std::size_t left = kMostParts;
  const auto judge = [&](const Node& root) {
    if (roots.insert(&root).second) {
      PlaceSense(left, sense, budget).Judge(root);
    }
  };
  judge(schema.Root());
  for (const Node& node : schema.AllNodes()) {
    ForEachBeneath(node, judge);
  }
}

}  // namespace JsonValidator
