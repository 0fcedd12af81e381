// A schema made ready for validation.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"
#include "json_schema/compiled_node.h"
#include "json_schema/validation_findings.h"

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

/// The compiled form of one schema, usable when it has no faults. Refers to the schema and to the
/// view of it, and lives no longer. Immutable; safe from several threads.
class CompiledSchema {
 public:
  explicit CompiledSchema(const Json::TypeSchemaView& view);
  CompiledSchema(const CompiledSchema&) = delete;
  CompiledSchema& operator=(const CompiledSchema&) = delete;

  /// How many the process has compiled. For tests and measurements.
  static std::uint64_t CountSoFar();

  const Json::Value& Schema() const { return view_.Schema(); }
  const Json::TypeSchemaView& View() const { return view_; }
  const Node& Root() const { return nodes_.front(); }
  const std::deque<Node>& AllNodes() const { return nodes_; }
  const std::vector<SchemaFault>& Faults() const { return faults_; }

 private:
  const Json::TypeSchemaView& view_;
  std::deque<Node> nodes_;  // whose addresses stay
  std::vector<SchemaFault> faults_;
};

/// Notes what was said of places in a schema, each at its place.
void NoteFaults(const Json::Value& schema, const std::vector<SchemaFault>& faults,
                Findings& findings);

/// The faults, of which there are some, in one sentence.
std::string FaultsInWords(const CompiledSchema& schema);

}  // namespace JsonValidator
