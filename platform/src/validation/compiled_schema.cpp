#include "validation/compiled_schema.h"

#include "validation/schema_analysis.h"
#include "validation/schema_compiler.h"

namespace JsonValidator {

CompiledSchema::CompiledSchema(const Json::Value& schema) : schema_(schema) {
  SchemaCompiler(schema, nodes_, faults_).Run();
  FindLoops(nodes_, faults_);
  if (faults_.empty()) {
    LinkTags(nodes_);
  }
}

}  // namespace JsonValidator
