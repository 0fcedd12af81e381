// Choosing instances of a configuration type.
#pragma once

#include "tarnconfigstore/store_object.h"

#include <memory>

namespace TarnConfigStore {

class FilterSpecObjectImpl;

/// A filter over the instances of one configuration type.
///
/// The identifier names the type and, if its instance id is not empty, one instance. The data holds
/// the conditions, which are written with the functions of StoreObject. An instance is kept when it
/// has an equal member for each member of the filter:
/// - of an object, the filter's members are compared and no others;
/// - of a list, each of the filter's elements has to be found, in any order;
/// - numbers are equal by value, everything else exactly.
/// A filter without data keeps every instance. Type defaults are not compared: a member that an
/// instance does not hold matches nothing.
///
/// Conditions on a sub-object are a filter of their own: a view, as ConfigStoreObject describes it.
/// Conditions on an instance of a sub-object can be written but not used: an operation that is
/// given such a filter throws ConfigStoreException 2000 "FilterConfigStoreObjects: Non-Singleton
/// SubObject filtering not supported". So does one that is given conditions on a sub-object where
/// the type has instances, if there are objects to compare. In the data, the member
/// "cs_generated_id" of a filter on an instance holds the instance id.
///
/// Thread safety is that of StoreObject.
class TARN_CONFIG_STORE_EXPORT FilterSpecObject : public StoreObject {
 public:
  /// Makes a filter without conditions. The operation that uses it checks the identifier.
  explicit FilterSpecObject(const ConfigStoreObjectId& id);

  // Filters on sub-objects. All of these throw InvalidArgumentException 2000 for an empty key, and
  // InvalidTypeException 2000 where the member's data is no such filter. The data is then as it
  // was.

  /// Adds a filter on a sub-object. While it is empty, its one condition is that the sub-object is
  /// there.
  /// \return the filter on the sub-object
  /// \throws ConfigStoreException 2000 "SubObject filter already exists."
  /// \throws ConfigStoreException 2000 when the data would nest deeper than 128 levels
  std::shared_ptr<FilterSpecObject> CreateSubObjectFilter(const SubObjectId& id);

  /// \return the filter on a sub-object; an empty pointer when there is none
  std::shared_ptr<FilterSpecObject> GetSubObjectFilter(const SubObjectId& id);

  /// Removes the filter on a sub-object, with all filters inside.
  /// \throws ConfigStoreException 2000 "Subobject does not exists." or "Subobject instance does not
  ///         exists." when there is none
  void DeleteSubObjectFilter(const SubObjectId& id);

 private:
  friend struct Internal::Access;
  explicit FilterSpecObject(std::shared_ptr<FilterSpecObjectImpl> const& implementation);

  std::shared_ptr<FilterSpecObjectImpl> filter_;
};

}  // namespace TarnConfigStore
