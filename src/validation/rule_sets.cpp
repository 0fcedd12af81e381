#include "validation/rule_sets.h"

#include "platform/json_validator.h"
#include "platform/made_once.h"

#include "json/type_schema_view.h"

#include <array>
#include <utility>

namespace TarnConfigStore {
namespace {

using namespace JsonValidator;

constexpr unsigned kPartSets = 8;

RuleSet Updated(unsigned parts) {
  RuleSet rules = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA, RULE_INSTANCE_IDS};
  for (const auto& [kind, rule] : {std::pair(Json::Kind::USER, RULE_REQUIRED_OF_USER),
                                   std::pair(Json::Kind::VITAL, RULE_REQUIRED_OF_VITAL),
                                   std::pair(Json::Kind::CACHED, RULE_REQUIRED_OF_CACHED)}) {
    if ((parts & static_cast<unsigned>(kind)) != 0) {
      rules.insert(rule);
    }
  }
  return rules;
}

struct RuleSets {
  const RuleSet update = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA};
  const RuleSet vital = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA, RULE_VITAL_ONLY};
  const RuleSet cached = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA, RULE_CACHED_ONLY};
  const RuleSet applyFile = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA, RULE_NO_READ_ONLY,
                             RULE_REQUIRED};
  const RuleSet set = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA, RULE_INSTANCE_IDS, RULE_REQUIRED};
  const std::array<RuleSet, kPartSets> updated = {Updated(0), Updated(1), Updated(2), Updated(3),
                                                  Updated(4), Updated(5), Updated(6), Updated(7)};
  const RuleSet partial = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA, RULE_NO_VITAL_OR_CACHED,
                           RULE_INSTANCE_IDS};
  const RuleSet names = {RULE_DECLARED_MEMBERS};
  const RuleSet user = {RULE_DECLARED_MEMBERS, RULE_JSON_SCHEMA, RULE_NO_VITAL_OR_CACHED,
                        RULE_INSTANCE_IDS, RULE_REQUIRED};
};

constinit MadeOnce<const RuleSets> ruleSets;

const RuleSets& TheRuleSets() {
  return ruleSets.Get();
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
const RuleSet& UpdatedRules(unsigned parts) {
  return TheRuleSets().updated[parts & (kPartSets - 1)];
}
const RuleSet& PartialRules() {
  return TheRuleSets().partial;
}
const RuleSet& NameRules() {
  return TheRuleSets().names;
}
const RuleSet& UserRules() {
  return TheRuleSets().user;
}

}  // namespace TarnConfigStore
