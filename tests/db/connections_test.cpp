// Which connections there are, and what a fork leaves to both sides.
#include "platform/type_files.h"

#include "db/database.h"
#include "support/database.h"

#include <chrono>
#include <functional>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <thread>

namespace {

using namespace TestSupport;
using DBStore::BeginTransaction;
using DBStore::CommitTransaction;
using DBStore::ErrorKind;
using DBStore::WriteKeyValue;
namespace fs = std::filesystem;

using Pool = DatabaseTest;

TEST_F(Pool, KeepsTheReadersApartFromTheWriters) {
  DBStore::GetConnection(DBStore::Type::CURRENT_STORE, false).reset();
  EXPECT_EQ(WriteKeyValue("key", "value", Connect()), 0);
  const auto reader = DBStore::GetConnection(DBStore::Type::CURRENT_STORE, false);
  EXPECT_EQ(ReadKey(reader, "key"), "value");
  EXPECT_EQ(WriteKeyValue("key", "value", reader), 8);
  EXPECT_FALSE(DBStore::GetConnection(static_cast<DBStore::Type>(1), true));
}

TEST_F(Pool, KeepsOnlyAFewIdleConnections) {
  std::uint64_t opened = 0;
  for (int round = 0; round < 2; ++round) {
    std::vector<DBStore::ConnectionHandle> many(40);
    const auto before = DBStore::testing::GetCounters().opens;
    std::generate(many.begin(), many.end(), Connect);
    opened = DBStore::testing::GetCounters().opens - before;
  }
  EXPECT_GT(opened, 20U);
  EXPECT_LT(opened, 40U);
}

// What is written to a file that has no name is lost, although it is written.
TEST_F(Pool, AConnectionServesTheFileAtItsPathAndNoOther) {
  const std::string store = host_.Path(HostPaths::kStore);
  const auto unusable = [&](ErrorKind kind) {
    for (const auto& fails :
         {std::function([&] { return BeginTransaction(connection_) != 0; }),
          std::function([&] { return WriteKey(connection_, "key") != 0; }),
          std::function([&] { return Execute(connection_, "DELETE FROM KeyValue") != 0; }),
          std::function([&] { return ReadKey(connection_, "key") != ""; }),
          std::function([&] { return Query(connection_, "SELECT 3") == "failed"; })}) {
      DBStore::ClearLastError();
      EXPECT_TRUE(fails());
      EXPECT_EQ(DBStore::GetLastError().kind, kind);
    }
  };
  // Reading looks again when the clock has ticked.
  const auto wait = [] { std::this_thread::sleep_for(std::chrono::milliseconds(20)); };
  ASSERT_EQ(BeginTransaction(connection_), 0);
  fs::rename(store, store + ".moved");
  EXPECT_EQ(WriteKey(connection_, "key"), 0);
  EXPECT_EQ(CommitTransaction(connection_), 0);
  wait();
  unusable(ErrorKind::MISSING);
  fs::copy_file(store + ".moved", store);
  unusable(ErrorKind::MISSING);
  fs::rename(store + ".moved", store);
  EXPECT_EQ(WriteKey(connection_, "key"), 0);
  const TemporaryHost other;
  unusable(ErrorKind::MISUSE);
}

// Whose transaction it is tells who began what is open of it.
TEST_F(Pool, AThreadWaitsForWhatAnotherOneBeganOnItsConnection) {
  ASSERT_EQ(BeginTransaction(connection_), 0);
  std::thread([&] { ASSERT_EQ(BeginTransaction(connection_), 0); }).join();
  ASSERT_EQ(CommitTransaction(connection_), 0);
  std::thread rest([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_EQ(CommitTransaction(connection_), 0);
  });
  EXPECT_EQ(WriteKey(Connect(), "key"), 0);
  rest.join();
}

TEST_F(Pool, FollowsTheRootAndThePermissions) {
  ASSERT_EQ(WriteKeyValue("key", "here", connection_), 0);
  connection_.reset();
  {
    const TemporaryHost other;
    EXPECT_EQ(ReadKey(Connect(), "key"), "");
  }
  EXPECT_EQ(ReadKey(Connect(), "key"), "here");
  const auto before = DBStore::testing::GetCounters().opens;
  ASSERT_EQ(chmod(host_.Path(HostPaths::kStore).c_str(), 0600), 0);
  EXPECT_TRUE(Connect());
  EXPECT_EQ(DBStore::testing::GetCounters().opens, before + 1);
}

// SQLite's locks stay behind when a process forks: what each side may still do with its
// connections.
class Fork : public DatabaseTest {
 protected:
  static constexpr int kTimes = 30;

