// A connection whose transaction cannot be undone.
#include "db/database.h"

#include <sqlite3.h>

#include <functional>

namespace DBStore {
namespace {

using namespace TestSupport;

constexpr int kGone = 516;

// The engine's handle of the connection that was opened last.
sqlite3* newest = nullptr;

int Note(sqlite3* database, char** /*error*/, const void* /*routines*/) {
  newest = database;
  return SQLITE_OK;
}

int RefuseTransactions(void* /*context*/, int action, const char*, const char*, const char*,
                       const char*) {
  return action == SQLITE_TRANSACTION || action == SQLITE_SAVEPOINT ? SQLITE_DENY : SQLITE_OK;
}

class Undoing : public ::testing::Test {
 protected:
  Undoing() {
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(Note));
    connection_ = Connect();
  }
  ~Undoing() override { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(Note)); }
  // What is prepared has to be prepared anew, and is refused then.
  static void MakeImpossible() {
    sqlite3_set_authorizer(newest, RefuseTransactions, nullptr);
    sqlite3_set_authorizer(newest, RefuseTransactions, nullptr);
  }

  TemporaryHost host_;
  ConnectionHandle connection_;
};

TEST_F(Undoing, ThatFailsLeavesAConnectionThatNobodyUsesAgain) {
  for (const int levels : {1, 2}) {
    const auto kept = internal::Prepare(connection_, "DELETE FROM KeyValue", kWaitLimit);
    for (int level = 0; level < levels; ++level) {
      ASSERT_EQ(BeginTransaction(connection_), 0);
    }
    ASSERT_EQ(WriteKeyValue("key", "lost", connection_), 0);
    MakeImpossible();
    EXPECT_EQ(CancelTransaction(connection_), 0);
    EXPECT_EQ(IsInTransaction(connection_), levels == 2);
    // Nobody is kept from writing, nothing is written, and the next use says why it fails.
    EXPECT_EQ(WriteKeyValue("other", "kept", Connect()), 0) << GetLastError().message;
    for (const auto& use : std::initializer_list<std::function<int()>>{
             [&] { return BeginTransaction(connection_); },
             [&] { return WriteKeyValue("key", "late", connection_); },
             [&] { return AttachSchemaStore(connection_); }}) {
      ClearLastError();
      EXPECT_EQ(use(), kGone);
      EXPECT_NE(GetLastError().message.find("could not be undone"), std::string::npos)
          << GetLastError().message;
    }
    EXPECT_EQ(ExecuteStmt(connection_, kept, nullptr, nullptr, 20), 1);
    EXPECT_EQ(Execute(connection_, "DELETE FROM KeyValue"), 1);
    EXPECT_EQ(ReadKey(connection_, "other"), "failed with 516");
    if (levels == 2) {
      EXPECT_EQ(CommitTransaction(connection_), kGone);
      EXPECT_EQ(CancelTransaction(connection_), 0);
    }
    connection_.reset();
    connection_ = Connect();
    EXPECT_EQ(ReadKey(connection_, "key") + ReadKey(connection_, "other"), "kept");
  }
}

}  // namespace
}  // namespace DBStore
