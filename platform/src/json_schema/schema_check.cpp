#include "json_schema/schema_check.h"

#include "json/type_schema_view.h"
#include "json_schema/compiled_schema.h"
#include "json_schema/schema_sense.h"
#include "json_schema/soundness_check.h"
#include "json_schema/validation_findings.h"

namespace JsonValidator {
namespace {

void Check(const Json::Value& schema, Findings& findings, Findings* warnings) {
  if (!SoundnessCheck(true, findings).Check(schema)) {
    return;
  }
  const Json::TypeSchemaView view(schema);
  const CompiledSchema compiled(view);
  NoteFaults(schema, compiled.Faults(), findings);
  if (warnings != nullptr && findings.Empty()) {
    const Sense sense = JudgeSense(compiled);
    NoteFaults(schema, sense.refused, findings);
    NoteFaults(schema, sense.odd, *warnings);
  }
}

}  // namespace

void CheckSchema(const Json::Value& schema, Json::Document& result) {
  Findings findings;
  Check(schema, findings, nullptr);
  findings.Write(result);
}

void CheckNewSchema(const Json::Value& schema, Json::Document& result, Json::Document& warnings) {
  Findings findings;
  Findings odd;
  Check(schema, findings, &odd);
  findings.Write(result);
  odd.Write(warnings);
}

}  // namespace JsonValidator
