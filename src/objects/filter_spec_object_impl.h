// The filter behind FilterSpecObject.
#pragma once

#include "tarnconfigstore/filter_spec_object.h"

#include "objects/store_object_impl.h"

#include <memory>

namespace TarnConfigStore {

/// Contracts as for FilterSpecObject, whose operations forward to those of the same name here.
class FilterSpecObjectImpl : public StoreObjectImpl {
 public:
  explicit FilterSpecObjectImpl(const ConfigStoreObjectId& id) : StoreObjectImpl(id) {}
  /// The conditions on a sub-object: a view of the data around it.
  FilterSpecObjectImpl(const SubObjectId& id, std::unique_ptr<const SubObjectPlace> place);

  // Static, because what lies inside keeps the filter alive.
  using Shared = std::shared_ptr<FilterSpecObjectImpl>;
  static std::shared_ptr<FilterSpecObject> CreateSubObjectFilter(const Shared& filter,
                                                                 const SubObjectId& id);
  static std::shared_ptr<FilterSpecObject> GetSubObjectFilter(const Shared& filter,
                                                              const SubObjectId& id);
  static void DeleteSubObjectFilter(const Shared& filter, const SubObjectId& id);
};

}  // namespace TarnConfigStore
