#include "json_schema/schema_compiler.h"

#include <algorithm>
#include <unordered_map>

namespace JsonValidator {
namespace {

// Each place of a value may be checked by so many schemas inside one another. With Json::kMaxDepth
// places on the way, this bounds the stack that a validation takes.
constexpr int kLongestChain = 40;

class LoopSearch {
 public:
  explicit LoopSearch(std::vector<SchemaFault>& faults) : faults_(faults) {}

  /// How many schemas are nested in one another at the place of this one, as far as it was looked
  /// at.
  int Height(const Node& node, int depth) {
    if (depth > kLongestChain) {
      return depth;
    }
    const auto [known, isNew] = heights_.try_emplace(&node, kOpen);
    if (!isNew) {
      return known->second;
    }
    int height = 1;
    ForEachBeside(node, [&](const Node& other) {
      const int above = Height(other, depth + 1);
      if (above == kOpen) {
        NoteLoop(node, other);
      }
      height = std::max(height, above + 1);
    });
    return heights_[&node] = height;
  }

 private:
  static constexpr int kOpen = 0;  // still being looked at

  void NoteLoop(const Node& from, const Node& to) {
    const bool closedByReference = from.composition && from.composition->reference == &to;
    const Json::Value* where =
        closedByReference ? Json::FindMember(*from.source, "$ref") : from.source;
    faults_.push_back({where, "the reference leads back to where it stands"});
  }

  std::vector<SchemaFault>& faults_;
  std::unordered_map<const Node*, int> heights_;
};

bool SpreadTags(Node& node) {
  const Tags before = node.reachableTags;
  node.reachableTags |= node.tags;
  const auto take = [&](const Node& other) { node.reachableTags |= other.reachableTags; };
  ForEachBeside(node, take);
  ForEachBeneath(node, take);
  return node.reachableTags != before;
}

}  // namespace

void FindLoops(const std::deque<Node>& nodes, std::vector<SchemaFault>& faults) {
  LoopSearch search(faults);
  for (const Node& node : nodes) {
    if (search.Height(node, 1) > kLongestChain) {
      faults.push_back({node.source, "too many schemas are nested in one another here"});
      return;
    }
  }
}

void LinkTags(std::deque<Node>& nodes) {
  for (Node& node : nodes) {
    if (node.composition && !(node.composition->anyOf.empty() && node.composition->oneOf.empty())) {
      node.reachableTags |= kBranches;
    }
    if (!node.object) {
      continue;
    }
    const Node* additional = node.object->additional;
    if (node.object->hasProperties || (additional != nullptr && additional->refusesAll)) {
      node.reachableTags |= kDeclares;
    }
  }
  // Nodes stand before those that they lead to, so that going backwards few rounds are needed.
  for (bool changed = true; changed;) {
    changed = false;
    for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
      changed = SpreadTags(*node) || changed;
    }
  }
}

}  // namespace JsonValidator
