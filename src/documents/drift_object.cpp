#include "tarnconfigstore/drift.h"

#include "errors/raise.h"
#include "json/pointer.h"
#include "objects/document.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

namespace TarnConfigStore {
namespace {

constexpr std::array<const char*, 3> kKinds = {"changed", "missing", "extra"};
constexpr const char* kKindName = "kind";
constexpr const char* kMembersName = "members";
constexpr const char* kPointerName = "pointer";
constexpr const char* kExpectedName = "expected";
constexpr const char* kFoundName = "found";
constexpr const char* kPartName = "part";

[[noreturn]] void RefuseText() {
  ThrowException<InvalidArgumentException>(CS_JSON_PARSE_FAILED);
}

const Json::Value& Member(const Json::Value& object, const char* name) {
  const Json::Value* member = Json::FindMember(object, name);
  if (member == nullptr) {
    RefuseText();
  }
  return *member;
}

std::string TextOf(const Json::Value& object, const char* name) {
  const Json::Value& member = Member(object, name);
  if (!member.IsString()) {
    RefuseText();
  }
  return std::string(Json::Text(member));
}

std::optional<std::string> JsonOf(const Json::Value& object, const char* name) {
  const Json::Value* member = Json::FindMember(object, name);
  std::string text;
  if (member == nullptr) {
    return std::nullopt;
  }
  Json::Serialize(*member, text);
  return text;
}

// The rest of a pointer that begins with a token; nothing where it begins otherwise.
std::optional<std::string> After(const std::string& pointer, const std::string& token) {
  std::string beginning;
  Json::AppendToken(beginning, token);
  const bool begins = pointer.starts_with(beginning) &&
                      (pointer.size() == beginning.size() || pointer[beginning.size()] == '/');
  return begins ? std::optional(pointer.substr(beginning.size())) : std::nullopt;
}

}  // namespace

DriftObject::DriftObject(const ConfigStoreObjectId& id, DriftKind kind,
                         std::vector<DriftMember> members)
    : id_(id), kind_(kind), members_(std::move(members)) {}

DriftObject::DriftObject(const ConfigStoreObjectId& id, std::string_view json)
    : id_(id), kind_(DriftKind::CHANGED) {
  const auto document = CreateDocumentFromString(json, Json::Origin::OUTSIDE);
  const Json::Value& root = *document->GetJsonValuePtr();
  const std::string kind = TextOf(root, kKindName);
  const auto known = std::find(kKinds.begin(), kKinds.end(), kind);
  const Json::Value& members = Member(root, kMembersName);
  if (known == kKinds.end() || !members.IsArray()) {
    RefuseText();
  }
  kind_ = static_cast<DriftKind>(known - kKinds.begin());
  for (const Json::Value& member : members.GetArray()) {
    DriftMember read{TextOf(member, kPointerName), JsonOf(member, kExpectedName),
                     JsonOf(member, kFoundName), TextOf(member, kPartName)};
    if (!Json::ParsePointer(read.pointer)) {
      RefuseText();
    }
    members_.push_back(std::move(read));
  }
}

DriftObject DriftObject::GetSubObject(const SubObjectId& id) const {
  std::vector<DriftMember> below;
  for (const DriftMember& member : members_) {
    std::optional<std::string> rest = After(member.pointer, id.key);
    if (rest && !id.instanceId.empty()) {
      rest = After(*rest, id.instanceId);
    }
    if (rest) {
      DriftMember& copy = below.emplace_back(member);
      copy.pointer = std::move(*rest);
    }
  }
  if (below.empty()) {
    ThrowException<ConfigStoreException>(
        id.instanceId.empty() ? CS_SUBOBJECT_NOT_FOUND : CS_SUBOBJECT_INSTANCE_NOT_FOUND,
        id.toString());
  }
  ConfigStoreObjectId own = id_;
  own.key = id.key;
  own.instanceId = id.instanceId;
  return {own, kind_, std::move(below)};
}

std::vector<DriftObject> DriftObject::GetSubObjectInstances(const std::string& key) const {
  std::set<std::string> instances;
  for (const DriftMember& member : members_) {
    const std::optional<std::string> rest = After(member.pointer, key);
    const auto names = rest ? Json::ParsePointer(*rest) : std::nullopt;
    if (names && !names->empty()) {
      instances.insert(names->front());
    }
  }
  if (instances.empty()) {
    ThrowException<ConfigStoreException>(CS_DRIFT_INSTANCES_NOT_FOUND, key);
  }
  std::vector<DriftObject> objects;
  objects.reserve(instances.size());
  for (const std::string& instanceId : instances) {
    objects.push_back(GetSubObject(SubObjectId(key, instanceId)));
  }
  return objects;
}

std::string DriftObject::ToJson() const {
  Json::Document document(rapidjson::kObjectType);
  Json::Allocator& allocator = document.GetAllocator();
  document.AddMember(Json::Reference(kKindName),
                     Json::Reference(kKinds[static_cast<std::size_t>(kind_)]), allocator);
  Json::Value members(rapidjson::kArrayType);
  for (const DriftMember& member : members_) {
    Json::Value object(rapidjson::kObjectType);
    object.AddMember(Json::Reference(kPointerName), Json::Copy(member.pointer, allocator),
                     allocator);
    const std::pair<const char*, const std::optional<std::string>*> sides[] = {
        {kExpectedName, &member.expected}, {kFoundName, &member.found}};
    for (const auto& [name, text] : sides) {
      if (*text) {
        Json::Document parsed;
        Json::Parse(**text, parsed);
        object.AddMember(Json::Reference(name), Json::Value(parsed, allocator), allocator);
      }
    }
    object.AddMember(Json::Reference(kPartName), Json::Copy(member.part, allocator), allocator);
    members.PushBack(object, allocator);
  }
  document.AddMember(Json::Reference(kMembersName), members, allocator);
  std::string text;
  Json::Serialize(document, text);
  return text;
}

}  // namespace TarnConfigStore
