// The types as one operation sees them.
#pragma once

#include "platform/schema_store.h"

#include "schema/used_types.h"

#include <atomic>
#include <memory>

namespace TarnSchemaStore {

/// Passes questions on, and remembers the last answer: an operation asks for its type again and
/// again. Threads that share one do not wait for each other.
class TypeCache final : public SchemaObjectCache {
 public:
  explicit TypeCache(std::shared_ptr<UsedTypes> types) noexcept;

  std::vector<TypeName> GetTypes() const override;
  std::shared_ptr<SchemaObject> GetSchemaObject(const std::string& component,
                                                const std::string& group,
                                                const std::string& key) override;

 private:
  const std::shared_ptr<UsedTypes> types_;
  std::atomic_flag busy_;               // some thread looks at the answer or changes it
  std::shared_ptr<SchemaObject> last_;  // never one that is not there
};

}  // namespace TarnSchemaStore
