// The statements that begin and end the levels of a connection's transactions.
#pragma once

#include <array>
#include <cstddef>

struct sqlite3;
struct sqlite3_stmt;

namespace DBStore::internal {

enum class TransactionStep {
  BEGIN,
  BEGIN_LEVEL,
  COMMIT,
  COMMIT_LEVEL,
  UNDO_LEVEL,
  ROLLBACK,
  COUNT
};

/// All of them are prepared before a transaction begins, since what undoes it has to work where there
/// is no memory to prepare anything. Not thread-safe: the connection locks. All answer with SQLite's
/// result codes and report nothing.
class TransactionStatements {
 public:
  TransactionStatements() = default;
  TransactionStatements(const TransactionStatements&) = delete;
  TransactionStatements& operator=(const TransactionStatements&) = delete;

  /// Prepares what is not prepared yet.
  int Prepare(sqlite3* database) noexcept;
  /// For a step that is prepared.
  int Run(TransactionStep step) noexcept;
  /// Finalises them; before their connection is closed.
  void Clear() noexcept;

 private:
  std::array<sqlite3_stmt*, static_cast<std::size_t>(TransactionStep::COUNT)> statements_{};
};

}  // namespace DBStore::internal
