// Making the databases, and what their tables do by themselves.
#include "platform/host_setup.h"

#include "db/database.h"
#include "db/database_file.h"
#include "db/layout.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <thread>

namespace {

using namespace TestSupport;
using testing::ElementsAre;
namespace fs = std::filesystem;

class HostSetupRuns : public testing::Test {
 protected:
  TemporaryHost host_{TemporaryHost::Content::NOTHING};
  const std::string store_ = host_.Path(HostPaths::kStore);
};

TEST_F(HostSetupRuns, MakesWhatIsMissingOnceAndWithTheRightModes) {
  const mode_t mask = umask(077);
  const auto first = HostSetup::Initialize();
  umask(mask);
  EXPECT_TRUE(first.ok) << first.failure;
  EXPECT_THAT(first.created, ElementsAre(host_.Path("/etc"), host_.Path("/etc/kestrel"),
                                         host_.Path("/etc/kestrel/configstore"), store_,
                                         host_.Path(HostPaths::kSchemaStore)));
  std::ostringstream modes;
  for (const std::string& path :
       {host_.Path("/etc"), host_.Path("/etc/kestrel"), host_.Path("/etc/kestrel/configstore"),
        store_, store_ + "-wal", store_ + "-shm", host_.Path(HostPaths::kSchemaStore)}) {
    modes << std::oct << static_cast<int>(fs::status(path).permissions()) << " ";
  }
  EXPECT_EQ(modes.str(), "755 755 755 640 640 640 640 ");

  ASSERT_EQ(DBStore::WriteKeyValue("key", "value", Connect()), 0);
  const auto second = HostSetup::Initialize();
  EXPECT_TRUE(second.ok);
  EXPECT_TRUE(second.created.empty());
  EXPECT_THAT(second.unchanged, ElementsAre(store_, host_.Path(HostPaths::kSchemaStore)));
  EXPECT_EQ(ReadKey(Connect(), "key"), "value");
}

TEST_F(HostSetupRuns, NamesWhatIsInTheWayAndLeavesItAlone) {
  std::ofstream(host_.Path("/etc")).flush();
  EXPECT_THAT(HostSetup::Initialize().failure, testing::StartsWith("/etc: "));
  fs::remove(host_.Path("/etc"));

  fs::create_directories(fs::path(store_).parent_path());
  std::ofstream(store_).flush();
  const auto result = HostSetup::Initialize();
  EXPECT_FALSE(result.ok);
  EXPECT_THAT(result.failure, testing::StartsWith(std::string(HostPaths::kStore) + ": is empty"));
  EXPECT_EQ(fs::file_size(store_), 0U);
  fs::remove_all(host_.Path("/etc"));

  ASSERT_EQ(chmod(host_.Root().c_str(), 0555), 0);
  EXPECT_EQ(AsPlainUser([] {
              const bool ok = HostSetup::Initialize().ok;
              return !ok && DBStore::GetLastError().kind == DBStore::ErrorKind::PERMISSION ? 0 : 1;
            }),
            0);
  ASSERT_EQ(chmod(host_.Root().c_str(), 0755), 0);
}

TEST_F(HostSetupRuns, TwoProcessesAtOnceMakeOneStore) {
  const auto initialize = [] {
    const auto result = HostSetup::Initialize();
    return result.ok && result.created.size() + result.unchanged.size() >= 2 ? 0 : 1;
  };
  ChildProcess first(initialize);
  ChildProcess second(initialize);
  EXPECT_EQ(first.Wait(), 0);
  EXPECT_EQ(second.Wait(), 0);
  EXPECT_TRUE(Connect());
}

// Killed at many moments, an initialisation leaves a store that is whole or none, and the next one
// succeeds.
TEST_F(HostSetupRuns, IsCompletedAfterItWasKilled) {
  for (int moment = 0; moment < 40; ++moment) {
    ChildProcess child([] { return HostSetup::Initialize().ok ? 0 : 1; });
    std::this_thread::sleep_for(std::chrono::microseconds(250 * moment));
    kill(child.Id(), SIGKILL);
    child.Wait();
    if (fs::exists(store_)) {
      EXPECT_EQ(Query(Connect(), "SELECT count(*) FROM Config, KeyValue"), "0");
    }
    const auto result = HostSetup::Initialize();
    EXPECT_TRUE(result.ok) << result.failure;
    EXPECT_FALSE(fs::exists(store_ + ".new"));
    fs::remove_all(host_.Path("/etc"));
  }
}

// Whoever may open the directory may lock it.
TEST_F(HostSetupRuns, SaysWhoKeepsTheDirectoryLocked) {
  ASSERT_TRUE(HostSetup::Initialize().ok);
  const std::string directory = fs::path(store_).parent_path();
  const std::string locked = host_.Root() + "/locked";
  ChildProcess other([&] {
    prctl(PR_SET_NAME, "some\x1b[1m");
    flock(open(directory.c_str(), O_RDONLY | O_DIRECTORY), LOCK_EX);
    WriteFile(locked, "");
    return pause();
  });
  while (!fs::exists(locked)) {
    std::this_thread::yield();
  }
  const auto result = HostSetup::Initialize();
  kill(other.Id(), SIGKILL);
  EXPECT_EQ(result.failure, "/etc/kestrel/configstore: process " + std::to_string(other.Id()) +
                                " (some?[1m) has kept the directory locked for 3 s; try again, and "
                                "end it if it is not making or restoring the databases");
  EXPECT_EQ(DBStore::GetLastError().kind, DBStore::ErrorKind::BUSY);
}

class Layout : public DatabaseTest {
 protected:
  // What becomes of the types' generation.
  std::string Types(const char* sql) {
    const auto types = OpenDatabase(DBStore::internal::SchemaStoreLayout(), true);
    EXPECT_EQ(sqlite3_exec(types.handle.get(), sql, nullptr, nullptr, nullptr), SQLITE_OK);
    return Query(connection_, "SELECT Value FROM ss.Generation");
  }
};

constexpr const char* kOldRow =
    "INSERT INTO Config VALUES('c', 'g', 'n', 'i', '1', '{}', NULL, NULL, NULL, NULL, 1, "
    "'2001-01-01 00:00:00', '2001-01-01 00:00:00', 1)";
constexpr const char* kIsNew = "SELECT ModifiedTime >= datetime('now', '-60 seconds') FROM Config";

TEST_F(Layout, AFreshRowIsConfirmedAndDated) {
  Execute(connection_,
          "REPLACE INTO Config(Identifier, Name, ConfigGroup, Component, Version, Success) "
          "VALUES('', 'n', 'g', 'c', '1', NULL)");
  EXPECT_EQ(Query(connection_,
                  "SELECT Success, Revision, CreationTime = ModifiedTime, length(CreationTime), "
                  "ModifiedTime >= datetime('now', '-60 seconds') FROM Config"),
            "1 1 1 19 1");
}

TEST_F(Layout, ARowIsDatedAnewWhenAValueChanges) {
  const std::pair<const char*, const char*> changes[] = {
      {"UserValue = NULL", "1"},     {"DesiredValue = '{}'", "1"},
      {"AutoConfValue = '{}'", "1"}, {"VitalValue = '{}'", "1"},
      {"CachedValue = '{}'", "1"},   {"UserValue = '{}'", "0"},
      {"Version = '2'", "0"},        {"Success = 0", "0"},
      {"Revision = 9", "0"},         {"CreationTime = '2'", "0"},
      {"ModifiedTime = '2'", "0"},   {"UserValue = NULL, ModifiedTime = '2'", "0"}};
  for (const auto& [change, isNew] : changes) {
    ASSERT_EQ(Execute(connection_, kOldRow), 0);
    EXPECT_EQ(Query(connection_, kIsNew), "0");
    ASSERT_EQ(Execute(connection_, std::string("UPDATE Config SET ") + change), 0);
    EXPECT_EQ(Query(connection_, kIsNew), isNew) << change;
    ASSERT_EQ(Execute(connection_, "DELETE FROM Config"), 0);
  }
}

TEST_F(Layout, OnlyTheThreeBootActionsAreStored) {
  constexpr const char* kStage =
      "REPLACE INTO DesiredUserConfig VALUES('c', 'g', 'n', '', '1', NULL, NULL, NULL, ?)";
  for (const char* action : {"SET", "DELETE", "DELETE_INSTANCE", "set"}) {
    EXPECT_EQ(Execute(connection_, kStage, std::string_view(action)), *action == 's' ? 1 : 0);
  }
}

TEST_F(Layout, EveryChangeOfTypesRaisesTheirGeneration) {
  ASSERT_EQ(DBStore::AttachSchemaStore(connection_), 0);
  EXPECT_EQ(Types(""), "1");
  EXPECT_EQ(Types("INSERT INTO Types VALUES('c', 'g', 'a', '1', 'tarn', '{}'),"
                  "('c', 'g', 'b', '1', 'tarn', '{}')"),
            "3");
  EXPECT_EQ(Types("INSERT OR REPLACE INTO Types VALUES('c', 'g', 'a', '2', 'tarn', '{}')"), "4");
  EXPECT_EQ(Types("UPDATE Types SET Version = '3' WHERE Name = 'a'"), "5");
  EXPECT_EQ(Types("DELETE FROM Types"), "7");
}

TEST_F(Layout, TheAttachedTypesAreReadOnlyAndGoWithTheirUser) {
  ASSERT_EQ(DBStore::AttachSchemaStore(connection_), 0);
  EXPECT_EQ(Execute(connection_, "DELETE FROM ss.Types"), 1);
  connection_.reset();
  EXPECT_EQ(Query(Connect(), "SELECT count(*) FROM ss.SmartnicSchema"), "failed");
}

TEST_F(Layout, AMissingSchemaStoreIsToldWhenItIsAttached) {
  std::filesystem::remove(host_.Path(HostPaths::kSchemaStore));
  EXPECT_NE(DBStore::AttachSchemaStore(connection_), 0);
  EXPECT_EQ(DBStore::GetLastError().kind, DBStore::ErrorKind::MISSING);
  EXPECT_FALSE(std::filesystem::exists(host_.Path(HostPaths::kSchemaStore)));
}

}  // namespace
