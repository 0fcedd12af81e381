// How many databases the process has open, for those who must know before it forks.
#pragma once

#include <cstddef>
#include <cstdint>

namespace DBStore::internal::OpenDatabases {

/// Around the whole life of a database handle: before SQLite opens it, and after SQLite closed it.
void Enter() noexcept;
void Leave() noexcept;

/// Nobody enters or leaves between the two.
void Hold() noexcept;
void Release() noexcept;

/// While held: how many there are.
std::size_t Count() noexcept;
/// How many there ever were.
std::uint64_t CountEver() noexcept;

}  // namespace DBStore::internal::OpenDatabases
