// Statements and transactions.
#include "db/database.h"
#include "support/test_types.h"

#include <chrono>
#include <thread>

namespace {

using namespace DBStore;
using namespace TestSupport;
using internal::Bind;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int kMisuse = 21;
constexpr int kGone = 516;
constexpr int kBusy = 5;
constexpr const char* kThreeRows = "SELECT 1 UNION SELECT 2 UNION SELECT 3";

using Statements = DatabaseTest;

TEST_F(Statements, OfOneTextGoToOneUserAtATime) {
  auto first = Prepare(kThreeRows);
  auto second = Prepare(kThreeRows);
  ASSERT_TRUE(first && second);
  EXPECT_NE(first.get(), second.get());
  const auto before = DBStore::testing::GetCounters();
  first.reset();
  second.reset();
  first = Prepare(kThreeRows);
  second = Prepare(std::string(kThreeRows));
  EXPECT_TRUE(first && second);
  EXPECT_EQ(DBStore::testing::GetCounters().prepares, before.prepares);
}

TEST_F(Statements, ATextAtAnAddressThatHeldAnotherIsNotMistakenForIt) {
  std::string text = "SELECT 'one'";
  EXPECT_EQ(Query(connection_, text), "one");
  text.replace(8, 3, "two");
  EXPECT_EQ(Query(connection_, text), "two");
}

TEST_F(Statements, MoreTextsThanTheCacheHoldsStillWork) {
  const auto lent = Prepare(kThreeRows);
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 600; ++i) {
      ASSERT_EQ(Query(connection_, "SELECT " + std::to_string(i)), std::to_string(i));
    }
  }
  EXPECT_EQ(Rows(connection_, lent), "1; 2; 3");
}

TEST_F(Statements, ComeBackWithoutBindingsAndKeepTheirConnectionFromOthers) {
  auto statement = Prepare("SELECT ?");
  int index = 1;
  ASSERT_EQ(Bind(connection_, statement, index, "ran", false), 0);
  EXPECT_EQ(Rows(connection_, statement), "ran");
  index = 1;
  ASSERT_EQ(Bind(connection_, statement, index, "bound and not run", false), 0);
  const StoreConnection* const bound = connection_.get();
  connection_.reset();
  EXPECT_NE(Connect().get(), bound);
  statement.reset();
  EXPECT_EQ(Query(Connect(), "SELECT ?"), "-");
}

TEST_F(Statements, BindIntegersTextsAndNull) {
  const auto statement = Prepare("SELECT typeof(?), typeof(?), typeof(?), typeof(?) || ?");
  int index = 1;
  ASSERT_EQ(Bind(connection_, statement, index, 7), 0);
  ASSERT_EQ(Bind(connection_, statement, index, std::string_view(), false), 0);
  ASSERT_EQ(Bind(connection_, statement, index, NullableSV()), 0);
  ASSERT_EQ(Bind(connection_, statement, index, NullableSV(std::string_view())), 0);
  ASSERT_EQ(Bind(connection_, statement, index, NullableSV(std::string_view("!"))), 0);
  EXPECT_EQ(index, 6);
  EXPECT_NE(Bind(connection_, statement, index, 7), 0);
  EXPECT_EQ(index, 6);
  EXPECT_EQ(Rows(connection_, statement), "integer text null text!");
}

TEST_F(Statements, CanRunAgainAfterTheirReceiverStoppedThem) {
  const auto statement = Prepare(kThreeRows);
  int rows = 0;
  const auto stop = [](void* context, int, char**, char**) {
    return ++*static_cast<int*>(context) == 2 ? 1 : 0;
  };
  const auto raise = [](void*, int, char**, char**) -> int { throw std::out_of_range("row"); };
  EXPECT_EQ(ExecuteStmt(connection_, statement, stop, &rows, kWaitLimit), 1);
  EXPECT_EQ(rows, 2);
  EXPECT_THROW(ExecuteStmt(connection_, statement, raise, nullptr, kWaitLimit), std::out_of_range);
  EXPECT_EQ(Rows(connection_, statement), "1; 2; 3");
}

TEST_F(Statements, FailWithStatusOneAndTellWhy) {
  EXPECT_FALSE(Prepare("SELECT * FROM Nowhere"));
  EXPECT_NE(GetLastError().message.find("no such table: Nowhere"), std::string::npos);
  EXPECT_FALSE(Prepare("SELECT 1; DELETE FROM Config"));
  EXPECT_TRUE(Prepare("DELETE FROM 'Config' WHERE Name=?; "));
  EXPECT_FALSE(Prepare(""));
  EXPECT_FALSE(internal::Prepare(nullptr, kThreeRows, kWaitLimit));
  EXPECT_EQ(Execute(connection_, "INSERT INTO Nowhere VALUES(?)", std::string("x")), -1);
  EXPECT_EQ(Query(connection_, "SELECT * FROM Nowhere"), "failed");
  EXPECT_NE(GetLastError().message.find("no such table: Nowhere"), std::string::npos);
  EXPECT_EQ(ExecuteStmt(connection_, StatementHandle(), nullptr, nullptr, kWaitLimit), 1);
  EXPECT_EQ(ExecuteStmt(Connect(), Prepare(kThreeRows), nullptr, nullptr, kWaitLimit), 1);
  ASSERT_EQ(Execute(connection_, "INSERT INTO KeyValue VALUES('k', 'v')"), 0);
  EXPECT_EQ(Execute(connection_, "INSERT INTO KeyValue VALUES('k', 'v')"), 1);
  EXPECT_EQ(GetLastError().code & 0xff, 19);
}

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
  std::thread([] {
    const auto connection = Connect();
    const auto statement = DBStore::internal::Prepare(connection, "DELETE FROM KeyValue", 20);
    EXPECT_EQ(ExecuteStmt(connection, statement, nullptr, nullptr, 20), 1);
    EXPECT_EQ(GetLastError().kind, ErrorKind::BUSY);
  }).join();
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
