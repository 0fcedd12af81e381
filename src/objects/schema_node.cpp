#include "objects/schema_node.h"

#include "platform/generated_instance_id.h"

#include <algorithm>
#include <string>

namespace TarnConfigStore {
namespace {

constexpr unsigned kUserBit = 1;
constexpr unsigned kVitalBit = 2;
constexpr unsigned kCachedBit = 4;

std::string Unescaped(std::string_view token) {
  std::string text;
  for (std::size_t i = 0; i < token.size(); ++i) {
    if (token[i] == '~' && i + 1 < token.size()) {
      text += token[++i] == '1' ? '/' : '~';
    } else {
      text += token[i];
    }
  }
  return text;
}

// References of type files lead to a place in the same schema, "#/definitions/NAME" as a rule. The
// installer has seen to it that none leads nowhere or round in a circle; the bound is for schemas
// it never saw.
const Json::Value* Resolve(const Json::Value& root, const Json::Value* node) {
  constexpr int kMostHops = 32;
  for (int hop = 0; node != nullptr && hop < kMostHops; ++hop) {
    const Json::Value* reference = Json::FindMember(*node, "$ref");
    if (reference == nullptr || !reference->IsString()) {
      return node;
    }
    std::string_view pointer = Json::Text(*reference);
    if (pointer.substr(0, 1) != "#") {
      return nullptr;
    }
    pointer.remove_prefix(1);
    node = &root;
    while (node != nullptr && !pointer.empty()) {
      pointer.remove_prefix(1);
      const std::size_t end = std::min(pointer.find('/'), pointer.size());
      node = Json::FindMember(*node, Unescaped(pointer.substr(0, end)));
      pointer.remove_prefix(end);
    }
  }
  return nullptr;
}

}  // namespace

SchemaNode::SchemaNode(const Json::Value& root, const Json::Value& holder)
    : root_(&root), holder_(&holder), node_(Resolve(root, &holder)) {}

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

unsigned SchemaNode::PartsBelow(unsigned depth) const {
  if (node_ == nullptr || depth > Json::kMaxDepth) {
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
  unsigned parts = 0;
  const Json::Value* properties = Json::FindMember(*node_, "properties");
  if (properties != nullptr && properties->IsObject()) {
    for (const auto& property : properties->GetObject()) {
      const SchemaNode node(*root_, property.value);
      parts |= node.IsInstanceId() ? 0U : node.PartsBelow(depth + 1);
    }
  }
  if (const SchemaNode items = Items()) {
    parts |= items.PartsBelow(depth + 1);
  }
  return parts == 0 ? kUserBit : parts;
}

DataPart SchemaNode::UniformPart() const {
  switch (PartsBelow(0)) {
    case kVitalBit:
      return DataPart::VITAL;
    case kCachedBit:
      return DataPart::CACHED;
    default:
      return DataPart::USER;
  }
}

bool SchemaNode::IsMixed() const {
  const unsigned parts = PartsBelow(0);
  return (parts & (parts - 1)) != 0;
}

}  // namespace TarnConfigStore
