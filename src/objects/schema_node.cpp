#include "objects/schema_node.h"

#include "platform/generated_instance_id.h"

#include <algorithm>
#include <string>

namespace TarnConfigStore {
namespace {

constexpr unsigned kUserBit = 1;
constexpr unsigned kVitalBit = 2;
constexpr unsigned kCachedBit = 4;

}  // namespace

SchemaNode::SchemaNode(const Json::Value& root, const Json::Value& holder)
    : root_(&root), holder_(&holder), node_(Json::FollowReference(root, holder)) {}

SchemaNode SchemaNode::Property(std::string_view name) const {
  if (node_ == nullptr) {
    return {};
  }
  const Json::Value* properties = Json::FindMember(*node_, "properties");
  const Json::Value* property =
      properties == nullptr ? nullptr : Json::FindMember(*properties, name);
  return property == nullptr ? SchemaNode() : SchemaNode(*root_, *property);
}

SchemaNode SchemaNode::Items() const {
  const Json::Value* items = node_ == nullptr ? nullptr : Json::FindMember(*node_, "items");
  return items == nullptr || !items->IsObject() ? SchemaNode() : SchemaNode(*root_, *items);
}

const Json::Value* SchemaNode::Keyword(std::string_view name) const {
  if (node_ == nullptr) {
    return nullptr;
  }
  const Json::Value* own = Json::FindMember(*node_, name);
  return own != nullptr || holder_ == node_ ? own : Json::FindMember(*holder_, name);
}

DataPart SchemaNode::Tag() const {
  const Json::Value* vital = Keyword("vital");
  if (vital != nullptr && vital->IsTrue()) {
    return DataPart::VITAL;
  }
  const Json::Value* cached = Keyword("cached");
  return cached != nullptr && cached->IsTrue() ? DataPart::CACHED : DataPart::USER;
}

bool SchemaNode::MentionsTag() const {
  return Keyword("vital") != nullptr || Keyword("cached") != nullptr;
}

bool SchemaNode::IsInstanceId() const {
  const Json::Value* keyword = Keyword("instanceId");
  return keyword != nullptr && keyword->IsTrue();
}

std::string_view SchemaNode::InstanceIdMember() const {
  if (node_ == nullptr) {
    return {};
  }
  if (const Json::Value* properties = Json::FindMember(*node_, "properties");
      properties != nullptr && properties->IsObject()) {
    for (const auto& property : properties->GetObject()) {
      if (SchemaNode(*root_, property.value).IsInstanceId()) {
        return Json::Text(property.name);
      }
    }
  }
  const Json::Value* generated = Keyword("generatedInstanceId");
  return generated != nullptr && generated->IsTrue() ? kGeneratedInstanceIdMember
                                                     : std::string_view();
}

unsigned SchemaNode::PartsBelow(std::vector<const Json::Value*>& visited) const {
  if (node_ == nullptr) {
    return kUserBit;
  }
  switch (Tag()) {
    case DataPart::VITAL:
      return kVitalBit;
    case DataPart::CACHED:
      return kCachedBit;
    case DataPart::USER:
      break;
  }
  // Definitions may contain themselves, more than once even; what was seen adds nothing.
  if (std::find(visited.begin(), visited.end(), node_) != visited.end()) {
    return 0;
  }
  visited.push_back(node_);
  unsigned parts = 0;
  bool leaf = true;
  const Json::Value* properties = Json::FindMember(*node_, "properties");
  if (properties != nullptr && properties->IsObject()) {
    for (const auto& property : properties->GetObject()) {
      const SchemaNode node(*root_, property.value);
      if (!node.IsInstanceId()) {
        leaf = false;
        parts |= node.PartsBelow(visited);
      }
    }
  }
  if (const SchemaNode items = Items()) {
    leaf = false;
    parts |= items.PartsBelow(visited);
  }
  return leaf ? kUserBit : parts;
}

unsigned SchemaNode::Parts() const {
  std::vector<const Json::Value*> visited;
  return PartsBelow(visited);
}

DataPart SchemaNode::UniformPart() const {
  switch (Parts()) {
    case kVitalBit:
      return DataPart::VITAL;
    case kCachedBit:
      return DataPart::CACHED;
    default:
      return DataPart::USER;
  }
}

bool SchemaNode::IsMixed() const {
  const unsigned parts = Parts();
  return (parts & (parts - 1)) != 0;
}

}  // namespace TarnConfigStore
