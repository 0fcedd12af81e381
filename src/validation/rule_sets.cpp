#include "validation/rule_sets.h"

#include "platform/json_validator.h"

namespace TarnConfigStore {
namespace {

using namespace JsonValidator;

// Leaked, so that callers that run while the process exits still find them.
struct RuleSets {
  const RuleSet update = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA};
  const RuleSet vital = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA, RULE_VITAL_ONLY};
  const RuleSet cached = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA, RULE_CACHED_ONLY};
  const RuleSet applyFile = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA, RULE_NO_READ_ONLY,
                             RULE_REQUIRED};
  const RuleSet set = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA, RULE_INSTANCE_IDS, RULE_REQUIRED};
  const RuleSet partial = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA, RULE_NO_VITAL_OR_CACHED,
                           RULE_INSTANCE_IDS};
  const RuleSet user = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA, RULE_NO_VITAL_OR_CACHED,
                        RULE_INSTANCE_IDS, RULE_REQUIRED};
};

const RuleSets& TheRuleSets() {
  static const RuleSets& sets = *new RuleSets;
  return sets;
}

}  // namespace

const RuleSet& UpdateRules() {
  return TheRuleSets().update;
}
const RuleSet& VitalRules() {
  return TheRuleSets().vital;
}
const RuleSet& CachedRules() {
  return TheRuleSets().cached;
}
const RuleSet& ApplyFileRules() {
  return TheRuleSets().applyFile;
}
const RuleSet& SetRules() {
  return TheRuleSets().set;
}
const RuleSet& PartialRules() {
  return TheRuleSets().partial;
}
const RuleSet& UserRules() {
  return TheRuleSets().user;
}

}  // namespace TarnConfigStore
