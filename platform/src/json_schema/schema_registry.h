// The compiled schemas of the types in use.
#pragma once

#include "json/json.h"
#include "json_schema/compiled_schema.h"

#include <memory>
#include <unordered_map>

namespace JsonValidator {

/// Compiled schemas by the address of their values, each compiled when it is first asked for. Safe
/// from several threads: the process's lock is held for a look-up only. Nobody waits for a schema to
/// be compiled, which takes long: threads that need one at once each do it, and the first one's form
/// stays.
class SchemaRegistry {
 public:
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
    std::shared_ptr<const CompiledSchema> form;
    int registrations = 1;
  };

  // Under the lock.
  std::unordered_map<const Json::Value*, Entry> entries_;
};

}  // namespace JsonValidator
