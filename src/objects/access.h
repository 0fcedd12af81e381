// The library's own way behind the public handles.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/filter_spec_object.h"

#include "json/arena.h"
#include "objects/config_store_object_impl.h"
#include "objects/filter_spec_object_impl.h"

#include <memory>

namespace TarnConfigStore::Internal {

/// The only friend of the public handles: gets the implementation out of one, and puts one around
/// an implementation. Adds nothing to a handle; thread safety is that of StoreObject.
struct Access {
  static ConfigStoreObjectImpl& Of(const ConfigStoreObject& object) { return *object.object_; }
  static FilterSpecObjectImpl& Of(const FilterSpecObject& filter) { return *filter.filter_; }

  /// \param arena  where the handle is made, unless it is null
  static std::shared_ptr<ConfigStoreObject> Wrap(
      const std::shared_ptr<ConfigStoreObjectImpl>& implementation, Arena* arena = nullptr) {
    return arena == nullptr ? std::make_shared<Handle<ConfigStoreObject>>(implementation)
                            : arena->Make<Handle<ConfigStoreObject>>(implementation);
  }
  static std::shared_ptr<FilterSpecObject> Wrap(
      const std::shared_ptr<FilterSpecObjectImpl>& implementation) {
    return std::make_shared<Handle<FilterSpecObject>>(implementation);
  }

 private:
  // std::make_shared calls no private constructor, but a friend's nested class may.
  template <class Public>
  struct Handle final : Public {
    template <class Implementation>
    explicit Handle(const std::shared_ptr<Implementation>& implementation)
        : Public(implementation) {}
  };
};

}  // namespace TarnConfigStore::Internal
