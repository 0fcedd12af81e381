// Statements in words: SQL says nothing to those who read messages.
#pragma once

#include <string_view>

namespace DBStore::internal {

/// What a statement does, and with which table: "a read of ", "Config"; "a statement" and none where
/// that is not to be told. Takes no memory: the table is a part of the statement's text.
struct StatementWords {
  explicit StatementWords(std::string_view sql) noexcept;

  const char* does;
  std::string_view table;
};

}  // namespace DBStore::internal
