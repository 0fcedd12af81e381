// The filter behind FilterSpecObject.
#pragma once

#include "objects/store_object_impl.h"

namespace TarnConfigStore {

class FilterSpecObjectImpl : public StoreObjectImpl {
 public:
  explicit FilterSpecObjectImpl(const ConfigStoreObjectId& id) : StoreObjectImpl(id) {}
};

}  // namespace TarnConfigStore
