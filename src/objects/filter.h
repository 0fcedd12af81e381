// Choosing among the instances of a type.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/filter_spec_object.h"

#include "json/type_schema_view.h"

#include <memory>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// True when one value is part of another: of an object the members given are in the other, of an
/// array each element is part of one of the other's; everything else is equal.
bool IsSubset(const Json::Value& part, const Json::Value& value);

/// The conditions of a filter, for instances of one type that come one after the other.
class InstanceFilter {
 public:
  /// \param filter  has to outlive it
  InstanceFilter(const FilterSpecObject& filter, Json::SchemaPlace type);

  /// False where only FilterConfigStoreObjects does right, once all objects have been read: it raises,
  /// or somebody wants to see its lines.
  bool CanStream() const;
  /// True when the text is sound JSON of an object that the filter does not keep. In all other cases
  /// it takes the object itself to tell.
  bool RulesOut(std::string_view text) const;
  bool Keeps(const ConfigStoreObject& object) const;

 private:
  const FilterSpecObjectImpl& conditions_;
  bool refused_;
};

/// Keeps the objects that the filter's data is a subset of (see FilterSpecObject), in their order;
/// the first mismatch of each other one is logged. An empty filter handle keeps all. The objects
/// are of one type. Raises ConfigStoreException 2000 "FilterConfigStoreObjects: Non-Singleton
/// SubObject filtering not supported" when the filter has conditions on an instance of a
/// sub-object, or on an object where that type has instances.
std::vector<std::shared_ptr<ConfigStoreObject>> FilterConfigStoreObjects(
    std::vector<std::shared_ptr<ConfigStoreObject>> objects,
    const std::shared_ptr<FilterSpecObject>& filter);

}  // namespace TarnConfigStore
