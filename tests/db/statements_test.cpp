#include "db/database.h"

#include <atomic>
#include <thread>

namespace {

using namespace DBStore;
using namespace TestSupport;
using internal::Bind;

constexpr int kLimit = kWaitLimit;
constexpr const char* kThreeRows = "SELECT 1 UNION SELECT 2 UNION SELECT 3";

class Statements : public DatabaseTest {};

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

TEST_F(Statements, GiveNamesAndValuesOfManyColumns) {
  std::string sql = "SELECT 0 AS c0";
  for (int i = 1; i < 100; ++i) {
    sql += ", " + std::to_string(i) + " AS c" + std::to_string(i);
  }
  const auto check = [](void*, int columns, char** values, char** names) {
    return static_cast<int>(columns != 100 || values[99] != std::string("99") ||
                            names[99] != std::string("c99"));
  };
  EXPECT_EQ(ExecuteStmt(connection_, Prepare(sql), check, nullptr, kLimit), 0);
}

TEST_F(Statements, CanRunAgainAfterTheirReceiverStoppedThem) {
  const auto statement = Prepare(kThreeRows);
  int rows = 0;
  const auto stop = [](void* context, int, char**, char**) {
    return ++*static_cast<int*>(context) == 2 ? 1 : 0;
  };
  const auto raise = [](void*, int, char**, char**) -> int { throw std::out_of_range("row"); };
  EXPECT_EQ(ExecuteStmt(connection_, statement, stop, &rows, kLimit), 1);
  EXPECT_EQ(rows, 2);
  EXPECT_THROW(ExecuteStmt(connection_, statement, raise, nullptr, kLimit), std::out_of_range);
  EXPECT_EQ(Rows(connection_, statement), "1; 2; 3");
}

TEST_F(Statements, FailWithStatusOneAndTellWhy) {
  EXPECT_FALSE(Prepare("SELECT * FROM Nowhere"));
  EXPECT_NE(GetLastError().message.find("no such table: Nowhere"), std::string::npos);
  EXPECT_FALSE(Prepare("SELECT 1; DELETE FROM Config"));
  EXPECT_TRUE(Prepare("DELETE FROM 'Config' WHERE Name=?; "));
  EXPECT_FALSE(Prepare(""));
  EXPECT_FALSE(internal::Prepare(nullptr, kThreeRows, kLimit));
  EXPECT_EQ(Execute(connection_, "INSERT INTO Nowhere VALUES(?)", "x"), -1);
  EXPECT_EQ(Query(connection_, "SELECT * FROM Nowhere"), "failed");
  EXPECT_NE(GetLastError().message.find("no such table: Nowhere"), std::string::npos);
  EXPECT_EQ(ExecuteStmt(connection_, StatementHandle(), nullptr, nullptr, kLimit), 1);
  EXPECT_EQ(ExecuteStmt(Connect(), Prepare(kThreeRows), nullptr, nullptr, kLimit), 1);
  ASSERT_EQ(Execute(connection_, "INSERT INTO KeyValue VALUES('k', 'v')"), 0);
  EXPECT_EQ(Execute(connection_, "INSERT INTO KeyValue VALUES('k', 'v')"), 1);
  EXPECT_EQ(GetLastError().code & 0xff, 19);
}

TEST_F(Statements, OfThreadsThatShareAConnectionDoNotMix) {
  std::atomic<int> right{0};
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&, thread] {
      const std::string key = std::to_string(thread);
      for (int i = 0; i < 50; ++i) {
        const std::string value = key + "." + std::to_string(i);
        WriteKeyValue(key, value, connection_);
        right += ReadKey(connection_, key) == value && Connect() != connection_ &&
                 Query(connection_, kThreeRows) == "1; 2; 3";
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(right, 4 * 50);
}

}  // namespace
