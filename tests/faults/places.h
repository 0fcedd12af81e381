// The places from which an operation calls what may fail.
#pragma once

#include "faults/injected.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace Faults {

/// For each kind of fault, the stack of each call in its order, as a number. Numbers can be compared
/// among processes that one process has forked.
class Places {
 public:
  /// Runs what is to be watched. For a process of its own, in which it runs once.
  void Learn(const std::function<void()>& run);

  unsigned Count(Kind kind) const { return counts_[static_cast<std::size_t>(kind)]; }
  /// \param point  from 1 to the count
  std::uint64_t Of(Kind kind, unsigned point) const {
    return stacks_[static_cast<std::size_t>(kind)][point - 1];
  }

 private:
  static constexpr std::size_t kMost = 40'000;  ///< calls of a kind; what follows is taken for new
  static void Tell(Kind kind);

  std::array<std::array<std::uint64_t, kMost>, 7> stacks_;
  std::array<unsigned, 7> counts_ = {};
};

}  // namespace Faults
