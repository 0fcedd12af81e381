#include "json_schema/compiled_schema.h"

#include "json_schema/schema_analysis.h"
#include "json_schema/schema_compiler.h"

#include <atomic>

namespace JsonValidator {
namespace {

std::atomic<std::uint64_t> compiledSoFar{0};

}  // namespace

CompiledSchema::CompiledSchema(const Json::TypeSchemaView& view) : view_(view) {
  compiledSoFar.fetch_add(1, std::memory_order_relaxed);
  SchemaCompiler(view, nodes_, faults_).Run();
  FindLoops(nodes_, faults_);
  if (faults_.empty()) {
    LinkTags(nodes_);
  }
}

std::uint64_t CompiledSchema::CountSoFar() {
  return compiledSoFar.load(std::memory_order_relaxed);
}

}  // namespace JsonValidator
