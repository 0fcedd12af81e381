// The rules of configuration types: which members may be given, by their tags and by their names.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"
#include "json_schema/assertion_check.h"
#include "json_schema/compiled_node.h"
#include "json_schema/place.h"
#include "json_schema/rule_set.h"
#include "json_schema/validation_findings.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <string_view>
#include <vector>

namespace JsonValidator {

/// Those of the rules that can find anything under a place.
/// \param reachable  of the schemas that apply there
RuleSet RulesOfUse(RuleSet rules, Tags reachable);

/// Walks a value together with all the schemas that apply at each place of it: those that a schema
/// refers to or takes in, the branches of "anyOf" and "oneOf" that the value fits (all when it fits
/// none, which is a finding already), "if" and the branch that follows from it, and what the
/// presence of a member asks for.
///
/// A member is declared when any of them declares it. An object is closed to other members when one
/// of them has "properties" and does not speak of additional ones; conditions and dependencies
/// declare members but never close an object. The rules are apart from the verdict of the schemas:
/// a branch is not refused for them.
class MemberRules {
 public:
  /// \param scope  of the check of the assertions, so that nothing is said twice
  MemberRules(RuleSet rules, AssertionCheck::Scope scope, Findings& findings)
      : rules_(rules.OnMembers()),
        check_(
            {scope.assertions, scope.required, scope.textsAreSound, scope.budget, ~0U, scope.root}),
        findings_(findings) {}

  void Check(const Node& root, Json::SchemaPlace at, const Json::Value& value);

 private:
  struct Applied {
    const Node* node;
    bool closes;
  };
  struct InstanceIdAt {
    std::string_view id;
    rapidjson::SizeType index;  ///< of the element
    std::string_view member;    ///< that holds it
  };
  using InstanceIds = std::vector<InstanceIdAt>;

  void Apply(const Node& node, const Json::Value& value, const Place& place, bool closes,
             std::size_t begin);
  void ApplyBranches(const Nodes& branches, const Json::Value& value, const Place& place,
                     bool closes, std::size_t begin);
  void ApplyBeside(const Node& node, const Json::Value& value, const Place& place, bool closes,
                   std::size_t begin);
  /// Whether the schema declares the member; with `apply` what it says of the member applies.
  bool ApplyMember(const ObjectRules& rules, const Json::Value::Member& member, const Place& place,
                   bool apply, bool closes, std::size_t begin);

  // `begin` is where the schemas that apply to the value start in applied_; they end at its end.
  void VisitObject(std::size_t begin, const Json::Value& object, const Place& place, RuleSet rules,
                   Json::SchemaPlace at);
  void VisitArray(std::size_t begin, const Json::Value& array, const Place& place, RuleSet rules,
                  Json::SchemaPlace at);
  void VisitChild(std::size_t begin, const Json::Value& value, const Place& place, RuleSet rules,
                  Json::SchemaPlace at);
  const Place& Nameable(const Place& place) const;
  RuleSet CheckPart(const Json::Value& value, const Place& place, RuleSet rules,
                    Json::SchemaPlace at);
  bool IsClosed(std::size_t begin, std::size_t end) const;
  void NoteUnknown(std::size_t begin, std::size_t end, const Json::Value& name, const Place& place);

  /// The instance id of an object; nothing, with a finding, where there is no proper one.
  std::string_view CheckInstanceId(std::string_view name, const Json::Value& object,
                                   const Place& place);
  void CheckIdsAreUnique(InstanceIds& ids, const Json::Value& array, const Place& place);

  RuleSet rules_;
  AssertionCheck check_;
  Findings& findings_;
  std::array<std::byte, 1024> room_;
  std::pmr::monotonic_buffer_resource memory_{room_.data(), room_.size()};
  std::pmr::vector<Applied> applied_{&memory_};
};

}  // namespace JsonValidator
