// The work that one validation may do.
#pragma once

#include "json_schema/place.h"

#include <cstdint>
#include <string>

namespace JsonValidator {

class Findings;

/// Counts steps, not time, so that the same value always gets the same answer. Everything that a
/// validation does takes from it, the making of messages included; a step is some nanoseconds of
/// work. Whoever finds it spent gives up, and whatever is answered then means nothing: what could
/// not be checked is a finding, so that no "not" makes an acceptance of it.
class Budget {
 public:
  /// \param findings  get what is left open
  /// \param size      of the value: its values and its texts, which sound data take work in
  ///                  proportion to
  Budget(Findings& findings, std::uint64_t size)
      : findings_(findings), left_(kSteps + kStepsOfEach * size) {}
  Budget(const Budget&) = delete;
  Budget& operator=(const Budget&) = delete;

  /// Takes so many steps. False, from then on always, when they are more than what is left.
  bool Take(std::uint64_t steps) noexcept {
    spent_ = spent_ || steps > left_;
    left_ -= spent_ ? left_ : steps;
    return !spent_;
  }

  bool Spent() const noexcept { return spent_; }

  /// Notes what could not be checked: "`what` could not be checked `further`: ...". Of what is left
  /// open because the budget is spent only the first is noted.
  void LeaveOpen(const Place& place, const std::string& what, const std::string& further = {});

 private:
  // Half a second at most; a hundred thousand elements of ordinary types take a tenth of it.
  static constexpr std::uint64_t kSteps = 50'000'000;
  static constexpr std::uint64_t kStepsOfEach = 64;

  Findings& findings_;
  std::uint64_t left_;
  bool spent_ = false;
  bool told_ = false;
};

}  // namespace JsonValidator
