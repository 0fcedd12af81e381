#include "schema/loaded_type.h"

#include "json/schema_keywords.h"
#include "schema/type_documents.h"

#include <stdexcept>

namespace TarnSchemaStore {

namespace {

namespace Keyword = Json::Keyword;

int ConfigTypeOf(unsigned kinds) {
  constexpr auto kUser = static_cast<unsigned>(Json::Kind::USER);
  constexpr auto kVital = static_cast<unsigned>(Json::Kind::VITAL);
  constexpr auto kCached = static_cast<unsigned>(Json::Kind::CACHED);
  switch (kinds) {
    case kUser:
      return CONFIG_USER;
    case kVital:
      return CONFIG_VITAL;
    case kCached:
      return CONFIG_CACHED;
    case kVital | kCached:
      return CONFIG_VITAL_AND_CACHED;
    default:
      return CONFIG_MIXED;
  }
}

// What the schema store says of a type's values, in the words of other programs of the host.
constexpr const char* ValueTypeText(bool shared) {
  return shared ? "tarn-shared" : "tarn";
}

const Json::Value* PropertiesOf(const Json::Value& schema) {
  const Json::Value* properties = Json::FindMember(schema, Keyword::kProperties);
  return properties != nullptr && properties->IsObject() ? properties : nullptr;
}

[[noreturn]] void RaiseDamaged(const TypeName& name, const std::string& why) {
  throw std::runtime_error("The schema store holds a damaged type " + name.component + "/" +
                           name.group + "/" + name.key + ": " + why + ". Install the type again.");
}

}  // namespace

TypeNode::TypeNode(const LoadedType& type, std::string key, Json::SchemaPlace place,
                   std::string_view idMember)
    : type_(type),
      key_(std::move(key)),
      place_(place),
      properties_(PropertiesOf(*place.Schema())),
      configType_(ConfigTypeOf(place.Kinds())),
      nonSingleton_(!idMember.empty()) {
  if (properties_ != nullptr) {
    names_.reserve(properties_->MemberCount());
    for (const auto& property : properties_->GetObject()) {
      names_.emplace_back(Json::Text(property.name));
    }
    children_ = std::make_unique<std::atomic<const TypeNode*>[]>(names_.size());
  }
  idMap_ = MakeIdMap(place_, key_, idMember);
  defaults_ = MakeDefaults(place_);
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
  return place_.Property(key).Schema();
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
    std::unique_ptr<TypeNode> made = MakeChild(key);
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

std::unique_ptr<TypeNode> TypeNode::MakeChild(const std::string& name) const {
  const Json::SchemaPlace property = place_.Property(name);
  const Json::SchemaPlace items = property.Items();
  const Json::SchemaPlace objects = items ? items : property;
  if (!objects.DescribesObject()) {
    return nullptr;
  }
  return std::make_unique<TypeNode>(type_, name, objects,
                                    items ? items.InstanceIdMember() : std::string_view());
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
  const Json::Value* schema = Json::FindMember(file, "schema");
  if (schema == nullptr || !schema->IsObject() || version == nullptr || !version->IsString()) {
    RaiseDamaged(name, "it has no schema or no version");
  }
  version_ = Json::Text(*version);
  valueType_ = ValueTypeText(Json::IsTrue(*schema, Keyword::kShared));
  bootAccessible_ = Json::IsTrue(*schema, Keyword::kBootAccessible);
  rebootRequired_ = Json::IsTrue(*schema, Keyword::kRebootRequired);
  confirmedDuringUpgrade_ = Json::IsTrue(*schema, Keyword::kConfirmedDuringUpgrade);
  view_ = std::make_unique<const Json::TypeSchemaView>(*schema);
  registration_ = std::make_unique<JsonValidator::Registration>(*view_);
  const Json::SchemaPlace root = view_->Root();
  root_ = std::make_unique<TypeNode>(*this, name.key, root, root.InstanceIdMember());
}

LoadedType::~LoadedType() = default;

std::shared_ptr<SchemaObject> LoadedType::Handle(const TypeNode& node) const {
  const std::shared_ptr<const LoadedType> self = shared_from_this();
  return std::shared_ptr<SchemaObject>(std::const_pointer_cast<LoadedType>(self),
                                       const_cast<TypeNode*>(&node));
}

}  // namespace TarnSchemaStore
