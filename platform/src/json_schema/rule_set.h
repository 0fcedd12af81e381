// Rules as bits.
#pragma once

#include "platform/json_validator.h"

#include <cstdint>
#include <initializer_list>
#include <unordered_set>

namespace JsonValidator {

/// A set of the rules that there are; others are left out.
class RuleSet {
 public:
  RuleSet() = default;
  explicit RuleSet(const std::unordered_set<int>& rules) {
    for (const int rule : rules) {
      if (rule >= 0 && rule < kBits) {
        bits_ |= 1U << static_cast<unsigned>(rule);
      }
    }
  }

  bool Has(Rule rule) const { return (bits_ >> static_cast<unsigned>(rule) & 1U) != 0; }
  bool Empty() const { return bits_ == 0; }

  bool HasAny(std::initializer_list<Rule> rules) const { return !Only(rules).Empty(); }

  RuleSet Only(std::initializer_list<Rule> rules) const {
    std::uint32_t bits = 0;
    for (const Rule rule : rules) {
      bits |= 1U << static_cast<unsigned>(rule);
    }
    return RuleSet(bits_ & bits);
  }

  RuleSet Without(Rule rule) const { return RuleSet(bits_ & ~(1U << static_cast<unsigned>(rule))); }

  /// Those that say which members may be given.
  RuleSet OnMembers() const {
    return Only({RULE_DECLARED_MEMBERS, RULE_NO_VITAL_OR_CACHED, RULE_NO_READ_ONLY, RULE_VITAL_ONLY,
                 RULE_INSTANCE_IDS, RULE_CACHED_ONLY});
  }

  /// Whether anything is asked of "required".
  bool AsksForMembers() const {
    return HasAny(
        {RULE_REQUIRED, RULE_REQUIRED_OF_USER, RULE_REQUIRED_OF_VITAL, RULE_REQUIRED_OF_CACHED});
  }
  /// The parts, as bits of Json::Kind, whose members "required" is asked of; all where no rule names
  /// one.
  unsigned AskedParts() const {
    const auto part = [this](std::initializer_list<Rule> rules, Json::Kind kind) {
      return HasAny(rules) ? static_cast<unsigned>(kind) : 0U;
    };
    const unsigned parts =
        part({RULE_REQUIRED_OF_USER, RULE_NO_VITAL_OR_CACHED}, Json::Kind::USER) |
        part({RULE_REQUIRED_OF_VITAL, RULE_VITAL_ONLY}, Json::Kind::VITAL) |
        part({RULE_REQUIRED_OF_CACHED, RULE_CACHED_ONLY}, Json::Kind::CACHED);
    return parts != 0 ? parts : ~0U;
  }

 private:
  static constexpr int kBits = 32;
  explicit RuleSet(std::uint32_t bits) : bits_(bits) {}

  std::uint32_t bits_ = 0;
};

}  // namespace JsonValidator
