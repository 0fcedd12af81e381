#include "objects/sub_object_place.h"

#include "errors/parse_failures.h"
#include "errors/raise.h"
#include "json/instance_ids.h"
#include "objects/document.h"
#include "objects/lookups.h"
#include "objects/store_object_impl.h"

#include <algorithm>
#include <utility>

namespace TarnConfigStore {
namespace {

// Data that are no object have no members.
Json::Value* FindNonNull(const StoreObjectImpl& object, std::string_view key) {
  Json::Value* member = object.FindMember(key);
  return member == nullptr || member->IsNull() ? nullptr : member;
}

// A member that holds null counts as absent, and is written over rather than followed by a second
// one of its name, which no read would ever find.
Json::Value& PutMember(StoreObjectImpl& object, std::string_view key, Json::Value&& value) {
  if (Json::Value* existing = object.FindMember(key)) {
    return *existing = std::move(value);
  }
  return object.AddMember(key, std::move(value));
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

Json::Value* FindInstances(const StoreObjectImpl& parent, const std::string& key) {
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

rapidjson::SizeType SubObjectPlace::PositionIn(const Json::Value& list) const {
  if (list.Size() >= Json::kWorthAnIndex) {
    return parent_->GetLookups().FindInstance(list, idMember_, id_.instanceId);
  }
  for (rapidjson::SizeType i = 0; i < list.Size(); ++i) {
    if (Json::InstanceIdOf(list[i], idMember_) == id_.instanceId) {
      return i;
    }
  }
  return Lookups::kNowhere;
}

Json::Value* SubObjectPlace::Find() const {
  if (!IsInstance()) {
    Json::Value* data = FindNonNull(*parent_, id_.key);
    if (data != nullptr && !data->IsObject()) {
      ThrowInvalidType(id_.key);
    }
    return data;
  }
  Json::Value* list = FindInstances(*parent_, id_.key);
  if (list == nullptr) {
    return nullptr;
  }
  // Mostly the element is where it was; else it is searched.
  const rapidjson::SizeType index = index_.load(std::memory_order_relaxed);
  if (index < list->Size() && Json::InstanceIdOf((*list)[index], idMember_) == id_.instanceId) {
    return &(*list)[index];
  }
  const rapidjson::SizeType found = PositionIn(*list);
  if (found == Lookups::kNowhere) {
    return nullptr;
  }
  index_.store(found, std::memory_order_relaxed);
  return &(*list)[found];
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
    PutMember(*parent_, id_.key, std::move(data));
    return;
  }
  data.AddMember(Json::Copy(idMember_, allocator), IdValue(), allocator);
  Json::Value* list = FindInstances(*parent_, id_.key);
  if (list == nullptr) {
    list = &PutMember(*parent_, id_.key, Json::Value(rapidjson::kArrayType));
  }
  index_.store(list->Size(), std::memory_order_relaxed);
  const void* before = Lookups::PlaceOf(*list);
  list->PushBack(data, allocator);
  if (Lookups* lookups = parent_->FindLookups()) {
    lookups->InstanceAdded(before, *list, id_.instanceId);
  }
}

void SubObjectPlace::Delete() const {
  Json::Value& data = Get();
  if (IsInstance()) {
    parent_->ForgetLookups();
    FindInstances(*parent_, id_.key)->Erase(&data);
  } else {
    parent_->RemoveMember(id_.key);
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
    const std::string levels = std::to_string(Json::kMaxDepth);
    ReportParseFailure(
        id_.toString(),
        {false, 0, "with what is around it, nested deeper than " + levels + " levels"}, json);
    ThrowException<InvalidArgumentException>(CS_JSON_PARSE_FAILED);
  }
  Json::Value copy(given, GetAllocator());
  if (IsInstance()) {
    KeepInstanceId(copy);
  }
  data = std::move(copy);
}

void SubObjectPlace::KeepInstanceId(Json::Value& data) const {
  Json::Value* given = Json::FindMember(data, idMember_);
  if (given == nullptr) {
    data.AddMember(Json::Copy(idMember_, GetAllocator()), IdValue(), GetAllocator());
  } else if (given->IsNull()) {
    *given = IdValue();
  } else if (Json::InstanceIdOf(data, idMember_) != id_.instanceId) {
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
