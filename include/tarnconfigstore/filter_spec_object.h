// Choosing instances of a configuration type.
#pragma once

#include "tarnconfigstore/store_object.h"

#include <memory>

namespace TarnConfigStore {

class FilterSpecObjectImpl;

/// A filter over the instances of one configuration type. The identifier names the type and, if its
/// instance id is not empty, one instance. The data, set through the accessors of StoreObject, are
/// the conditions: an instance is kept when each member of the filter equals the instance's member
/// of that name; of an object only the members given are compared, of a list every element given
/// has to be found. No data, no conditions. Thread safety is that of StoreObject.
///
/// Conditions on a sub-object are a filter too: a view of their place in the filter's data, as
/// ConfigStoreObject describes it, where the member "cs_generated_id" holds the id of an instance,
/// whatever the type calls it. Conditions on an instance of a sub-object can be written down but
/// not filtered by: an operation that is given them raises ConfigStoreException 2000
/// "FilterConfigStoreObjects: Non-Singleton SubObject filtering not supported", and so for
/// conditions on a sub-object where the type has instances and there are objects to choose from.
class TARN_CONFIG_STORE_EXPORT FilterSpecObject : public StoreObject {
 public:
  explicit FilterSpecObject(const ConfigStoreObjectId& id);

  // Sub-object filters. All raise InvalidArgumentException 2000 for an empty key, and
  // InvalidTypeException where the member of the data holds something else than such conditions.

  /// Adds conditions on a sub-object: for the time being, that it is there. Raises
  /// ConfigStoreException 2000 "SubObject filter already exists." when there are some, and the same
  /// code when the data would nest deeper than 128 levels.
  std::shared_ptr<FilterSpecObject> CreateSubObjectFilter(const SubObjectId& id);

  /// The conditions on a sub-object, or an empty pointer when there are none.
  std::shared_ptr<FilterSpecObject> GetSubObjectFilter(const SubObjectId& id);

  /// Drops the conditions on a sub-object and all inside. Raises ConfigStoreException 2000
  /// "Subobject does not exists." or "Subobject instance does not exists." when there are none.
  void DeleteSubObjectFilter(const SubObjectId& id);

 private:
  friend struct Internal::Access;
  explicit FilterSpecObject(std::shared_ptr<FilterSpecObjectImpl> const& implementation);

  std::shared_ptr<FilterSpecObjectImpl> filter_;
};

}  // namespace TarnConfigStore
