#include "db/database.h"

#include <chrono>
#include <thread>

namespace {

using namespace TestSupport;
using DBStore::BeginTransaction;
using DBStore::CancelTransaction;
using DBStore::CommitTransaction;
using DBStore::ErrorKind;
using DBStore::GetLastError;
using DBStore::WriteKeyValue;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int kMisuse = 21;
constexpr int kGone = 516;
constexpr int kBusy = 5;

class Transactions : public DatabaseTest {
 protected:
  static std::string Committed() {
    return Query(Connect(), "SELECT Key FROM KeyValue ORDER BY Key");
  }
};

TEST_F(Transactions, AnInnerCancelUndoesItsLevelAlone) {
  ASSERT_EQ(BeginTransaction(connection_), 0);
  WriteKeyValue("a", "", connection_);
  ASSERT_EQ(BeginTransaction(connection_), 0);
  WriteKeyValue("b", "", connection_);
  ASSERT_EQ(BeginTransaction(connection_), 0);
  WriteKeyValue("c", "", connection_);
  ASSERT_EQ(CommitTransaction(connection_), 0);
  ASSERT_EQ(CancelTransaction(connection_), 0);
  ASSERT_EQ(BeginTransaction(connection_), 0);
  WriteKeyValue("d", "", connection_);
  ASSERT_EQ(CommitTransaction(connection_), 0);
  EXPECT_EQ(Committed(), "");
  ASSERT_EQ(CommitTransaction(connection_), 0);
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
  ASSERT_EQ(BeginTransaction(connection_), 0);
  ASSERT_EQ(WriteKeyValue("before", "", connection_), 0);
  ASSERT_EQ(BeginTransaction(connection_), 0);
  Query(connection_, "PRAGMA max_page_count=20");
  ASSERT_EQ(Execute(connection_, "INSERT INTO KeyValue VALUES('large', ?)", large), 1);
  EXPECT_TRUE(GetLastError().kind == ErrorKind::OTHER && GetLastError().code == 13);

  EXPECT_EQ(BeginTransaction(connection_), kGone);
  EXPECT_EQ(Execute(connection_, "INSERT INTO KeyValue VALUES('slipped', '')"), 1);
  EXPECT_EQ(WriteKeyValue("slipped", "", connection_), kGone);
  EXPECT_EQ(ReadKey(connection_, "before"), "failed with 516");
  EXPECT_EQ(CommitTransaction(connection_), kGone);
  EXPECT_EQ(CancelTransaction(connection_), 0);
  EXPECT_EQ(CommitTransaction(connection_), kGone);
  EXPECT_EQ(CancelTransaction(connection_), 0);
  EXPECT_EQ(CancelTransaction(connection_), kMisuse);
  EXPECT_EQ(Committed(), "");

  ASSERT_EQ(BeginTransaction(connection_), 0);
  EXPECT_EQ(WriteKeyValue("after", "", connection_), 0);
  EXPECT_EQ(CommitTransaction(connection_), 0);
  EXPECT_EQ(Committed(), "after");
}

TEST_F(Transactions, AStrayBeginIsRefusedInsteadOfSwallowingWhatFollows) {
  EXPECT_EQ(Execute(connection_, "BEGIN"), 1);
  EXPECT_NE(WriteKeyValue("swallowed", "", connection_), 0);
  connection_.reset();
  connection_ = Connect();
  EXPECT_EQ(WriteKeyValue("kept", "", connection_), 0);
  EXPECT_EQ(Committed(), "kept");
}

TEST_F(Transactions, AHandleDroppedInTheMiddleIsRolledBack) {
  ASSERT_EQ(BeginTransaction(connection_), 0);
  ASSERT_EQ(BeginTransaction(connection_), 0);
  ASSERT_EQ(WriteKeyValue("lost", "", connection_), 0);
  const auto before = DBStore::testing::GetCounters().opens;
  connection_.reset();

  connection_ = Connect();
  EXPECT_EQ(DBStore::testing::GetCounters().opens, before);
  EXPECT_EQ(ReadKey(connection_, "lost"), "");
  EXPECT_EQ(CommitTransaction(connection_), kMisuse);
  EXPECT_EQ(BeginTransaction(connection_), 0);
}

TEST_F(Transactions, AThreadNeverWaitsForItsOwnTransaction) {
  ASSERT_EQ(WriteKeyValue("key", "old", connection_), 0);
  ASSERT_EQ(BeginTransaction(connection_), 0);
  ASSERT_EQ(WriteKeyValue("key", "new", connection_), 0);
  const auto other = Connect();
  const auto start = steady_clock::now();
  EXPECT_EQ(ReadKey(other, "key"), "old");
  EXPECT_EQ(WriteKeyValue("key", "other", other), kBusy);
  EXPECT_NE(GetLastError().message.find("this thread has a transaction open"), std::string::npos);
  EXPECT_EQ(Execute(other, "DELETE FROM KeyValue"), 1);
  EXPECT_EQ(BeginTransaction(other), kBusy);
  EXPECT_LT(steady_clock::now() - start, milliseconds(1000));

  ASSERT_EQ(CommitTransaction(connection_), 0);
  EXPECT_EQ(WriteKeyValue("key", "other", other), 0);
}

TEST_F(Transactions, AnotherThreadWaitsForTheEndOfATransaction) {
  ASSERT_EQ(BeginTransaction(connection_), 0);
  int status = -1;
  std::thread writer([&status] { status = WriteKeyValue("key", "second", Connect()); });
  std::this_thread::sleep_for(milliseconds(50));
  ASSERT_EQ(WriteKeyValue("key", "first", connection_), 0);
  ASSERT_EQ(CommitTransaction(connection_), 0);
  writer.join();
  EXPECT_EQ(status, 0);
  EXPECT_EQ(ReadKey(connection_, "key"), "second");
}

TEST_F(Transactions, TwoProcessesWritingAtOnceLoseNothing) {
  constexpr int kWrites = 100;
  const auto write = [] {
    const auto connection = Connect();
    for (int i = 0; i < kWrites; ++i) {
      if (BeginTransaction(connection) != 0 ||
          Execute(
              connection,
              "INSERT INTO KeyValue VALUES('n', 1) ON CONFLICT DO UPDATE SET Value = Value + 1") !=
              0 ||
          CommitTransaction(connection) != 0) {
        return 1;
      }
    }
    return 0;
  };
  connection_.reset();
  ChildProcess first(write);
  ChildProcess second(write);
  EXPECT_EQ(first.Wait(), 0);
  EXPECT_EQ(second.Wait(), 0);
  EXPECT_EQ(ReadKey(Connect(), "n"), std::to_string(2 * kWrites));
  EXPECT_EQ(Query(Connect(), "PRAGMA integrity_check"), "ok");
}

TEST_F(Transactions, WhoWaitsLongerThanTheLimitIsToldThatItIsBusy) {
  ASSERT_EQ(BeginTransaction(connection_), 0);
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

}  // namespace
