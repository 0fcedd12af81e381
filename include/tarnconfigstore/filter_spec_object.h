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
class TARN_CONFIG_STORE_EXPORT FilterSpecObject : public StoreObject {
 public:
  explicit FilterSpecObject(const ConfigStoreObjectId& id);

  /// For the library's own use.
  const std::shared_ptr<FilterSpecObjectImpl>& GetImplementation() const { return filter_; }

 private:
  explicit FilterSpecObject(std::shared_ptr<FilterSpecObjectImpl> const& implementation);

  std::shared_ptr<FilterSpecObjectImpl> filter_;
};

}  // namespace TarnConfigStore
