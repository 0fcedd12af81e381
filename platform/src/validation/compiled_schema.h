// A schema made ready for validation.
#pragma once

#include "platform/json.h"

#include "validation/schema_node.h"

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace JsonValidator {

/// Something that keeps a schema from being used.
struct SchemaFault {
  const Json::Value* where;  ///< the value at fault, inside the schema
  std::string text;
};

/// The compiled form of one schema, usable when it has no faults. Refers to the schema, and lives
/// no longer. Immutable; safe from several threads.
class CompiledSchema {
 public:
  explicit CompiledSchema(const Json::Value& schema);
  CompiledSchema(const CompiledSchema&) = delete;
  CompiledSchema& operator=(const CompiledSchema&) = delete;

  /// How many the process has compiled. For tests and measurements.
  static std::uint64_t CountSoFar();

  const Json::Value& Schema() const { return schema_; }
  const Node& Root() const { return nodes_.front(); }
  const std::vector<SchemaFault>& Faults() const { return faults_; }

 private:
  const Json::Value& schema_;
  std::deque<Node> nodes_;  // whose addresses stay
  std::vector<SchemaFault> faults_;
};

}  // namespace JsonValidator
