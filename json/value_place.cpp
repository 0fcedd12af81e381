#include "json/value_place.h"

#include "json/schema_keywords.h"
#include "json/schema_kinds.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace Json {

// One of the sayings describes the place; of none nothing is known.
struct ValuePlace::Node {
  using Sayings = ValuePlaces::Sayings;

  Sayings sayings;
  std::optional<ValueKinds> kinds;
  bool isOpened = false;  // what follows is read
  std::map<std::string_view, Sayings> members;
  std::vector<std::string_view> names;  // of the members, in order
  std::vector<std::pair<std::string_view, ValuePlaces::Saying>> patterns;
  Sayings others;
  std::vector<SchemaPart> parts;
  std::vector<bool> counts;  // of the parts

  // What is said of a member that no schema names. Which pattern its name matches is for the validator
  // to say.
  Sayings OtherMembers() const {
    Sayings all;
    for (const auto& [pattern, saying] : patterns) {
      all.push_back(saying);
    }
    all.insert(all.end(), others.begin(), others.end());
    for (auto& saying : all) {
      saying.applies =
          patterns.empty() ? saying.applies : std::max(saying.applies, Applies::PERHAPS);
    }
    return all;
  }
};

namespace {

// What a part says of an element of a list, or null.
const Value* ItemOf(const Value& part, std::size_t index) {
  const Value* items = FindMember(part, Keyword::kItems);
  if (items == nullptr || !items->IsArray()) {
    return items != nullptr && items->IsObject() ? items : nullptr;
  }
  return index < items->Size() ? &(*items)[static_cast<rapidjson::SizeType>(index)]
                               : FindObject(part, "additionalItems");
}

}  // namespace

ValueKinds ValuePlace::Kinds() const {
  if (node_ == nullptr) {
    return ValueKinds(ValueKinds::kAll);
  }
  if (!node_->kinds) {
    // Those that count come first.
    node_->kinds = node_->sayings.front().counts ? places_->KindsOfAll(node_->sayings, true)
                                                 : ValueKinds(ValueKinds::kAll);
  }
  return *node_->kinds;
}

ValueKinds ValuePlace::KindsInBranches() const {
  return node_ == nullptr || node_->sayings.front().counts
             ? Kinds()
             : places_->KindsOfAll(node_->sayings, false);
}

ValuePlace ValuePlace::Member(std::string_view name) const {
  if (node_ == nullptr) {
    return {};
  }
  const Node& node = places_->Opened(*node_);
  const auto declared = node.members.find(name);
  if (declared == node.members.end()) {
    return {places_, places_->NodeOf(node.OtherMembers())};
  }
  ValuePlaces::Sayings sayings = declared->second;
  if (std::none_of(sayings.begin(), sayings.end(),
                   [](const auto& saying) { return saying.counts; })) {
    const ValuePlaces::Sayings others = node.OtherMembers();
    sayings.insert(sayings.end(), others.begin(), others.end());
  }
  return {places_, places_->NodeOf(sayings)};
}

ValuePlace ValuePlace::Element(std::size_t index) const {
  if (node_ == nullptr) {
    return {};
  }
  ValuePlaces::Sayings sayings;
  const Node& node = places_->Opened(*node_);
  for (std::size_t i = 0; i < node.parts.size(); ++i) {
    if (const Value* item = ItemOf(*node.parts[i].schema, index)) {
      sayings.push_back({item, node.parts[i].applies, node.counts[i], node.parts[i].isTested});
    }
  }
  return {places_, places_->NodeOf(sayings)};
}

std::vector<SchemaPart> ValuePlace::Parts() const {
  return node_ == nullptr ? std::vector<SchemaPart>() : places_->Opened(*node_).parts;
}

const Value* ValuePlace::FindAnnotation(const char* keyword) const {
  if (node_ == nullptr) {
    return nullptr;
  }
  for (const auto& saying : node_->sayings) {
    if (saying.isTested) {
      continue;
    }
    for (const Value* schema : places_->references_.Chain(*saying.schema)) {
      if (const Value* found = FindMember(*schema, keyword)) {
        return found;
      }
    }
  }
  for (const SchemaPart& part : Parts()) {
    const Value* found = FindMember(*part.schema, keyword);
    if (found != nullptr && part.applies == Applies::ALWAYS) {
      return found;
    }
  }
  return nullptr;
}

void ValuePlace::ForEachMember(const Visit& visit) const {
  if (node_ != nullptr) {
    for (const std::string_view name : places_->Opened(*node_).names) {
      visit(name, Member(name));
    }
  }
}

