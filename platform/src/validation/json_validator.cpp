#include "platform/json_validator.h"

#include "validation/assertion_check.h"
#include "validation/compiled_schema.h"
#include "validation/findings.h"
#include "validation/member_rules.h"
#include "validation/rule_set.h"
#include "validation/schema_faults.h"
#include "validation/schema_registry.h"
#include "validation/soundness_check.h"

#include <memory>

namespace JsonValidator {
namespace {

void CheckAgainst(const CompiledSchema& schema, const Json::Value& value, RuleSet rules,
                  Findings& findings) {
  SoundnessCheck soundness(rules.Has(RULE_DECLARED_MEMBERS), findings);
  if (!soundness.Check(value)) {
    return;
  }
  const bool assertions = rules.Has(RULE_JSON_SCHEMA);
  const AssertionCheck::Scope scope{assertions, rules.Has(RULE_REQUIRED), soundness.TextsAreSound(),
                                    assertions ? &findings : nullptr};
  if (scope.assertions || scope.required) {
    AssertionCheck(scope).Check(schema.Root(), value, Place{}, findings);
  }
  MemberRules(rules, scope, findings).Check(schema.Root(), value);
}

}  // namespace

void Validate(const Json::Value& schema, const Json::Value& value, Json::Document& result,
              const std::unordered_set<int>& rules, const std::string& /*context*/) {
  Findings findings;
  std::shared_ptr<const CompiledSchema> compiled = SchemaRegistry::Instance().Find(schema);
  if (!compiled) {
    compiled = std::make_shared<const CompiledSchema>(schema);
  }
  if (compiled->Faults().empty()) {
    CheckAgainst(*compiled, value, RuleSet(rules), findings);
  } else {
    findings.Add(Place{}, FaultsInWords(*compiled));
  }
  findings.Write(result);
}

Registration::Registration(const Json::Value& schema) : schema_(&schema) {
  SchemaRegistry::Instance().Add(schema);
}

Registration::~Registration() {
  SchemaRegistry::Instance().Remove(*schema_);
}

void CheckSchema(const Json::Value& schema, Json::Document& result) {
  Findings findings;
  if (SoundnessCheck(true, findings).Check(schema)) {
    NoteFaults(CompiledSchema(schema), findings);
  }
  findings.Write(result);
}

}  // namespace JsonValidator
