// What a schema says in vain.
#pragma once

#include "json_schema/budget.h"
#include "json_schema/compiled_schema.h"

#include <vector>

namespace JsonValidator {

struct Sense {
  /// What can never hold, and what draft-07 ignores: whoever wrote it relies on what is not so.
  std::vector<SchemaFault> refused;
  /// What holds as it is written, and is hardly what was meant.
  std::vector<SchemaFault> odd;
};

/// Of a schema without faults.
Sense JudgeSense(const CompiledSchema& schema);

/// The part of it that several schemas make together, where they hold at one place: types and
/// members that are asked for and cannot be had.
void JudgePlaces(const CompiledSchema& schema, Sense& sense, Budget& budget);

}  // namespace JsonValidator
