// The caller's objects while they are being written.
#pragma once

#include "objects/working_data.h"
#include "validation/object_validation.h"

#include <cstddef>
#include <vector>

namespace TarnConfigStore {

/// Sees to it that a write changes the caller's objects only when it succeeds: those that storing
/// changes (empty content, ids, kinds of numbers) work on copies of their data until then. All
/// others cost nothing.
class WorkingObjects {
 public:
  /// \param changes  it is known that the object's data change
  void Add(const SchemaHandle& schema, const ObjectHandle& object, bool changes = false) {
    if (changes || StoringChangesData(schema, object)) {
      copies_.emplace_back(object);
    }
  }
  /// Adds the object, and validates it as one that is to be set.
  void AddForSet(const SchemaHandle& schema, const ObjectHandle& object) {
    const std::size_t before = copies_.size();
    Add(schema, object);
    (copies_.size() == before ? ValidateUnchanged : ValidateSet)(schema, object);
  }

  /// The write has succeeded, or cleaning left nothing to write.
  void Keep() noexcept {
    for (WorkingData& copy : copies_) {
      copy.Keep();
    }
  }

 private:
  std::vector<WorkingData> copies_;
};

}  // namespace TarnConfigStore