  // Counts "n" up, each time in a transaction of its own that lasts until the other side has had
  // time to break into it.
  static int CountUp() {
    for (int i = 0; i < kTimes; ++i) {
      const auto connection = Connect();
      const int begun = BeginTransaction(connection);
      const int next = std::stoi("0" + ReadKey(connection, "n")) + 1;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      if (begun != 0 || WriteKeyValue("n", std::to_string(next), connection) != 0 ||
          CommitTransaction(connection) != 0) {
        return 1;
      }
    }
    return 0;
  }
  static void ExpectBothSidesWrite(const std::function<int()>& child) {
    ChildProcess process(child);
    EXPECT_EQ(CountUp(), 0);
    EXPECT_EQ(process.Wait(), 0);
    const auto connection = Connect();
    EXPECT_EQ(ReadKey(connection, "n"), std::to_string(2 * kTimes));
    EXPECT_EQ(Query(connection, "PRAGMA integrity_check"), "ok");
  }
};

TEST_F(Fork, WithIdleConnectionsLosesNoLockAndNothingThatBothSidesWrite) {
  connection_.reset();
  ExpectBothSidesWrite(CountUp);
}

TEST_F(Fork, ClosesAConnectionAtRestInTheChildOnly) {
  const auto statement = Prepare("SELECT 1");
  ASSERT_EQ(WriteKeyValue("before", "x", connection_), 0);
  ExpectBothSidesWrite([this, &statement] {
    const bool refused = WriteKeyValue("n", "child", connection_) != 0 &&
                         ReadKey(connection_, "n") != "" && BeginTransaction(connection_) != 0 &&
                         Query(connection_, "SELECT 1") == "failed" &&
                         DBStore::AttachSchemaStore(connection_) != 0 &&
                         DBStore::ExecuteStmt(connection_, statement, nullptr, nullptr, 0) == 1 &&
                         DBStore::GetLastError().kind == ErrorKind::MISUSE;
    return refused ? CountUp() : 2;
  });
  EXPECT_EQ(ReadKey(connection_, "before"), "x");
  EXPECT_EQ(DBStore::ExecuteStmt(connection_, statement, nullptr, nullptr, 0), 0);
}

// A child that opened its own connection beside the inherited one would hold no locks: the parent
// would then take itself for the last user of the log and begin it anew.
TEST_F(Fork, LeavesTheChildWithLocksOfItsOwn) {
  auto statement = Prepare("SELECT 1");
  ASSERT_EQ(WriteKeyValue("first", "parent", connection_), 0);
  const int begun = eventfd(0, 0);
  const int reopened = eventfd(0, 0);
  eventfd_t signal = 0;
  ChildProcess child([&] {
    const auto own = Connect();
    const bool written = BeginTransaction(own) == 0 && WriteKeyValue("second", "child", own) == 0;
    eventfd_write(begun, 1);
    eventfd_read(reopened, &signal);
    statement.reset();
    connection_.reset();
    return written && CommitTransaction(own) == 0 ? 0 : 1;
  });
  eventfd_read(begun, &signal);
  statement.reset();
  connection_.reset();
  EXPECT_EQ(InChild([] { return 0; }), 0);  // closes what the parent has idle
  connection_ = Connect();
  EXPECT_EQ(ReadKey(connection_, "first"), "parent");
  eventfd_write(reopened, 1);
  EXPECT_EQ(child.Wait(), 0);
  EXPECT_EQ(WriteKeyValue("third", "parent", connection_), 0);
  EXPECT_EQ(Query(Connect(), "SELECT Key FROM KeyValue ORDER BY Key"), "first; second; third");
}

TEST_F(Fork, InTheMiddleOfATransactionLeavesItToTheParent) {
  ASSERT_EQ(BeginTransaction(connection_), 0);
  ASSERT_EQ(WriteKeyValue("key", "parent", connection_), 0);
  EXPECT_EQ(InChild([this] {
              const bool refused = WriteKeyValue("key", "child", connection_) != 0 &&
                                   CommitTransaction(connection_) != 0 &&
                                   DBStore::CancelTransaction(connection_) != 0 && !Connect();
              connection_.reset();
              // A thread that the child does not have may hold a lock of SQLite's.
              EXPECT_THROW(TypeFiles::ReadAll(), std::runtime_error);
              EXPECT_FALSE(HostSetup::Initialize().ok);
              return refused && !Connect() && !HasFailure() &&
                             InChild([] { return Connect() ? 1 : 0; }) == 0
                         ? 0
                         : 1;
            }),
            0);
  ASSERT_EQ(WriteKeyValue("more", "parent", connection_), 0);
  ASSERT_EQ(CommitTransaction(connection_), 0);
  EXPECT_EQ(Query(Connect(), "SELECT Key, Value FROM KeyValue"), "key parent; more parent");
}

TEST_F(Fork, InARowCallbackStopsTheStatementInTheChildOnly) {
  const auto statement = Prepare("SELECT 1 UNION SELECT 2 UNION SELECT 3");
  pid_t child = -1;
  const auto forkOnce = [](void* context, int, char**, char**) {
    pid_t& process = *static_cast<pid_t*>(context);
    process = process < 0 ? fork() : process;
    return 0;
  };
  const int status =
      DBStore::ExecuteStmt(connection_, statement, forkOnce, &child, DBStore::kWaitLimit);
  if (child == 0) {
    _exit(status == 1 && !Connect() ? 0 : 1);
  }
  int result = -1;
  waitpid(child, &result, 0);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(WriteKeyValue("key", "value", connection_), 0);
}

}  // namespace