void ValuePlace::ForEachPattern(const Visit& visit) const {
  if (node_ != nullptr) {
    for (const auto& [pattern, saying] : places_->Opened(*node_).patterns) {
      visit(pattern, {places_, places_->NodeOf({saying})});
    }
  }
}

ValuePlace ValuePlace::OtherMembers() const {
  return node_ == nullptr ? ValuePlace()
                          : ValuePlace(places_, places_->NodeOf(places_->Opened(*node_).others));
}

std::size_t ValuePlace::Positions() const {
  std::size_t positions = 0;
  for (const SchemaPart& part : Parts()) {
    const Value* items = FindMember(*part.schema, Keyword::kItems);
    if (items != nullptr && items->IsArray()) {
      positions = std::max<std::size_t>(positions, items->Size());
    }
  }
  return positions;
}

ValuePlaces::ValuePlaces(const SchemaReferences& references, const Value& schema)
    : references_(references), schema_(schema) {}

ValuePlaces::~ValuePlaces() = default;

ValuePlace ValuePlaces::Root() {
  return {this, NodeOf({{&schema_, Applies::ALWAYS, true, false}})};
}

ValueKinds ValuePlaces::KindsOfAll(const Sayings& sayings, bool counting) const {
  ValueKinds kinds(0);
  for (const Saying& saying : sayings) {
    kinds = saying.counts == counting ? kinds | KindsOf(*saying.schema, references_) : kinds;
  }
  return kinds;
}

ValuePlaces::Node* ValuePlaces::NodeOf(const Sayings& sayings) {
  Sayings distinct;
  std::unordered_set<const Value*> known;
  for (const bool counts : {true, false}) {
    for (const Saying& saying : sayings) {
      if (saying.counts == counts && known.insert(saying.schema).second) {
        distinct.push_back(saying);
      }
    }
  }
  if (distinct.empty()) {
    return nullptr;
  }
  Node*& node = known_[distinct];
  if (node == nullptr) {
    node = &nodes_.emplace_back();
    node->sayings = std::move(distinct);
  }
  return node;
}

ValuePlaces::Node& ValuePlaces::Opened(Node& node) {
  if (!node.isOpened) {
    for (const Saying& saying : node.sayings) {
      const std::vector<SchemaPart> parts = PartsOf(*saying.schema, references_);
      ReadMembers(node, saying, parts);
      for (const SchemaPart& part : parts) {
        node.parts.push_back({part.schema, std::max(part.applies, saying.applies),
                              part.isTested || saying.isTested});
        node.counts.push_back(saying.counts);
      }
    }
    node.isOpened = true;
  }
  return node;
}

// What always applies goes before what may: a branch mostly repeats it, and says less.
void ValuePlaces::ReadMembers(Node& node, const Saying& about,
                              const std::vector<SchemaPart>& parts) {
  std::unordered_map<std::string_view, const Value*> always;  // the first that says something
  for (const SchemaPart& part : parts) {
    const Value* properties = FindObject(*part.schema, Keyword::kProperties);
    if (properties != nullptr && part.applies == Applies::ALWAYS) {
      for (const auto& property : properties->GetObject()) {
        always.emplace(Text(property.name), &property.value);
      }
    }
  }
  for (const SchemaPart& part : parts) {
    const Applies applies = std::max(part.applies, about.applies);
    const bool isTested = part.isTested || about.isTested;
    const Value* properties = FindObject(*part.schema, Keyword::kProperties);
    if (properties != nullptr) {
      for (const auto& property : properties->GetObject()) {
        const auto first = always.find(Text(property.name));
        const bool counts =
            about.counts && (first == always.end() || first->second == &property.value);
        const auto [member, isNew] = node.members.try_emplace(Text(property.name));
        member->second.push_back({&property.value, applies, counts, isTested});
        if (isNew) {
          node.names.push_back(member->first);
        }
      }
    }
    const Value* patterns = FindObject(*part.schema, Keyword::kPatternProperties);
    if (patterns != nullptr) {
      for (const auto& pattern : patterns->GetObject()) {
        node.patterns.push_back(
            {Text(pattern.name), {&pattern.value, applies, about.counts, isTested}});
      }
    }
    const Value* others = FindMember(*part.schema, Keyword::kAdditionalProperties);
    if (others != nullptr && !others->IsFalse()) {
      node.others.push_back({others, applies, about.counts, isTested});
    } else if (others == nullptr && patterns != nullptr && properties == nullptr) {
      // It is open to names that match none.
      node.others.push_back({&any_, applies, about.counts, isTested});
    }
  }
}

}  // namespace Json
