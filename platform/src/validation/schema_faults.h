// What keeps a schema from being used, told to people.
#pragma once

#include "validation/compiled_schema.h"
#include "validation/findings.h"

#include <string>

namespace JsonValidator {

/// Notes each fault of a schema at its place in the schema.
void NoteFaults(const CompiledSchema& schema, Findings& findings);

/// The faults, of which there are some, in one sentence.
std::string FaultsInWords(const CompiledSchema& schema);

}  // namespace JsonValidator
