// What readers made of rows that did not change since.
//
// A connection may hold what a caller made of one row, for as long as reading the row again would
// give the same: until anything is committed to the store, by whomever. A platform that holds nothing
// answers null and false, and the row is read each time.
//
// Thread safety: that of db_store.h. What is held is shared among threads and never changed.
#pragma once

#include "platform/db_store.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string_view>

namespace DBStore {

/// The statement that reads a row, a literal, and the texts of its parameters.
struct RowQuery {
  std::string_view sql;
  std::array<std::string_view, 4> parameters;
};

/// What was made of the row; only who made it knows what it is.
using MadeOfRow = std::shared_ptr<const void>;

/// Whether connections hold anything, in the whole process; they do until told otherwise.
void SetRowHolding(bool hold) noexcept;

/// What is held of the query's row. Null when nothing is, or the store did change, and always within
/// a transaction, on a connection that was opened before the process forked, and where the store may not
/// be the one at its path any more: the statement is to be run then, and tells what is wrong.
MadeOfRow FindHeld(const ConnectionHandle& connection, const RowQuery& query) noexcept;

/// To be called after the query's statement has run, in the turn that it ran in. Notes it, and says
/// whether to hold its row is worth while: the store is as it was when the row was read before.
bool IsWorthHolding(const ConnectionHandle& connection, const RowQuery& query) noexcept;

/// Holds what was made of the row, in the same turn, in place of what was held of it. Does nothing
/// where it is not possible.
/// \param size  bytes that it takes, for the bound on all that a connection holds
void Hold(const ConnectionHandle& connection, const RowQuery& query, MadeOfRow made,
          std::size_t size) noexcept;

}  // namespace DBStore
