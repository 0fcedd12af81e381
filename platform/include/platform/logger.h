// The platform's log. Everything here is thread-safe and callable while the process exits.
#pragma once

#include <functional>

namespace CSLogger {

// The priorities.
inline constexpr int kFailure = 0;    ///< something failed, or is missing
inline constexpr int kProblem = 1;    ///< was got over: a default was taken, an argument was empty
inline constexpr int kOutcome = 2;    ///< worth knowing
inline constexpr int kWriteCall = 3;  ///< a call that may change something begins
inline constexpr int kTrace = 4;      ///< a call that reads begins, and fine tracing

/// Nothing here throws or blocks on anything but its own lock, whatever happens. What in a line a
/// terminal would obey, and what would let it look like another one, is escaped: it may hold names and
/// values that come from anywhere.
void Log(int priority, const char* format, ...) noexcept __attribute__((format(printf, 2, 3)));

/// "[code] " and the code's message template (error_messages.h) filled with the further arguments,
/// of which there have to be as many, of the kinds that the template names.
void LogErrCode(int priority, int code, ...) noexcept;

/// The calls that led here, at priority 4, as far as the platform can tell them.
void LogBacktrace() noexcept;

/// False when a line of this priority would go nowhere: callers then save themselves building it.
bool IsEnabled(int priority) noexcept;

using Sink = std::function<void(int priority, const char* line)>;

/// Where lines go instead of the host's log, one at a time, on the thread that logs; an empty
/// function means the host's log. It must not log; what it throws is dropped.
void SetSink(Sink sink);
/// Highest priority that is logged; 2 at start.
void SetLevel(int priority) noexcept;

}  // namespace CSLogger
