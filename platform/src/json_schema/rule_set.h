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

 private:
  static constexpr int kBits = 32;
  explicit RuleSet(std::uint32_t bits) : bits_(bits) {}

  std::uint32_t bits_ = 0;
};

}  // namespace JsonValidator
