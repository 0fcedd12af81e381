// What is asked of a place.
#include "json/place_node.h"
#include "json/schema_keywords.h"
#include "json/type_schema_view.h"

#include <algorithm>

namespace Json {

SchemaPlace::SchemaPlace(const Node* node, Kind around)
    : node_(node),
      kind_(node == nullptr || node->tag == 0 ? around : static_cast<Kind>(node->tag)) {}

SchemaPlace SchemaPlace::Property(std::string_view name) const {
  return {node_ == nullptr ? nullptr : node_->Find(name), kind_};
}

void SchemaPlace::ForEachProperty(
    const std::function<void(std::string_view name, SchemaPlace property)>& visit) const {
  if (node_ != nullptr) {
    for (const Node::Member& member : node_->members) {
      visit(member.name, {member.node, kind_});
    }
  }
}

SchemaPlace SchemaPlace::Items() const {
  return {node_ == nullptr ? nullptr : node_->items, kind_};
}

unsigned SchemaPlace::Kinds() const {
  if (node_ == nullptr) {
    return static_cast<unsigned>(kind_);
  }
  const bool inherits = (node_->kinds & kInherited) != 0;
  return (node_->kinds & ~kInherited) | (inherits ? static_cast<unsigned>(kind_) : 0);
}

bool SchemaPlace::MentionsTag() const {
  return node_ != nullptr && node_->mentionsTag;
}

bool SchemaPlace::IsInstanceId() const {
  return node_ != nullptr && node_->isInstanceId;
}

std::string_view SchemaPlace::ShownIdMember() const {
  const std::string_view member = InstanceIdMember();
  return member == kGeneratedInstanceId ? std::string_view() : member;
}

std::string_view SchemaPlace::InstanceIdMember() const {
  return node_ == nullptr ? std::string_view() : node_->instanceIdMember;
}

bool SchemaPlace::IsIdMember(std::string_view member) const {
  const std::string_view id = InstanceIdMember();
  return !id.empty() && member == id;
}

bool SchemaPlace::HoldsNothingBesideId(const Value& object) const {
  return object.IsObject() &&
         (object.ObjectEmpty() ||
          (object.MemberCount() == 1 && IsIdMember(Text(object.MemberBegin()->name))));
}

bool SchemaPlace::GetsGeneratedId() const {
  return node_ != nullptr && node_->getsGeneratedId;
}

bool SchemaPlace::HoldsGeneratedIds() const {
  return node_ != nullptr && node_->holdsGeneratedIds;
}

bool SchemaPlace::IsSecret() const {
  return node_ != nullptr && node_->isSecret;
}

bool SchemaPlace::HoldsSecrets() const {
  return node_ != nullptr && node_->holdsSecrets;
}

bool SchemaPlace::DescribesObject() const {
  if (node_ == nullptr || node_->schema == nullptr || !node_->schema->IsObject()) {
    return false;
  }
  const Value* type = FindMember(*node_->schema, Keyword::kType);
  if (type == nullptr) {
    return node_->items == nullptr;
  }
  const auto isObject = [](const Value& name) { return name.IsString() && Text(name) == "object"; };
  return type->IsArray() ? std::any_of(type->Begin(), type->End(), isObject) : isObject(*type);
}

const Value* SchemaPlace::Schema() const {
  return node_ == nullptr ? nullptr : node_->schema;
}

const Value* SchemaPlace::Default() const {
  return node_ == nullptr ? nullptr : node_->defaultValue;
}

bool SchemaPlace::HoldsDefaults() const {
  return node_ != nullptr && node_->holdsDefaults;
}

bool SchemaPlace::CanRequire(std::string_view member) const {
  const Node::Member* found = node_ == nullptr ? nullptr : node_->FindMember(member);
  return found != nullptr && found->canBeRequired;
}

NumberKind SchemaPlace::KindOfNumbers() const {
  return node_ == nullptr ? NumberKind::ANY : node_->numbers;
}

}  // namespace Json
