#include "db/database.h"

#include <sys/stat.h>

namespace {

using namespace TestSupport;
using DBStore::testing::GetCounters;
namespace fs = std::filesystem;

class Pool : public testing::Test {
 protected:
  TemporaryHost host_;
  const std::string store_ = host_.Path(HostPaths::kStore);
};

TEST_F(Pool, NeverLendsAConnectionTwiceAtATime) {
  const auto first = Connect();
  const auto second = Connect();
  EXPECT_NE(first, second);
  EXPECT_FALSE(DBStore::GetConnection(static_cast<DBStore::Type>(1), true));
}

TEST_F(Pool, KeepsTheReadersApartFromTheWriters) {
  DBStore::GetConnection(DBStore::Type::CURRENT_STORE, false).reset();
  EXPECT_EQ(DBStore::WriteKeyValue("key", "value", Connect()), 0);
  const auto reader = DBStore::GetConnection(DBStore::Type::CURRENT_STORE, false);
  EXPECT_EQ(ReadKey(reader, "key"), "value");
  EXPECT_EQ(DBStore::WriteKeyValue("key", "value", reader), 8);
}

TEST_F(Pool, KeepsOnlyAFewIdleConnections) {
  std::vector<DBStore::ConnectionHandle> many(40);
  const auto takeAll = [&many] {
    const auto before = GetCounters().opens;
    for (auto& connection : many) {
      connection = Connect();
    }
    many.assign(many.size(), nullptr);
    return GetCounters().opens - before;
  };
  takeAll();
  const auto reopened = takeAll();
  EXPECT_GT(reopened, many.size() / 2);
  EXPECT_LT(reopened, many.size());
}

TEST_F(Pool, DropsConnectionsToAFileThatWasReplaced) {
  ASSERT_EQ(DBStore::WriteKeyValue("key", "old", Connect()), 0);
  const auto held = Connect();
  const std::string moved = store_ + ".moved";
  for (const char* suffix : {"", "-wal", "-shm"}) {
    fs::rename(store_ + suffix, moved + suffix);
  }
  EXPECT_FALSE(Connect());
  EXPECT_EQ(DBStore::GetLastError().kind, DBStore::ErrorKind::MISSING);
  ASSERT_TRUE(HostSetup::Initialize().ok);
  EXPECT_EQ(ReadKey(Connect(), "key"), "");
  EXPECT_EQ(ReadKey(held, "key"), "old");
}

TEST_F(Pool, FollowsTheRootAndThePermissions) {
  ASSERT_EQ(DBStore::WriteKeyValue("key", "here", Connect()), 0);
  {
    const TemporaryHost other;
    EXPECT_EQ(ReadKey(Connect(), "key"), "");
  }
  EXPECT_EQ(ReadKey(Connect(), "key"), "here");
  const auto before = GetCounters().opens;
  ASSERT_EQ(chmod(store_.c_str(), 0600), 0);
  EXPECT_TRUE(Connect());
  EXPECT_EQ(GetCounters().opens, before + 1);
}

}  // namespace
