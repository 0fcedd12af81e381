#include "db/database.h"
#include "support/test_types.h"

#include <chrono>
#include <thread>

namespace {

using namespace DBStore;
using namespace TestSupport;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int kMisuse = 21;
constexpr int kGone = 516;
constexpr int kBusy = 5;

class Transactions : public DatabaseTest {
 protected:
  // Begins at "(", commits at ")", cancels at "!", and writes the keys that the other letters are.
  void Run(const std::string& steps) {
    for (const char step : steps) {
      const int status = step == '('   ? BeginTransaction(connection_)
                         : step == ')' ? CommitTransaction(connection_)
                         : step == '!' ? CancelTransaction(connection_)
                                       : WriteKeyValue({step}, "", connection_);
      ASSERT_EQ(status, 0) << steps;
    }
  }
  static std::string Committed() {
    return Query(Connect(), "SELECT Key FROM KeyValue ORDER BY Key");
  }
};

TEST_F(Transactions, AnInnerCancelUndoesItsLevelAlone) {
  Run("(a(b(c)!(d)");
  EXPECT_EQ(Committed(), "");
  Run(")");
  EXPECT_EQ(Committed(), "a; d");
}

TEST_F(Transactions, WithoutABeginCommitAndCancelAreMisuse) {
  EXPECT_EQ(CommitTransaction(connection_), kMisuse);
  EXPECT_EQ(CancelTransaction(connection_), kMisuse);
  EXPECT_EQ(GetLastError().kind, ErrorKind::MISUSE);
  EXPECT_NE(BeginTransaction(nullptr), 0);
  EXPECT_NE(CommitTransaction(nullptr), 0);
  EXPECT_NE(CancelTransaction(nullptr), 0);
}

// The engine rolls back by itself when the disk is full. Nothing may be committed by accident until
// the last of the open levels was cancelled.
TEST_F(Transactions, NothingSlipsOutOfATransactionThatTheEngineRolledBack) {
  const std::string large(1 << 20, 'x');
  Run("(b(");
  Query(connection_, "PRAGMA max_page_count=20");
  ASSERT_EQ(Execute(connection_, "INSERT INTO KeyValue VALUES('large', ?)", large), 1);
  EXPECT_TRUE(GetLastError().kind == ErrorKind::OTHER && GetLastError().code == 13);

  EXPECT_EQ(BeginTransaction(connection_), kGone);
  EXPECT_EQ(Execute(connection_, "INSERT INTO KeyValue VALUES('slipped', '')"), 1);
  EXPECT_EQ(WriteKeyValue("slipped", "", connection_), kGone);
  EXPECT_EQ(ReadKey(connection_, "b"), "failed with 516");
  EXPECT_EQ(CommitTransaction(connection_), kGone);
  EXPECT_EQ(CancelTransaction(connection_), 0);
  EXPECT_EQ(CommitTransaction(connection_), kGone);
  EXPECT_EQ(CancelTransaction(connection_), 0);
  EXPECT_EQ(CancelTransaction(connection_), kMisuse);
  EXPECT_EQ(Committed(), "");

  Run("(a)");
  EXPECT_EQ(Committed(), "a");
}

TEST_F(Transactions, AStrayBeginIsRefusedInsteadOfSwallowingWhatFollows) {
  EXPECT_EQ(Execute(connection_, "BEGIN"), 1);
  EXPECT_NE(WriteKeyValue("swallowed", "", connection_), 0);
  connection_.reset();
  connection_ = Connect();
  Run("k");
  EXPECT_EQ(Committed(), "k");
}

TEST_F(Transactions, AHandleDroppedInTheMiddleIsRolledBack) {
  Run("((");
  ASSERT_EQ(WriteKeyValue("key", "lost", connection_), 0);
  const auto before = DBStore::testing::GetCounters().opens;
  connection_.reset();

  connection_ = Connect();
  EXPECT_EQ(DBStore::testing::GetCounters().opens, before);
  EXPECT_EQ(ReadKey(connection_, "key"), "");
  EXPECT_EQ(CommitTransaction(connection_), kMisuse);
  Run("(");
}

TEST_F(Transactions, AThreadNeverWaitsForItsOwnTransaction) {
  ASSERT_EQ(WriteKeyValue("key", "old", connection_), 0);
  Run("(");
  ASSERT_EQ(WriteKeyValue("key", "new", connection_), 0);
  const auto other = Connect();
  const auto start = steady_clock::now();
  EXPECT_EQ(ReadKey(other, "key"), "old");
  EXPECT_EQ(WriteKeyValue("key", "other", other), kBusy);
  EXPECT_NE(GetLastError().message.find("this thread has a transaction open"), std::string::npos);
  EXPECT_EQ(Execute(other, "DELETE FROM KeyValue"), 1);
  EXPECT_EQ(BeginTransaction(other), kBusy);
  EXPECT_LT(steady_clock::now() - start, milliseconds(1000));

  Run(")");
  EXPECT_EQ(WriteKeyValue("key", "other", other), 0);
}

TEST_F(Transactions, AnotherThreadWaitsForTheEndOfATransaction) {
  Run("(");
  int status = -1;
  std::thread writer([&status] { status = WriteKeyValue("key", "second", Connect()); });
  std::this_thread::sleep_for(milliseconds(50));
  ASSERT_EQ(WriteKeyValue("key", "first", connection_), 0);
  Run(")");
  writer.join();
  EXPECT_EQ(status, 0);
  EXPECT_EQ(ReadKey(connection_, "key"), "second");
}

TEST_F(Transactions, CallsOfOneTurnAreOneForOtherThreads) {
  std::thread other;
  {
    const Turn turn(connection_);
    Run("(");
    other = std::thread([&] { EXPECT_EQ(WriteKeyValue("b", "", connection_), 0); });
    {
      const Turn again(connection_);
      std::this_thread::sleep_for(milliseconds(30));
      Run("a");
    }
    Run("!");
  }
  other.join();
  EXPECT_EQ(Committed(), "b");
}

TEST_F(Transactions, WhoWaitsLongerThanTheLimitIsToldThatItIsBusy) {
  Run("(");
  int status = -1;
  ErrorKind kind = ErrorKind::NONE;
  std::thread([&] {
    const auto connection = Connect();
    const auto statement = DBStore::internal::Prepare(connection, "DELETE FROM KeyValue", 20);
    status = DBStore::ExecuteStmt(connection, statement, nullptr, nullptr, 20);
    kind = GetLastError().kind;
  }).join();
  EXPECT_EQ(status, 1);
  EXPECT_EQ(kind, ErrorKind::BUSY);
}

TEST_F(Transactions, SeeTheSharedTypesForAsLongAsSomebodyAskedForThem) {
  constexpr const char* kShared =
      "SELECT Component, ConfigGroup, Name, ValueType FROM ss.SmartnicSchema";
  InstallType(host_, kPlainType);
  InstallType(host_, R"({"component":"tarn","group":"test","key":"card","version":"1",
      "schema":{"type":"object","shared":true}})");
  EXPECT_EQ(Query(connection_, kShared), "failed");
  EXPECT_EQ(DetachSchemaStore(connection_), kMisuse);
  ASSERT_EQ(AttachSchemaStore(connection_), 0);
  ASSERT_EQ(AttachSchemaStore(connection_), 0);
  ASSERT_EQ(DetachSchemaStore(connection_), 0);
  EXPECT_EQ(Query(connection_, kShared), "tarn test card tarn-shared");
  Run("(");
  EXPECT_EQ(Query(connection_, kShared), "tarn test card tarn-shared");
  EXPECT_EQ(DetachSchemaStore(connection_), 0);
  Run(")");
  EXPECT_EQ(Query(connection_, kShared), "failed");
}

}  // namespace
