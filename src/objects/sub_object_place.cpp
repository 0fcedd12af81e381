#include "objects/sub_object_place.h"

#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/document.h"
#include "objects/store_object_impl.h"

#include <algorithm>
#include <utility>

namespace TarnConfigStore {
namespace {

Json::Value* FindNonNull(Json::Value& object, std::string_view key) {
  Json::Value* member = Json::FindMember(object, key);
  return member == nullptr || member->IsNull() ? nullptr : member;
}

bool HasInstanceId(const Json::Value& element, std::string_view idMember, std::string_view wanted) {
  const Json::Value* id = Json::FindMember(element, idMember);
  return id != nullptr && id->IsString() && Json::Text(*id) == wanted;
}

// A member that holds null counts as absent, and is written over rather than followed by a second
// one of its name, which no read would ever find.
Json::Value& PutMember(Json::Value& object, std::string_view key, Json::Value&& value,
                       Json::Allocator& allocator) {
  if (Json::Value* existing = Json::FindMember(object, key)) {
    return *existing = std::move(value);
  }
  object.AddMember(Json::Copy(key, allocator), std::move(value), allocator);
  return (object.MemberEnd() - 1)->value;
}

std::size_t LevelsOf(const Json::Value& value) {
  std::size_t below = 0;
  if (value.IsObject()) {
    for (const auto& member : value.GetObject()) {
      below = std::max(below, LevelsOf(member.value));
    }
  } else if (value.IsArray()) {
    for (const Json::Value& element : value.GetArray()) {
      below = std::max(below, LevelsOf(element));
    }
  } else {
    return 0;
  }
  return below + 1;
}

}  // namespace

Json::Value* FindInstances(Json::Value& parent, const std::string& key) {
  Json::Value* list = FindNonNull(parent, key);
  if (list != nullptr && !list->IsArray()) {
    ThrowInvalidType(key);
  }
  return list;
}

SubObjectPlace::SubObjectPlace(std::shared_ptr<StoreObjectImpl> parent, SubObjectId id,
                               std::string idMember, rapidjson::SizeType index)
    : parent_(std::move(parent)),
      id_(std::move(id)),
      idMember_(std::move(idMember)),
      index_(index) {}

Json::Value* SubObjectPlace::Find() const {
  Json::Value& around = parent_->GetRoot();
  if (!IsInstance()) {
    Json::Value* data = FindNonNull(around, id_.key);
    if (data != nullptr && !data->IsObject()) {
      ThrowInvalidType(id_.key);
    }
    return data;
  }
  Json::Value* list = FindInstances(around, id_.key);
  if (list == nullptr) {
    return nullptr;
  }
  // Mostly the element is where it was; else it is searched.
  const rapidjson::SizeType index = index_.load(std::memory_order_relaxed);
  if (index < list->Size() && HasInstanceId((*list)[index], idMember_, id_.instanceId)) {
    return &(*list)[index];
  }
  Json::Value* found = std::find_if(list->Begin(), list->End(), [&](const Json::Value& element) {
    return HasInstanceId(element, idMember_, id_.instanceId);
  });
  if (found == list->End()) {
    return nullptr;
  }
  index_.store(static_cast<rapidjson::SizeType>(found - list->Begin()), std::memory_order_relaxed);
  return found;
}

Json::Value& SubObjectPlace::Get() const {
  if (Json::Value* data = Find()) {
    return *data;
  }
  ThrowFailure(IsInstance() ? "Subobject instance does not exists." : "Subobject does not exists.");
}

Json::Value SubObjectPlace::IdValue() const {
  return Json::Copy(id_.instanceId, GetAllocator());
}

void SubObjectPlace::Create() const {
  if (Depth() + 1 > Json::kMaxDepth) {
    ThrowFailure("Nested too deep: " + id_.key);
  }
  Json::Allocator& allocator = GetAllocator();
  Json::Value data(rapidjson::kObjectType);
  if (!IsInstance()) {
    PutMember(parent_->GetRoot(), id_.key, std::move(data), allocator);
    return;
  }
  data.AddMember(Json::Copy(idMember_, allocator), IdValue(), allocator);
  Json::Value* list = FindInstances(parent_->GetRoot(), id_.key);
  if (list == nullptr) {
    list = &PutMember(parent_->GetRoot(), id_.key, Json::Value(rapidjson::kArrayType), allocator);
  }
  index_.store(list->Size(), std::memory_order_relaxed);
  list->PushBack(data, allocator);
}

void SubObjectPlace::Delete() const {
  Json::Value& data = Get();
  Json::Value& around = parent_->GetRoot();
  if (IsInstance()) {
    FindInstances(around, id_.key)->Erase(&data);
  } else {
    around.RemoveMember(Json::Reference(id_.key));
  }
}

void SubObjectPlace::SetData(const char* json) const {
  Json::Value& data = Get();
  const auto parsed = CreateDocumentFromString(json, Json::Origin::OUTSIDE);
  const Json::Value& given = *parsed->GetJsonValuePtr();
  if (!given.IsObject()) {
    ThrowInvalidType(id_.key);
  }
  if (Depth() + LevelsOf(given) > Json::kMaxDepth) {
    CSLogger::Log(CSLogger::kFailure, "Nested deeper than %zu levels: %s", Json::kMaxDepth,
                  id_.toString().c_str());
    ThrowException<InvalidArgumentException>(CS_JSON_PARSE_FAILED);
  }
  Json::Value copy(given, GetAllocator());
  if (IsInstance()) {
    KeepInstanceId(copy);
  }
  data = std::move(copy);
}

void SubObjectPlace::KeepInstanceId(Json::Value& data) const {
  if (FindNonNull(data, idMember_) == nullptr) {
    PutMember(data, idMember_, IdValue(), GetAllocator());
  } else if (!HasInstanceId(data, idMember_, id_.instanceId)) {
    ThrowArgument("The data name another instance than " + id_.toString());
  }
}

Json::Allocator& SubObjectPlace::GetAllocator() const {
  return parent_->GetAllocator();
}

std::optional<unsigned long> SubObjectPlace::Index() const {
  return IsInstance() ? std::optional<unsigned long>(index_.load(std::memory_order_relaxed))
                      : std::nullopt;
}

std::size_t SubObjectPlace::Depth() const {
  return parent_->Depth() + (IsInstance() ? 2 : 1);
}

}  // namespace TarnConfigStore
