#include "db/transaction_statements.h"

#include "db/testing_hook.h"

#include <sqlite3.h>

namespace DBStore::internal {
namespace {

// All levels share a name: SQLite means the innermost of it.
constexpr std::array<const char*, static_cast<std::size_t>(TransactionStep::COUNT)> kTexts = {
    "BEGIN IMMEDIATE", "SAVEPOINT level",   "COMMIT",
    "RELEASE level",   "ROLLBACK TO level", "ROLLBACK"};

}  // namespace

int TransactionStatements::Prepare(sqlite3* database) noexcept {
  for (std::size_t step = 0; step < statements_.size(); ++step) {
    if (statements_[step] != nullptr) {
      continue;
    }
    CountPrepare();
    const int code = sqlite3_prepare_v3(database, kTexts[step], -1, SQLITE_PREPARE_PERSISTENT,
                                        &statements_[step], nullptr);
    if (code != SQLITE_OK) {
      return code;
    }
  }
  return SQLITE_OK;
}

int TransactionStatements::Run(TransactionStep step) noexcept {
  sqlite3_stmt* const statement = statements_[static_cast<std::size_t>(step)];
  const int code = sqlite3_step(statement);
  sqlite3_reset(statement);
  return code == SQLITE_DONE ? SQLITE_OK : code;
}

void TransactionStatements::Clear() noexcept {
  for (sqlite3_stmt*& statement : statements_) {
    sqlite3_finalize(statement);
    statement = nullptr;
  }
}

}  // namespace DBStore::internal
