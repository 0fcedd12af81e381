// How many databases the process has open, and whether it may open any: what a fork leaves to the
// child.
#pragma once

#include <cstddef>
#include <cstdint>

namespace DBStore::internal::OpenDatabases {

/// Around the whole life of a database handle: before SQLite opens it, and after SQLite closed it.
void Enter() noexcept;
void Leave() noexcept;

/// True for good in a child that was forked in the middle of a transaction or statement, or while a
/// database was being opened or closed: what the child inherited of it can neither be closed nor
/// ignored, and SQLite's own locks may be held by a thread that the child does not have. Such a
/// child has to leave SQLite alone.
bool AreOutOfReach() noexcept;
inline constexpr const char* kOutOfReach =
    "the process was forked in the middle of a transaction or statement; use the store before or "
    "after the fork, or replace the child's program";

/// While the process prepares to fork: how many of the open databases can be closed by the child.
void NoteAtRest(std::size_t count) noexcept;

/// How many there ever were.
std::uint64_t CountEver() noexcept;

}  // namespace DBStore::internal::OpenDatabases
