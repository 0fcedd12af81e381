#include "json_schema/schema_registry.h"

#include <pthread.h>

namespace JsonValidator {

SchemaRegistry& SchemaRegistry::Instance() {
  static SchemaRegistry& registry = *[] {
    auto* made = new SchemaRegistry;
    // The child of a fork must not find the lock held by a thread that it does not have.
    pthread_atfork([] { Instance().mutex_.lock(); }, [] { Instance().mutex_.unlock(); },
                   [] { Instance().mutex_.unlock(); });
    return made;
  }();
  return registry;
}

void SchemaRegistry::Add(const Json::TypeSchemaView& view) {
  const std::lock_guard lock(mutex_);
  std::shared_ptr<Entry>& entry = entries_[&view.Schema()];
  if (entry) {
    ++entry->registrations;
  } else {
    entry = std::make_shared<Entry>(view);
  }
}

void SchemaRegistry::Remove(const Json::Value& schema) noexcept {
  std::shared_ptr<Entry> last;  // freed after the lock is given up
  const std::lock_guard lock(mutex_);
  const auto entry = entries_.find(&schema);
  if (entry != entries_.end() && --entry->second->registrations == 0) {
    last = std::move(entry->second);
    entries_.erase(entry);
  }
}

std::shared_ptr<const CompiledSchema> SchemaRegistry::Find(const Json::Value& schema) {
  std::shared_ptr<Entry> entry;
  {
    const std::lock_guard lock(mutex_);
    const auto found = entries_.find(&schema);
    if (found == entries_.end()) {
      return nullptr;
    }
    entry = found->second;
  }
  std::call_once(entry->compiled,
                 [&] { entry->form = std::make_unique<const CompiledSchema>(entry->view); });
  const CompiledSchema* form = entry->form.get();
  return std::shared_ptr<const CompiledSchema>(std::move(entry), form);
}

}  // namespace JsonValidator
