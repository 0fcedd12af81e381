// The prepared statements of one connection.
#pragma once

#include "db/parameters.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3_stmt;

namespace DBStore::internal {

struct CachedStatement {
  CachedStatement(sqlite3_stmt* prepared, std::string_view sql);

  sqlite3_stmt* statement;
  std::string text;
  Parameters parameters;
  struct Column {
    std::string name;
    int kind = 0;  ///< of its last value, as the engine counts kinds; 0 before there was one
  };
  std::vector<Column> columns;  ///< of the result, once it had a row
  bool taken = false;           ///< somebody uses it
  bool running = false;         ///< it is being stepped through
  std::uint64_t lastUse = 0;
};

/// Keeps statements by their text and lends each to one user at a time. Not thread-safe: its
/// connection locks. Does not finalise anything when it is destroyed, only in Clear.
class StatementCache {
 public:
  StatementCache() = default;
  StatementCache(const StatementCache&) = delete;
  StatementCache& operator=(const StatementCache&) = delete;

  /// An idle statement of this text, or null. Texts at the same address are found fastest.
  CachedStatement* Take(std::string_view text) noexcept;
  /// Keeps a new statement and lends it at once; the statement least recently used makes room. Owns
  /// the statement also when it throws.
  CachedStatement* Add(std::string_view text, sqlite3_stmt* statement);
  /// Resets the statement, has its parameters cleared and makes it idle.
  void GiveBack(CachedStatement* entry) noexcept;
  /// Nobody has one of them.
  bool AreIdle() const noexcept;
  /// Finalises every statement; those lent out can still be given back.
  void Finalise() noexcept;
  /// Finalises and forgets every statement, those lent out included.
  void Clear() noexcept;

 private:
  static constexpr std::size_t kCapacity = 256;
  static constexpr std::size_t kHints = 256;

  static std::size_t HintOf(std::string_view text) noexcept;
  CachedStatement* Lend(CachedStatement* entry, std::string_view text) noexcept;
  void DropLeastRecentlyUsed() noexcept;

  std::vector<std::unique_ptr<CachedStatement>> entries_;
  std::array<CachedStatement*, kHints> hints_{};
  std::uint64_t uses_ = 0;
};

}  // namespace DBStore::internal
