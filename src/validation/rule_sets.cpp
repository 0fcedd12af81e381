#include "validation/rule_sets.h"

#include "platform/json_validator.h"

namespace TarnConfigStore {

// Leaked, so that callers that run while the process exits still find it.
const RuleSet& SetRules() {
  static const RuleSet& rules =
      *new RuleSet{JsonValidator::RULE_DECLARED_MEMBERS, JsonValidator::RULE_JSON_SCHEMA,
                   JsonValidator::RULE_INSTANCE_IDS, JsonValidator::RULE_REQUIRED};
  return rules;
}

}  // namespace TarnConfigStore
