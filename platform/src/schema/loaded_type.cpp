#include "schema/loaded_type.h"

#include "schema/annotations.h"
#include "schema/schema_locks.h"
#include "schema/type_documents.h"

#include <stdexcept>

namespace TarnSchemaStore {

namespace {

int ConfigTypeOf(unsigned kinds, Kind whole) {
  switch (kinds == KIND_NONE ? whole : kinds) {
    case KIND_USER:
      return CONFIG_USER;
    case KIND_VITAL:
      return CONFIG_VITAL;
    case KIND_CACHED:
      return CONFIG_CACHED;
    case KIND_VITAL | KIND_CACHED:
      return CONFIG_VITAL_AND_CACHED;
    default:
      return CONFIG_MIXED;
  }
}

[[noreturn]] void RaiseDamaged(const TypeName& name, const std::string& why) {
  throw std::runtime_error("The schema store holds a damaged type " + name.component + "/" +
                           name.group + "/" + name.key + ": " + why + ". Install the type again.");
}

}  // namespace

TypeNode::TypeNode(const LoadedType& type, std::string key, const Json::Value& schema, Kind kind,
                   std::string_view idMember)
    : type_(type),
      key_(std::move(key)),
      schema_(schema),
      properties_(PropertiesOf(schema)),
      kind_(kind),
      configType_(ConfigTypeOf(KindsOfLeaves(type.Schema(), schema, kind), kind)),
      nonSingleton_(!idMember.empty()),
      idMap_(MakeIdMap(type.Schema(), schema, key_, idMember)),
      defaults_(MakeDefaults(type.Schema(), schema)) {
  if (properties_ != nullptr) {
    names_.reserve(properties_->MemberCount());
    for (const auto& property : properties_->GetObject()) {
      names_.emplace_back(Json::Text(property.name));
    }
    children_ = std::make_unique<std::atomic<const TypeNode*>[]>(names_.size());
  }
}

TypeNode::~TypeNode() {
  for (std::size_t i = 0; i < names_.size(); ++i) {
    delete children_[i].load(std::memory_order_relaxed);
  }
}

const std::string& TypeNode::GetComponent() const {
  return type_.Name().component;
}
const std::string& TypeNode::GetGroup() const {
  return type_.Name().group;
}
const std::string& TypeNode::GetVersion() const {
  return type_.Version();
}
const std::string& TypeNode::GetValueType() const {
  return type_.ValueType();
}
bool TypeNode::IsBootAccessible() const {
  return type_.BootAccessible();
}
bool TypeNode::IsRebootRequired() const {
  return type_.RebootRequired();
}
bool TypeNode::IsConfirmedDuringUpgrade() const {
  return type_.ConfirmedDuringUpgrade();
}

const Json::Value* TypeNode::GetPropertyValueSchema(const std::string& key) const {
  const Json::Value* property =
      properties_ == nullptr ? nullptr : Json::FindMember(*properties_, key);
  return property == nullptr ? nullptr : &ResolveReference(type_.Schema(), *property);
}

std::shared_ptr<SchemaObject> TypeNode::GetPropertySchema(const std::string& key) const {
  if (properties_ == nullptr) {
    return {};
  }
  const auto property = properties_->FindMember(Json::Reference(key));
  if (property == properties_->MemberEnd()) {
    return {};
  }
  std::atomic<const TypeNode*>& place =
      children_[static_cast<std::size_t>(property - properties_->MemberBegin())];
  const TypeNode* child = place.load(std::memory_order_acquire);
  if (child == nullptr) {
    std::unique_ptr<TypeNode> made = MakeChild(property->value, key);
    if (made == nullptr) {
      return {};
    }
    // Two threads may come here at once; the first one's node stays.
    if (place.compare_exchange_strong(child, made.get(), std::memory_order_acq_rel)) {
      child = made.release();
    }
  }
  return type_.Handle(*child);
}

std::unique_ptr<TypeNode> TypeNode::MakeChild(const Json::Value& property,
                                              const std::string& name) const {
  const Kind kind = KindOf(property, kind_);
  const Json::Value& resolved = ResolveReference(type_.Schema(), property);
  if (const Json::Value* items = ElementsOf(resolved)) {
    const Json::Value& element = ResolveReference(type_.Schema(), *items);
    if (!DescribesObject(element)) {
      return nullptr;
    }
    return std::make_unique<TypeNode>(type_, name, element, kind,
                                      ElementIdMember(type_.Schema(), resolved));
  }
  if (!DescribesObject(resolved)) {
    return nullptr;
  }
  return std::make_unique<TypeNode>(type_, name, resolved, kind, std::string_view());
}

std::shared_ptr<SchemaObject> LoadedType::FromText(const TypeName& name, std::string_view text) {
  // The constructor is private, so that every type is owned by a shared pointer.
  const std::shared_ptr<LoadedType> type(new LoadedType(name, text));
  return type->Handle(*type->root_);
}

LoadedType::LoadedType(const TypeName& name, std::string_view text)
    : name_(name), document_(TarnConfigStore::JsonDoc::CapacityFor(text.size())) {
  const Json::ParseResult parsed = document_.Parse(text, Json::Origin::OUTSIDE);
  if (!parsed) {
    RaiseDamaged(name, parsed.message);
  }
  const Json::Value& file = *document_.GetJsonValuePtr();
  const Json::Value* version = Json::FindMember(file, "version");
  schema_ = Json::FindMember(file, "schema");
  if (schema_ == nullptr || !schema_->IsObject() || version == nullptr || !version->IsString()) {
    RaiseDamaged(name, "it has no schema or no version");
  }
  version_ = Json::Text(*version);
  valueType_ = ValueTypeText(Json::IsTrue(*schema_, Keyword::kShared));
  bootAccessible_ = Json::IsTrue(*schema_, Keyword::kBootAccessible);
  rebootRequired_ = Json::IsTrue(*schema_, Keyword::kRebootRequired);
  confirmedDuringUpgrade_ = Json::IsTrue(*schema_, Keyword::kConfirmedDuringUpgrade);
  {
    const std::lock_guard lock(SchemaLocks::Get().registrations);
    registration_ = std::make_unique<JsonValidator::Registration>(*schema_);
  }
  root_ = std::make_unique<TypeNode>(*this, name.key, *schema_, KindOf(*schema_, KIND_USER),
                                     InstanceIdMember(*schema_, *schema_));
}

LoadedType::~LoadedType() {
  const std::lock_guard lock(SchemaLocks::Get().registrations);
  registration_.reset();
}

std::shared_ptr<SchemaObject> LoadedType::Handle(const TypeNode& node) const {
  const std::shared_ptr<const LoadedType> self = shared_from_this();
  return std::shared_ptr<SchemaObject>(std::const_pointer_cast<LoadedType>(self),
                                       const_cast<TypeNode*>(&node));
}

}  // namespace TarnSchemaStore
