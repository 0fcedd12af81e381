#include "tarnconfigstore/filter_spec_object.h"

#include "objects/filter_spec_object_impl.h"

namespace TarnConfigStore {
namespace {

// The base needs the plain pointer before the member that owns it exists.
std::shared_ptr<FilterSpecObjectImpl> Make(const ConfigStoreObjectId& id) {
  return std::make_shared<FilterSpecObjectImpl>(id);
}

}  // namespace

FilterSpecObject::FilterSpecObject(const ConfigStoreObjectId& id) : FilterSpecObject(Make(id)) {}

FilterSpecObject::FilterSpecObject(std::shared_ptr<FilterSpecObjectImpl> const& implementation)
    : StoreObject(implementation.get()), filter_(implementation) {}

std::shared_ptr<FilterSpecObject> FilterSpecObject::CreateSubObjectFilter(const SubObjectId& id) {
  return FilterSpecObjectImpl::CreateSubObjectFilter(filter_, id);
}

std::shared_ptr<FilterSpecObject> FilterSpecObject::GetSubObjectFilter(const SubObjectId& id) {
  return FilterSpecObjectImpl::GetSubObjectFilter(filter_, id);
}

void FilterSpecObject::DeleteSubObjectFilter(const SubObjectId& id) {
  FilterSpecObjectImpl::DeleteSubObjectFilter(filter_, id);
}

}  // namespace TarnConfigStore
