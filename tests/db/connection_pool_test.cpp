#include "db/database.h"

#include <algorithm>
#include <sys/stat.h>

namespace {

using namespace TestSupport;
using DBStore::testing::GetCounters;
namespace fs = std::filesystem;

class Pool : public DatabaseTest {
 protected:
  const std::string store_ = host_.Path(HostPaths::kStore);
};

TEST_F(Pool, KeepsTheReadersApartFromTheWriters) {
  DBStore::GetConnection(DBStore::Type::CURRENT_STORE, false).reset();
  EXPECT_EQ(DBStore::WriteKeyValue("key", "value", Connect()), 0);
  const auto reader = DBStore::GetConnection(DBStore::Type::CURRENT_STORE, false);
  EXPECT_EQ(ReadKey(reader, "key"), "value");
  EXPECT_EQ(DBStore::WriteKeyValue("key", "value", reader), 8);
  EXPECT_FALSE(DBStore::GetConnection(static_cast<DBStore::Type>(1), true));
}

TEST_F(Pool, KeepsOnlyAFewIdleConnections) {
  std::uint64_t opened = 0;
  for (int round = 0; round < 2; ++round) {
    std::vector<DBStore::ConnectionHandle> many(40);
    const auto before = GetCounters().opens;
    std::generate(many.begin(), many.end(), Connect);
    opened = GetCounters().opens - before;
  }
  EXPECT_GT(opened, 20U);
  EXPECT_LT(opened, 40U);
}

TEST_F(Pool, DropsConnectionsToAFileThatWasReplaced) {
  ASSERT_EQ(DBStore::WriteKeyValue("key", "old", connection_), 0);
  for (const char* suffix : {"", "-wal", "-shm"}) {
    fs::rename(store_ + suffix, store_ + ".moved" + suffix);
  }
  EXPECT_FALSE(Connect());
  EXPECT_EQ(DBStore::GetLastError().kind, DBStore::ErrorKind::MISSING);
  ASSERT_TRUE(HostSetup::Initialize().ok);
  EXPECT_EQ(ReadKey(Connect(), "key"), "");
  EXPECT_EQ(ReadKey(connection_, "key"), "old");
}

TEST_F(Pool, FollowsTheRootAndThePermissions) {
  ASSERT_EQ(DBStore::WriteKeyValue("key", "here", connection_), 0);
  connection_.reset();
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
