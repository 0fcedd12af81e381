#include "validation/compiled_schema.h"

#include "validation/schema_analysis.h"
#include "validation/schema_compiler.h"

#include <atomic>

namespace JsonValidator {
namespace {

std::atomic<std::uint64_t> compiledSoFar{0};

}  // namespace

CompiledSchema::CompiledSchema(const Json::Value& schema) : schema_(schema) {
  compiledSoFar.fetch_add(1, std::memory_order_relaxed);
  SchemaCompiler(schema, nodes_, faults_).Run();
  FindLoops(nodes_, faults_);
  if (faults_.empty()) {
    LinkTags(nodes_);
  }
}

std::uint64_t CompiledSchema::CountSoFar() {
  return compiledSoFar.load(std::memory_order_relaxed);
}

}  // namespace JsonValidator
