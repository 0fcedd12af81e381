// What each kind of write is checked for.
#pragma once

#include <unordered_set>

namespace TarnConfigStore {

using RuleSet = std::unordered_set<int>;

/// The rules that each validation hands to the validator; what a rule asks for is said in
/// platform/json_validator.h. Built once, never changed.
const RuleSet& UpdateRules();
const RuleSet& VitalRules();
const RuleSet& CachedRules();
const RuleSet& ApplyFileRules();
/// Of ConfigStore::Set, of imports, and of types that are neither vital nor cached as a whole.
const RuleSet& SetRules();
/// Of what an update makes of an object: as SetRules, but "required" is asked of the parts named,
/// bits of Json::Kind.
const RuleSet& UpdatedRules(unsigned parts);
const RuleSet& PartialRules();
/// That every member is declared, and nothing else.
const RuleSet& NameRules();
const RuleSet& UserRules();

}  // namespace TarnConfigStore
