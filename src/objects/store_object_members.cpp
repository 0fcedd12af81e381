// Members of an object by their names, and who knows where they are.
#include "objects/store_object_impl.h"
#include "objects/sub_object_place.h"

#include <utility>

namespace TarnConfigStore {

const StoreObjectImpl& StoreObjectImpl::Whole() const {
  const StoreObjectImpl* object = this;
  while (object->view_) {
    object = &object->view_->GetParent();
  }
  return *object;
}

Lookups* StoreObjectImpl::FindLookups() const {
  return Whole().lookups_.load(std::memory_order_acquire);
}

Lookups& StoreObjectImpl::GetLookups() const {
  std::atomic<Lookups*>& known = Whole().lookups_;
  Lookups* lookups = known.load(std::memory_order_acquire);
  if (lookups == nullptr) {
    auto made = std::make_unique<Lookups>();
    if (known.compare_exchange_strong(lookups, made.get(), std::memory_order_acq_rel)) {
      lookups = made.release();
    }
  }
  return *lookups;
}

rapidjson::SizeType StoreObjectImpl::PositionIn(const Json::Value& root,
                                                std::string_view name) const {
  if (root.MemberCount() >= Json::kWorthAnIndex) {
    return GetLookups().FindMember(root, name);
  }
  const auto member = root.FindMember(Json::Reference(name));
  return member == root.MemberEnd() ? Lookups::kNowhere
                                    : static_cast<rapidjson::SizeType>(member - root.MemberBegin());
}

Json::Value* StoreObjectImpl::Find(Json::Value& root, std::string_view name) const {
  const rapidjson::SizeType position = PositionIn(root, name);
  return position == Lookups::kNowhere
             ? nullptr
             : &(root.MemberBegin() + static_cast<std::ptrdiff_t>(position))->value;
}

Json::Value* StoreObjectImpl::FindMember(std::string_view name) const {
  Json::Value& root = RootForValues();  // asked once: a view asks all those around it
  return root.IsObject() ? Find(root, name) : nullptr;
}

Json::Value& StoreObjectImpl::AddMember(std::string_view name, Json::Value&& value) {
  ForgetIfId(name);
  Json::Allocator& allocator = GetAllocator();
  Json::Value& root = RootForValues();
  const void* before = Lookups::PlaceOf(root);
  Json::AddMember(root, Json::Copy(name, allocator), std::move(value), allocator);
  if (Lookups* lookups = FindLookups()) {
    lookups->MemberAdded(before, root);
  }
  return (root.MemberEnd() - 1)->value;
}

void StoreObjectImpl::RemoveMember(std::string_view name) {
  Json::Value& root = RootForValues();
  const rapidjson::SizeType position = PositionIn(root, name);
  if (position == Lookups::kNowhere) {
    return;
  }
  ForgetIfId(name);
  if (Lookups* lookups = FindLookups()) {
    lookups->RemovingMember(root, position);
  }
  root.RemoveMember(root.MemberBegin() + static_cast<std::ptrdiff_t>(position));
}

// The id of an instance is what its list knows it by.
void StoreObjectImpl::ForgetIfId(std::string_view member) const {
  if (view_ && view_->IsIdMember(member)) {
    ForgetLookups();
  }
}

}  // namespace TarnConfigStore
