#include "yaml/value_place.h"

#include "json/schema_keywords.h"
#include "yaml/schema_kinds.h"

#include <algorithm>
#include <functional>

namespace tarnctl {

namespace Keyword = Json::Keyword;

// One of the schemas describes the place; of none nothing is known.
struct ValuePlace::Node {
  using Schemas = std::vector<const Json::Value*>;

  Schemas schemas;
  std::optional<ValueKinds> kinds;
  bool isOpened = false;  // what follows is read
  std::map<std::string, Schemas, std::less<>> members;
  Schemas otherMembers;
  std::vector<Json::SchemaPart> parts;
};

namespace {

// What a part says of an element of a list, or null.
const Json::Value* ItemOf(const Json::Value& part, std::size_t index) {
  const Json::Value* items = Json::FindMember(part, Keyword::kItems);
  if (items == nullptr || !items->IsArray()) {
    return items != nullptr && items->IsObject() ? items : nullptr;
  }
  return index < items->Size() ? &(*items)[static_cast<rapidjson::SizeType>(index)]
                               : Json::FindObject(part, "additionalItems");
}

}  // namespace

ValueKinds ValuePlace::Kinds() const {
  if (node_ == nullptr) {
    return ValueKinds(ValueKinds::kAll);
  }
  if (!node_->kinds) {
    ValueKinds kinds(0);
    for (const Json::Value* schema : node_->schemas) {
      kinds = kinds | KindsOf(*schema, places_->references_);
    }
    node_->kinds = kinds;
  }
  return *node_->kinds;
}

ValuePlace ValuePlace::Member(std::string_view name) const {
  if (node_ == nullptr) {
    return {};
  }
  const Node& node = places_->Opened(*node_);
  const auto declared = node.members.find(name);
  return {places_,
          places_->NodeOf(declared != node.members.end() ? declared->second : node.otherMembers)};
}

ValuePlace ValuePlace::Element(std::size_t index) const {
  if (node_ == nullptr) {
    return {};
  }
  std::vector<const Json::Value*> schemas;
  for (const Json::SchemaPart& part : places_->Opened(*node_).parts) {
    if (const Json::Value* item = ItemOf(*part.schema, index)) {
      schemas.push_back(item);
    }
  }
  return {places_, places_->NodeOf(std::move(schemas))};
}

ValuePlaces::ValuePlaces(const Json::SchemaReferences& references, const Json::Value& schema)
    : references_(references), schema_(schema) {}

ValuePlaces::~ValuePlaces() = default;

ValuePlace ValuePlaces::Root() {
  return {this, NodeOf({&schema_})};
}

ValuePlaces::Node* ValuePlaces::NodeOf(Schemas schemas) {
  if (schemas.empty()) {
    return nullptr;
  }
  std::sort(schemas.begin(), schemas.end(), std::less<>());
  schemas.erase(std::unique(schemas.begin(), schemas.end()), schemas.end());
  Node*& node = known_[schemas];
  if (node == nullptr) {
    node = &nodes_.emplace_back();
    node->schemas = std::move(schemas);
  }
  return node;
}

ValuePlaces::Node& ValuePlaces::Opened(Node& node) {
  if (!node.isOpened) {
    for (const Json::Value* schema : node.schemas) {
      const std::vector<Json::SchemaPart> parts = Json::PartsOf(*schema, references_);
      ReadMembers(node, parts);
      node.parts.insert(node.parts.end(), parts.begin(), parts.end());
    }
    node.isOpened = true;
  }
  return node;
}

// What always applies goes before what may: a branch mostly repeats it, and says less.
void ValuePlaces::ReadMembers(Node& node, const std::vector<Json::SchemaPart>& parts) {
  std::map<std::string_view, Schemas> always;
  std::map<std::string_view, Schemas> perhaps;
  for (const Json::SchemaPart& part : parts) {
    const Json::Value* properties = Json::FindObject(*part.schema, Keyword::kProperties);
    if (properties != nullptr) {
      for (const auto& [name, property] : properties->GetObject()) {
        (part.applies == Json::Applies::ALWAYS ? always : perhaps)[Json::Text(name)].push_back(
            &property);
      }
    }
    // Which pattern a name matches is for the validator to say.
    const Json::Value* patterns = Json::FindObject(*part.schema, Keyword::kPatternProperties);
    if (patterns != nullptr) {
      for (const auto& pattern : patterns->GetObject()) {
        node.otherMembers.push_back(&pattern.value);
      }
    }
    const Json::Value* others = Json::FindMember(*part.schema, Keyword::kAdditionalProperties);
    if (others != nullptr && !others->IsFalse()) {
      node.otherMembers.push_back(others);
    } else if (others == nullptr && patterns != nullptr && properties == nullptr) {
      node.otherMembers.push_back(&AnySchema());  // it is open to names that match none
    }
  }
  for (const auto& [name, schemas] : always) {
    node.members[std::string(name)].push_back(schemas.front());
  }
  for (const auto& [name, schemas] : perhaps) {
    if (always.count(name) == 0) {
      Schemas& all = node.members[std::string(name)];
      all.insert(all.end(), schemas.begin(), schemas.end());
    }
  }
}

}  // namespace tarnctl
