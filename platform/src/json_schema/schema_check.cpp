#include "json_schema/schema_check.h"

#include "json/type_schema_view.h"
#include "json_schema/compiled_schema.h"
#include "json_schema/soundness_check.h"
#include "json_schema/validation_findings.h"

namespace JsonValidator {

void CheckSchema(const Json::Value& schema, Json::Document& result) {
  Findings findings;
  if (SoundnessCheck(true, findings).Check(schema)) {
    const Json::TypeSchemaView view(schema);
    NoteFaults(CompiledSchema(view), findings);
  }
  findings.Write(result);
}

}  // namespace JsonValidator
