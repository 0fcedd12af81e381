#include "json_schema/schema_registry.h"

#include "platform/made_once.h"
#include "platform/process_locks.h"

#include <utility>

namespace JsonValidator {
namespace {

using ProcessLocks::Guard;
using ProcessLocks::Rank;

constinit MadeOnce<SchemaRegistry> theRegistry;

}  // namespace

SchemaRegistry& SchemaRegistry::Instance() {
  return theRegistry.Get();
}

void SchemaRegistry::Add(const Json::TypeSchemaView& view) {
  const Guard guard(Rank::COMPILED_SCHEMAS);
  const auto [entry, added] = entries_.try_emplace(&view.Schema(), view);
  if (!added) {
    ++entry->second.registrations;
  }
}

void SchemaRegistry::Remove(const Json::Value& schema) noexcept {
  std::shared_ptr<const CompiledSchema> last;  // freed after the lock is given up
  const Guard guard(Rank::COMPILED_SCHEMAS);
  const auto entry = entries_.find(&schema);
  if (entry != entries_.end() && --entry->second.registrations == 0) {
    last = std::move(entry->second.form);
    entries_.erase(entry);
  }
}

std::shared_ptr<const CompiledSchema> SchemaRegistry::Find(const Json::Value& schema) {
  const Json::TypeSchemaView* view = nullptr;
  {
    const Guard guard(Rank::COMPILED_SCHEMAS);
    const auto entry = entries_.find(&schema);
    if (entry == entries_.end()) {
      return nullptr;
    }
    if (entry->second.form) {
      return entry->second.form;
    }
    view = &entry->second.view;
  }
  std::shared_ptr<const CompiledSchema> made = std::make_shared<const CompiledSchema>(*view);
  const Guard guard(Rank::COMPILED_SCHEMAS);
  const auto entry = entries_.find(&schema);
  if (entry == entries_.end()) {
    return made;  // removed meanwhile
  }
  if (!entry->second.form) {
    entry->second.form = std::move(made);
  }
  return entry->second.form;
}

}  // namespace JsonValidator
