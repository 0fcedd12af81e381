// Changing an object's data on the way into the store, and back where it does not get there.
#pragma once

#include "json/json_doc.h"
#include "objects/handles.h"

#include <memory>

namespace TarnConfigStore {

/// While it lives, a whole object works on a copy of its data. The object gets back what it held
/// when this goes, unless the copy is kept.
class WorkingData {
 public:
  explicit WorkingData(ObjectHandle object);
  ~WorkingData();
  WorkingData(WorkingData&&) noexcept = default;
  WorkingData(const WorkingData&) = delete;
  WorkingData& operator=(const WorkingData&) = delete;
  WorkingData& operator=(WorkingData&&) = delete;

  /// The copy becomes the object's data.
  void Keep() noexcept { object_ = nullptr; }

 private:
  ObjectHandle object_;
  std::shared_ptr<JsonDoc> given_;
};

}  // namespace TarnConfigStore
