#include "objects/filter_spec_object_impl.h"

#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/argument_errors.h"
#include "objects/sub_object_place.h"

#include <algorithm>
#include <utility>

namespace TarnConfigStore {
namespace {

using Filter = std::shared_ptr<FilterSpecObject>;

constexpr int kTrace = 4;

bool LeadsThrough(const std::vector<std::string>& path, const std::vector<std::string>& place) {
  return path.size() >= place.size() && std::equal(place.begin(), place.end(), path.begin());
}

}  // namespace

FilterSpecObjectImpl::FilterSpecObjectImpl(std::shared_ptr<FilterSpecObjectImpl> parent,
                                           const SubObjectId& id,
                                           std::unique_ptr<const SubObjectPlace> place)
    : StoreObjectImpl(id, std::move(place)), parent_(std::move(parent)) {}

Filter FilterSpecObjectImpl::CreateSubObjectFilter(const SubObjectId& id) {
  auto place = PlaceOf(id);
  if (!id.instanceId.empty()) {
    if (FindInstance(id) != Whole().instanceFilters_.end()) {
      ThrowFailure("SubObject filter already exists.");
    }
    auto filter = std::make_shared<FilterSpecObjectImpl>(
        ConfigStoreObjectId(id.key, kEmptyString, kEmptyString, id.instanceId));
    Whole().instanceFilters_.push_back({PathTo(id), filter});
    return std::make_shared<FilterSpecObject>(filter);
  }
  if (place->Find() != nullptr) {
    ThrowFailure("SubObject filter already exists.");
  }
  place->Create();
  return MakeView(id, std::move(place));
}

Filter FilterSpecObjectImpl::GetSubObjectFilter(const SubObjectId& id) {
  auto place = PlaceOf(id);
  if (!id.instanceId.empty()) {
    if (const auto found = FindInstance(id); found != Whole().instanceFilters_.end()) {
      return std::make_shared<FilterSpecObject>(found->filter);
    }
  } else if (place->Find() != nullptr) {
    return MakeView(id, std::move(place));
  }
  CSLogger::Log(kTrace, "%s: Could not find key: %s", "GetSubObjectFilter", id.key.c_str());
  return nullptr;
}

void FilterSpecObjectImpl::DeleteSubObjectFilter(const SubObjectId& id) {
  const auto place = PlaceOf(id);
  auto& instanceFilters = Whole().instanceFilters_;
  if (!id.instanceId.empty()) {
    const auto found = FindInstance(id);
    if (found == instanceFilters.end()) {
      ThrowFailure("Subobject instance does not exists.");
    }
    instanceFilters.erase(found);
    return;
  }
  place->Delete();
  const Path deleted = PathTo(id);
  std::erase_if(instanceFilters, [&](const InstanceFilter& inside) {
    return inside.path.size() > deleted.size() && LeadsThrough(inside.path, deleted);
  });
}

bool FilterSpecObjectImpl::HasInstanceFilters() const {
  const auto& instanceFilters = Whole().instanceFilters_;
  if (instanceFilters.empty()) {
    return false;
  }
  const Path here = PathHere();
  return std::any_of(instanceFilters.begin(), instanceFilters.end(),
                     [&](const InstanceFilter& one) { return LeadsThrough(one.path, here); });
}

const FilterSpecObjectImpl& FilterSpecObjectImpl::Whole() const {
  const FilterSpecObjectImpl* whole = this;
  while (whole->parent_) {
    whole = whole->parent_.get();
  }
  return *whole;
}

FilterSpecObjectImpl& FilterSpecObjectImpl::Whole() {
  return const_cast<FilterSpecObjectImpl&>(std::as_const(*this).Whole());
}

FilterSpecObjectImpl::Path FilterSpecObjectImpl::PathHere() const {
  if (!parent_) {
    return {};
  }
  Path path = parent_->PathHere();
  path.push_back(GetConfigStoreObjectId().key);
  return path;
}

FilterSpecObjectImpl::Path FilterSpecObjectImpl::PathTo(const SubObjectId& id) const {
  Path path = PathHere();
  path.push_back(id.key);
  return path;
}

std::vector<FilterSpecObjectImpl::InstanceFilter>::iterator FilterSpecObjectImpl::FindInstance(
    const SubObjectId& id) {
  auto& instanceFilters = Whole().instanceFilters_;
  const Path path = PathTo(id);
  return std::find_if(instanceFilters.begin(), instanceFilters.end(), [&](const auto& one) {
    return one.path == path && one.filter->GetConfigStoreObjectId().instanceId == id.instanceId;
  });
}

// Raises when this filter's own place is gone.
std::unique_ptr<SubObjectPlace> FilterSpecObjectImpl::PlaceOf(const SubObjectId& id) {
  if (id.key.empty()) {
    ThrowArgument("key cannot be empty");
  }
  GetRoot();
  return std::make_unique<SubObjectPlace>(shared_from_this(), SubObjectId(id.key), kEmptyString);
}

Filter FilterSpecObjectImpl::MakeView(const SubObjectId& id,
                                      std::unique_ptr<const SubObjectPlace> place) {
  return std::make_shared<FilterSpecObject>(std::make_shared<FilterSpecObjectImpl>(
      std::static_pointer_cast<FilterSpecObjectImpl>(shared_from_this()), id, std::move(place)));
}

}  // namespace TarnConfigStore
