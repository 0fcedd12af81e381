// The compiled schemas of the types in use.
#pragma once

#include "json/json.h"
#include "json_schema/compiled_schema.h"

#include <memory>
#include <mutex>
#include <unordered_map>

namespace JsonValidator {

/// Compiled schemas by the address of their values, each compiled when it is first asked for. Safe
/// from several threads: the lock is held for a look-up only, and compiling one schema keeps nobody
/// from another.
class SchemaRegistry {
 public:
  /// The process's own. Never destroyed: types may still be used while the process exits.
  static SchemaRegistry& Instance();

  /// A schema may be added several times, and then stays until it is removed as often.
  void Add(const Json::TypeSchemaView& view);
  void Remove(const Json::Value& schema) noexcept;

  /// The compiled form, kept alive by the handle, or an empty pointer for a schema that was not
  /// added.
  std::shared_ptr<const CompiledSchema> Find(const Json::Value& schema);

 private:
  struct Entry {
    explicit Entry(const Json::TypeSchemaView& its) : view(its) {}

    const Json::TypeSchemaView& view;
    std::once_flag compiled;
    std::unique_ptr<const CompiledSchema> form;
    int registrations = 1;
  };

  std::mutex mutex_;
  std::unordered_map<const Json::Value*, std::shared_ptr<Entry>> entries_;
};

}  // namespace JsonValidator
