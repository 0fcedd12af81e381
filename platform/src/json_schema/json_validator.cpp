#include "platform/json_validator.h"

#include "json_schema/assertion_check.h"
#include "json_schema/budget.h"
#include "json_schema/compiled_schema.h"
#include "json_schema/member_rules.h"
#include "json_schema/rule_set.h"
#include "json_schema/schema_registry.h"
#include "json_schema/soundness_check.h"
#include "json_schema/validation_findings.h"

#include <memory>
#include <optional>

namespace JsonValidator {
namespace {

/// What the rules on members can still find in a value that fits. The check of the assertions has
/// been to every object that a schema closes, unless a branch does, which is asked quietly.
RuleSet RulesLeft(RuleSet rules, const Node& root, const Findings& findings) {
  const bool allDeclared = !findings.SawUndeclared() && (root.reachableTags & kBranches) == 0;
  return RulesOfUse(allDeclared ? rules.Without(RULE_DECLARED_MEMBERS) : rules, root.reachableTags);
}

void CheckAgainst(const CompiledSchema& schema, const Json::Value& value, RuleSet rules,
                  Findings& findings) {
  SoundnessCheck soundness(rules.Has(RULE_DECLARED_MEMBERS), findings);
  if (!soundness.Check(value)) {
    return;
  }
  const bool assertions = rules.Has(RULE_JSON_SCHEMA);
  Budget budget(findings, soundness.Size());
  const AssertionCheck::Scope scope{assertions, rules.AsksForMembers(), soundness.TextsAreSound(),
                                    &budget,    rules.AskedParts(),     schema.View().Root()};
  if (scope.assertions || scope.required) {
    AssertionCheck(scope).Check(schema.Root(), value, Place{}, findings);
  }
  const RuleSet left =
      assertions && findings.Empty() ? RulesLeft(rules, schema.Root(), findings) : rules;
  if (!left.OnMembers().Empty()) {
    MemberRules(left, scope, findings).Check(schema.Root(), schema.View().Root(), value);
  }
}

}  // namespace

void Validate(const Json::Value& schema, const Json::Value& value, Json::Document& result,
              const std::unordered_set<int>& rules, const std::string& /*context*/) {
  std::shared_ptr<const CompiledSchema> compiled = SchemaRegistry::Instance().Find(schema);
  std::optional<Json::TypeSchemaView> view;
  if (!compiled) {
    compiled = std::make_shared<const CompiledSchema>(view.emplace(schema));
  }
  Findings findings(compiled->View().Root());
  if (compiled->Faults().empty()) {
    CheckAgainst(*compiled, value, RuleSet(rules), findings);
  } else {
    findings.Add(Place{}, FaultsInWords(*compiled));
  }
  findings.Write(result);
}

}  // namespace JsonValidator
