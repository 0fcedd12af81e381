// What each kind of write is checked for.
#pragma once

#include <unordered_set>

namespace TarnConfigStore {

using RuleSet = std::unordered_set<int>;

/// The rules of ConfigStore::Set, of imports, and of types that are neither vital nor cached as a
/// whole.
const RuleSet& SetRules();

}  // namespace TarnConfigStore
