#include "objects/working_data.h"

#include "objects/access.h"
#include "objects/document.h"

#include <utility>

namespace TarnConfigStore {

WorkingData::WorkingData(ObjectHandle object) : object_(std::move(object)) {
  ConfigStoreObjectImpl& data = Internal::Access::Of(*object_);
  auto copy = CreateDocument();
  copy->GetJsonValuePtr()->CopyFrom(data.GetRoot(), copy->GetAllocator());
  given_ = data.ExchangeDocument(std::move(copy));
}

WorkingData::~WorkingData() {
  if (object_) {
    Internal::Access::Of(*object_).ExchangeDocument(std::move(given_));
  }
}

}  // namespace TarnConfigStore
