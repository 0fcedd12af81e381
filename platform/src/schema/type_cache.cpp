#include "schema/type_cache.h"

#include <utility>

namespace TarnSchemaStore {

TypeCache::TypeCache(std::shared_ptr<UsedTypes> types) noexcept : types_(std::move(types)) {}

std::vector<TypeName> TypeCache::GetTypes() const {
  return types_->GetTypes();
}

std::shared_ptr<SchemaObject> TypeCache::GetSchemaObject(const std::string& component,
                                                         const std::string& group,
                                                         const std::string& key) {
  if (!busy_.test_and_set(std::memory_order_acquire)) {
    std::shared_ptr<SchemaObject> known;
    if (last_ && last_->GetKey() == key && last_->GetGroup() == group &&
        last_->GetComponent() == component) {
      known = last_;
    }
    busy_.clear(std::memory_order_release);
    if (known) {
      return known;
    }
  }
  std::shared_ptr<SchemaObject> type = types_->GetSchemaObject(component, group, key);
  if (type && !busy_.test_and_set(std::memory_order_acquire)) {
    // What was there before is freed when nobody can be looking at it.
    std::shared_ptr<SchemaObject> before = std::exchange(last_, type);
    busy_.clear(std::memory_order_release);
  }
  return type;
}

}  // namespace TarnSchemaStore
