// The clock by which the platform measures time that passes.
#pragma once

#include <cstdint>
#include <ctime>

namespace Clock {

/// Nanoseconds on a clock of clock_gettime(2).
inline std::int64_t Read(clockid_t clock) noexcept {
  timespec time = {};
  clock_gettime(clock, &time);
  return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

/// Nanoseconds since some moment; only goes forward.
inline std::int64_t Now() noexcept {
  return Read(CLOCK_MONOTONIC);
}

/// The same, but ticking every few milliseconds only, which makes it almost free to read.
inline std::int64_t CoarseNow() noexcept {
  return Read(CLOCK_MONOTONIC_COARSE);
}

}  // namespace Clock
