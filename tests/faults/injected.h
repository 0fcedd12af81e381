// Faults of the system, wherever this program or a library that it uses asks it for something.
#pragma once

#include <array>

namespace Faults {

/// What fails: an allocation (of C++, C, RapidJSON, SQLite, PCRE2 and all else); a system call on files
/// with EIO, or one that makes files longer with ENOSPC, or one that may wait with EINTR; a read or
/// write that moves half of what was asked for; an operation of the database layer.
enum class Kind { NONE, ALLOCATION, IO_ERROR, NO_SPACE, INTERRUPTED, SHORT, DATABASE };

struct Sort {
  Kind kind;
  const char* name;
  bool mayStay;  ///< whether anything could go on where all calls fail so
};
inline constexpr std::array<Sort, 6> kSorts = {{{Kind::ALLOCATION, "memory", true},
                                                {Kind::IO_ERROR, "io-error", true},
                                                {Kind::NO_SPACE, "no-space", true},
                                                {Kind::INTERRUPTED, "interrupted", false},
                                                {Kind::SHORT, "short", false},
                                                {Kind::DATABASE, "database", true}}};

/// From now on, the n-th call of this kind fails, and those after it if it `stays`.
void Arm(Kind kind, unsigned n, bool stays) noexcept;
/// Nothing fails any more. Answers whether anything has.
bool Disarm() noexcept;

/// From now on until Disarm, nothing fails, and each call is told of in its order; what is called then
/// may call what is told of.
void Watch(void (*tell)(Kind kind)) noexcept;

/// Whether this call, which was asked for just now, fails.
bool Strikes(Kind kind) noexcept;

}  // namespace Faults
