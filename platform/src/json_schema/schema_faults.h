// What keeps a schema from being used, told to people.
#pragma once

#include "json_schema/compiled_schema.h"
#include "json_schema/validation_findings.h"

#include <string>

namespace JsonValidator {

/// Notes each fault of a schema at its place in the schema.
void NoteFaults(const CompiledSchema& schema, Findings& findings);

/// The faults, of which there are some, in one sentence.
std::string FaultsInWords(const CompiledSchema& schema);

}  // namespace JsonValidator
