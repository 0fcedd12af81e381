// The filter behind FilterSpecObject.
#pragma once

#include "tarnconfigstore/filter_spec_object.h"

#include "objects/store_object_impl.h"

#include <memory>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// Contracts as for FilterSpecObject, whose operations forward to those of the same name here.
class FilterSpecObjectImpl : public StoreObjectImpl {
 public:
  explicit FilterSpecObjectImpl(const ConfigStoreObjectId& id) : StoreObjectImpl(id) {}
  /// The conditions on a sub-object, a view of the parent's data.
  FilterSpecObjectImpl(std::shared_ptr<FilterSpecObjectImpl> parent, const SubObjectId& id,
                       std::unique_ptr<const SubObjectPlace> place);

  std::shared_ptr<FilterSpecObject> CreateSubObjectFilter(const SubObjectId& id);
  std::shared_ptr<FilterSpecObject> GetSubObjectFilter(const SubObjectId& id);
  void DeleteSubObjectFilter(const SubObjectId& id);

  /// True when there are conditions on an instance of a sub-object, at any depth.
  bool HasInstanceFilters() const;

 private:
  // The keys that lead from the whole filter to a sub-object.
  using Path = std::vector<std::string>;
  // A filter knows no type, hence not the member that would hold the instance id: conditions on an
  // instance have no place in its data.
  struct InstanceFilter {
    Path path;
    std::shared_ptr<FilterSpecObjectImpl> filter;
  };

  const FilterSpecObjectImpl& Whole() const;
  FilterSpecObjectImpl& Whole();
  Path PathHere() const;
  Path PathTo(const SubObjectId& id) const;
  std::vector<InstanceFilter>::iterator FindInstance(const SubObjectId& id);
  std::unique_ptr<SubObjectPlace> PlaceOf(const SubObjectId& id);
  std::shared_ptr<FilterSpecObject> MakeView(const SubObjectId& id,
                                             std::unique_ptr<const SubObjectPlace> place);

  std::shared_ptr<FilterSpecObjectImpl> parent_;  // empty for a whole filter
  std::vector<InstanceFilter> instanceFilters_;   // kept by the whole filter
};

}  // namespace TarnConfigStore
