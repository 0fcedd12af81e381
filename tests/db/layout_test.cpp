// Stores of both layouts: bringing one over, what is remembered of staged changes, and what is told
// of a database that others have altered.
#include "db/layout.h"

#include "platform/host_backup.h"
#include "platform/host_setup.h"
#include "platform/staged_base.h"

#include "db/backup/statements.h"
#include "db/database.h"
#include "db/layout_statements.h"
#include "db/steps.h"
#include "schema/schema_statements.h"
#include "support/captured_log.h"
#include "support/database.h"

#include <gmock/gmock.h>

#include <csignal>
#include <functional>
#include <sys/resource.h>

namespace {

using namespace TestSupport;
using DBStore::ErrorKind;
using DBStore::StagedBase;
using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

const TarnConfigStore::ConfigStoreObjectId kId("n", "g", "c", "i");

// Everything in the library's tables.
constexpr const char* kDump =
    "SELECT * FROM Config ORDER BY 1, 2, 3, 4; SELECT * FROM DefaultConfig ORDER BY 1, 2, 3, 4;"
    "SELECT * FROM DesiredUserConfig ORDER BY 1, 2, 3, 4; SELECT * FROM KeyValue ORDER BY 1";

class Layout1 : public testing::Test {
 protected:
  Layout1() {
    MakeLayout1(store_);
    EXPECT_EQ(Run(R"(
        WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 200)
        INSERT INTO Config SELECT 'c', 'g', 'n', 'i' || (i * 37 % 200), i, '{"u":' || i || '}',
          nullif('{}', CASE i % 2 WHEN 0 THEN '{}' END), NULL, '', hex(zeroblob(i * 20)), i % 2,
          '2001-01-01', '2002-01-01', i FROM n;
        INSERT INTO DefaultConfig VALUES('c', 'g', 'n', '', '1', '{}', NULL, '{"v":1}');
        INSERT INTO DesiredUserConfig VALUES('c', 'g', 'n', 'i1', '1', NULL, NULL, '{}', 'SET'),
          ('c', 'g', 'n', 'i', '1', NULL, NULL, NULL, 'DELETE_INSTANCE');
        INSERT INTO KeyValue VALUES('BOOT_MODE', '4'))"),
              "");
    before_ = Run(kDump);
  }
  ~Layout1() override { DBStore::testing::SetHook(nullptr); }

  std::string Run(const std::string& sql) { return Database(host_).Lines(sql); }
  std::string Version() { return Run("PRAGMA user_version"); }
  // The store is whole, of that layout, and holds what it held.
  void ExpectLayout(const std::string& version) {
    EXPECT_EQ(Version(), version);
    EXPECT_EQ(Run(kDump), before_);
    EXPECT_EQ(Run("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(Run("SELECT count(*) FROM sqlite_schema WHERE name LIKE 'Layout1%'"), "0");
  }
  void ExpectRefused(ErrorKind kind, const std::string& reason) {
    const auto result = HostSetup::Initialize();
    EXPECT_FALSE(result.ok);
    EXPECT_THAT(result.failure, HasSubstr(reason));
    EXPECT_EQ(DBStore::GetLastError().kind, kind) << result.failure;
    ExpectLayout("1");
  }

  TemporaryHost host_;
  const std::string store_ = host_.Path(HostPaths::kStore);
  std::string before_;
};

TEST_F(Layout1, IsBroughtOverWithAllThatIsInItWhileOthersHaveItOpen) {
  const auto open = Connect();
  const auto read = DBStore::internal::Prepare(
      open, "SELECT Version FROM Config WHERE Identifier = 'i37'", DBStore::kWaitLimit);
  EXPECT_EQ(Rows(open, read), "1");
  const auto result = HostSetup::Initialize();
  EXPECT_TRUE(result.ok) << result.failure;
  EXPECT_THAT(result.upgraded, ElementsAre(store_));
  EXPECT_THAT(result.unchanged, ElementsAre(host_.Path(HostPaths::kSchemaStore)));
  ExpectLayout("2");
  EXPECT_EQ(Rows(open, read), "1");
  EXPECT_EQ(Execute(open, "UPDATE Config SET UserValue = '' WHERE Identifier = 'i37'"), 0);
  EXPECT_EQ(Run("SELECT ModifiedTime > '2020' FROM Config WHERE Identifier = 'i37'"), "1");
  EXPECT_EQ(Run("SELECT count(*) FROM (SELECT rowid - lag(rowid) OVER (ORDER BY Component, "
                "ConfigGroup, Name, Identifier) AS d FROM Config) WHERE d <> 1"),
            "0")
      << "rows lie in the order of their keys";
  EXPECT_EQ(Run("SELECT count(*) FROM StagedBase"), "0");
  // As it is when it is made today, to the letter.
  const std::string declared = Run("SELECT sql FROM sqlite_schema WHERE sql NOT NULL ORDER BY 1");
  const TemporaryHost fresh;
  EXPECT_EQ(Database(fresh).Lines("SELECT sql FROM sqlite_schema WHERE sql NOT NULL ORDER BY 1"),
            declared);
}

TEST_F(Layout1, IsLeftOrBroughtOverWholeWhereverItIsKilledOrFails) {
  const auto initialize = [] { HostSetup::Initialize(); };
  const int steps =
      KillAtEachStep(initialize, [&](bool killed) { ExpectLayout(killed ? "1" : "2"); });
  EXPECT_GE(steps, 9);
  bool reached = true;
  for (int step = 0; reached; ++step) {
    MakeLayout1(store_);
    Run("INSERT INTO KeyValue VALUES('a', 'b')");
    before_ = Run(kDump);
    AtStep(step, reached, [] { return 1; });
    const bool ok = HostSetup::Initialize().ok;
    EXPECT_EQ(ok, !reached);
    DBStore::testing::SetHook(nullptr);
    ExpectLayout(reached ? "1" : "2");
    EXPECT_EQ(Execute(Connect(), "DELETE FROM KeyValue WHERE Key = 'c'"), 0) << "no lock is left";
  }
}

TEST_F(Layout1, StaysWithoutRoom) {
  int status = 1;
  for (rlim_t room = 0; status != 0; room += 200'000) {
    ASSERT_LT(room, 20'000'000U);
    status = InChild([&] {
      signal(SIGXFSZ, SIG_IGN);
      const rlimit limit = {room, RLIM_INFINITY};
      setrlimit(RLIMIT_FSIZE, &limit);
      return HostSetup::Initialize().ok ? 0 : 1;
    });
    ExpectLayout(status == 0 ? "2" : "1");
  }
}

TEST_F(Layout1, StaysWhereItCannotBeBroughtOver) {
  const auto writer = Connect();
  ASSERT_EQ(DBStore::BeginTransaction(writer), 0);
  ExpectRefused(ErrorKind::BUSY, "this thread has a transaction open");
  ASSERT_EQ(DBStore::CommitTransaction(writer), 0);
  {
    Database other(host_);
    other.Run("BEGIN IMMEDIATE");
    ExpectRefused(ErrorKind::BUSY, "locking it: database is locked");
  }
  fs::permissions(host_.Root(), fs::perms{0755});
  for (const char* suffix : {"", "-wal", "-shm"}) {
    fs::permissions(store_ + suffix, fs::perms{0644});
  }
  EXPECT_EQ(AsPlainUser([] {
              return !HostSetup::Initialize().ok &&
                             DBStore::GetLastError().kind == ErrorKind::PERMISSION
                         ? 0
                         : 1;
            }),
            0);
  Run("CREATE INDEX Mine ON Config(Version)");
  ExpectRefused(ErrorKind::OTHER,
                "has the index Mine on Config, which is not of this layout and "
                "would be lost");
  Run("DROP INDEX Mine; CREATE VIEW Theirs AS SELECT count(*) AS n FROM Config");
  EXPECT_TRUE(HostSetup::Initialize().ok);
  EXPECT_EQ(Run("SELECT n FROM Theirs"), "200") << "what others made of the tables still works";
}

TEST_F(Layout1, OfTheFirstLibrariesIsOneToo) {
  Run(std::string("DROP TRIGGER ConfigModified;") + DBStore::internal::CurrentStoreLayout().former);
  EXPECT_TRUE(Connect());
  EXPECT_THAT(HostSetup::Initialize().upgraded, ElementsAre(store_));
  EXPECT_EQ(Run("SELECT sql LIKE '%NEW.UserValue IS NOT OLD.UserValue%' FROM sqlite_schema WHERE "
                "name = 'ConfigModified'"),
            "1");
}

TEST_F(Layout1, KeepsNoBases) {
  StagedBase base;
  base.kind = StagedBase::Kind::ROW;
  EXPECT_EQ(DBStore::ReadStagedBase(kId, &base, Connect()), 0);
  EXPECT_EQ(base.kind, StagedBase::Kind::NONE);
  ASSERT_TRUE(HostSetup::Initialize().ok);
  Run("REPLACE INTO DesiredUserConfig VALUES('c', 'g', 'n', 'i', '2', '{}', NULL, NULL, 'SET')");
  EXPECT_EQ(DBStore::ReadStagedBase(kId, &base, Connect()), 0);
  EXPECT_EQ(base.kind, StagedBase::Kind::NONE) << "what it was first staged on is not known";
}

// A backup is restored as it is, whatever the layout of what is there.
TEST_F(Layout1, ComesBackFromItsBackupAndGoesAgain) {
  const std::string old = host_.Root() + "/of-layout-1";
  const std::string today = host_.Root() + "/of-layout-2";
  EXPECT_EQ(HostBackup::Backup(old, false).content.storeLayout, 1);
  ASSERT_TRUE(HostSetup::Initialize().ok);
  EXPECT_EQ(HostBackup::Backup(today, false).content.storeLayout, 2);
  const auto open = Connect();
  const CapturedLog log;
  const auto restored = HostBackup::Restore(old, true);
  EXPECT_EQ(restored.content.storeLayout, 1);
  EXPECT_THAT(restored.outdated, ElementsAre(store_));
  EXPECT_EQ(
      log.Count("2 /etc/kestrel/configstore/current-store-1: is of layout 1, as the backup is; "
                "`tarnctl init` brings it to layout 2"),
      1);
  ExpectLayout("1");
  EXPECT_EQ(Execute(open, "UPDATE Config SET Version = Version"), 0);
  EXPECT_THAT(HostBackup::Restore(today, true).outdated, testing::IsEmpty());
  ExpectLayout("2");
  HostBackup::Restore(old, true);
  EXPECT_THAT(HostSetup::Initialize().upgraded, ElementsAre(store_));
  ExpectLayout("2");
}

class Bases : public DatabaseTest {
 protected:
  std::string Base(const std::string& identifier = "i") {
    StagedBase base;
    const TarnConfigStore::ConfigStoreObjectId id("n", "g", "c", identifier);
    EXPECT_EQ(DBStore::ReadStagedBase(id, &base, connection_), 0);
    if (base.kind != StagedBase::Kind::ROW) {
      return base.kind == StagedBase::Kind::NONE ? "none" : "no row";
    }
    std::string text = base.version;
    for (const auto& value : {base.user, base.pending, base.automatic, base.vital, base.cached}) {
      text += " " + value.value_or("-");
    }
    return text + (base.confirmed ? " ok " : " - ") + base.creationTime + " " + base.modifiedTime +
           " " + std::to_string(base.revision);
  }
  // As other programs stage.
  Database other_{host_};
};

TEST_F(Bases, AreWhatTheRowHeldWhenAChangeWasFirstStaged) {
  constexpr const char* kRow =
      "REPLACE INTO Config VALUES('c', 'g', 'n', 'i', '1', 'u', 'd', NULL, '', 'c', 0, '2001', "
      "'2002', 7)";
  const std::string held = "1 u d -  c - 2001 2002 7";
  const std::string stage =
      "INTO DesiredUserConfig VALUES('c', 'g', 'n', 'i', '1', '{}', NULL, "
      "NULL, 'SET')";
  const std::tuple<const char*, std::string, std::string> steps[] = {
      {"nothing is staged", kRow, "none"},
      {"a change", "INSERT " + stage, held},
      {"the row goes on", "UPDATE Config SET UserValue = 'x'", held},
      {"it is replaced", "REPLACE " + stage, held},
      {"or left", "INSERT OR IGNORE " + stage, held},
      {"or updated", "INSERT " + stage + " ON CONFLICT DO UPDATE SET BootAction = 'DELETE'", held},
      {"the row is gone", "DELETE FROM Config", held},
      {"taken back", "DELETE FROM DesiredUserConfig WHERE Identifier = 'i'", "none"},
      {"staged on nothing", "INSERT OR ABORT " + stage, "no row"},
      {"the row comes", kRow, "no row"},
      {"all are taken back", "DELETE FROM DesiredUserConfig", "none"},
      {"another change", "REPLACE " + stage, held},
      {"it becomes another's", "UPDATE DesiredUserConfig SET Identifier = 'j'", "none"},
      {"whose base is not known", "SELECT 1", "none"}};
  for (const auto& [what, sql, base] : steps) {
    other_.Run(sql);
    EXPECT_EQ(Base(), base) << what;
  }
  EXPECT_EQ(Base("j"), "none");
  EXPECT_EQ(other_.Lines("SELECT count(*) FROM StagedBase"), "0");
  EXPECT_EQ(DBStore::ReadStagedBase(kId, nullptr, nullptr), 1);
}

// Who takes triggers for statements is told of their searches, too.
TEST_F(Bases, AreFoundByTheKey) {
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(host_.Path(HostPaths::kStore).c_str(), &database), SQLITE_OK);
  sqlite3_db_config(database, SQLITE_DBCONFIG_TRIGGER_EQP, 1, nullptr);
  const std::string key = " (Component=? AND ConfigGroup=? AND Name=? AND Identifier=?)";
  for (
      const std::string sql :
      {"REPLACE INTO DesiredUserConfig VALUES(1, 1, 1, 1, 1, 1, 1, 1, 'SET')",
       "DELETE FROM DesiredUserConfig WHERE Component = 1 AND ConfigGroup = 1 AND Name = 1 AND "
       "Identifier = 1",
       "UPDATE DesiredUserConfig SET Name = 'x' WHERE Component = 1 AND ConfigGroup = 1 AND Name = "
       "1 AND Identifier = 1",
       "UPDATE Config SET UserValue = 'x' WHERE Component = 1 AND ConfigGroup = 1 AND Name = 1 AND "
       "Identifier = 1",
       DBStore::internal::Sql::kReadStagedBase.data()}) {
    sqlite3_stmt* plan = nullptr;
    ASSERT_EQ(
        sqlite3_prepare_v2(database, ("EXPLAIN QUERY PLAN " + sql).c_str(), -1, &plan, nullptr),
        SQLITE_OK);
    int searches = 0;
    while (sqlite3_step(plan) == SQLITE_ROW) {
      const std::string step = reinterpret_cast<const char*>(sqlite3_column_text(plan, 3));
      if (step.starts_with("SEARCH")) {
        EXPECT_THAT(step, HasSubstr(key)) << sql;
        ++searches;
      } else {
        EXPECT_THAT(step, testing::Not(testing::ContainsRegex("SCAN [A-Z]|TEMP"))) << sql;
      }
    }
    sqlite3_finalize(plan);
    EXPECT_GE(searches, 2) << sql;
  }
  sqlite3_close(database);
}

TEST_F(Bases, AndEverythingElseOfThePlatformIsFoundByItsKey) {
  using namespace DBStore::internal;
  const auto plan = [this](std::string_view sql) {
    return other_.Lines("EXPLAIN QUERY PLAN " + std::string(sql));
  };
  EXPECT_THAT(plan(Sql::kReadKeyValue), HasSubstr("SEARCH KeyValue USING PRIMARY KEY (Key=?)"));
  EXPECT_EQ(plan(Sql::kWriteKeyValue), "");
  EXPECT_THAT(plan(Sql::kFindStagedBases), HasSubstr("SCAN sqlite_schema")) << "of a dozen rows";
  EXPECT_THAT(plan(Sql::kCountObjects), HasSubstr("SCAN Config")) << "counts all";
  other_.Run("ATTACH '" + host_.Path(HostPaths::kSchemaStore) + "' AS ss");
  const std::string type = "Types USING PRIMARY KEY (Component=? AND ConfigGroup=? AND Name=?)";
  EXPECT_THAT(plan(TarnSchemaStore::Sql::kReadType), HasSubstr("SEARCH " + type));
  EXPECT_THAT(plan(TarnSchemaStore::Sql::kRemoveType), HasSubstr("SEARCH " + type));
  EXPECT_THAT(plan(TarnSchemaStore::Sql::kReadGeneration),
              HasSubstr("SEARCH Generation USING INTEGER PRIMARY KEY"));
  for (const std::string_view all : {std::string_view(TarnSchemaStore::Sql::kReadAllTypes),
                                     std::string_view(TarnSchemaStore::Sql::kReadAllNames),
                                     std::string_view(Sql::kCountTypes)}) {
    EXPECT_THAT(plan(all), testing::EndsWith("SCAN Types")) << "in the order of the key";
  }
  other_.Run("DETACH ss");
}

TEST(Declarations, ThatAreNotTheLayoutsAreToldByName) {
  constexpr const char* kAway = "PRAGMA legacy_alter_table=ON; ALTER TABLE Config RENAME TO Away;";
  const std::pair<std::string, const char*> cases[] = {
      {std::string(kAway) + "CREATE VIEW Config AS SELECT * FROM Away",
       "Config is a view, not a table"},
      {kAway, "has no Config"},
      {std::string(kAway) + "CREATE TABLE Config AS SELECT * FROM Away",
       "Config has another key than its layout"},
      {"DROP TRIGGER ConfigModified; DROP TRIGGER ChangeStaged; ALTER TABLE Config DROP COLUMN "
       "CachedValue",
       "Config has no column CachedValue"},
      {"CREATE TRIGGER t BEFORE INSERT ON Config BEGIN SELECT RAISE(IGNORE); END",
       "has the trigger t on Config, which is not of this layout and could refuse, change or drop "
       "what is written; remove it (DROP TRIGGER), or restore it"},
      {"DROP TRIGGER ConfigModified; CREATE TRIGGER configmodified AFTER UPDATE ON Config BEGIN "
       "DELETE FROM KeyValue; END",
       "has another trigger ConfigModified"},
      {"DROP TABLE KeyValue; CREATE TABLE KeyValue(Key TEXT, Value TEXT, x, PRIMARY KEY(Key, x))",
       "KeyValue has another key than its layout"},
      {"DROP TABLE KeyValue; CREATE TABLE KeyValue(Key TEXT PRIMARY KEY, Value TEXT, x NOT NULL)",
       "KeyValue has the column x, which is not of this layout, and no row can be written without "
       "it; remove it or give it a default, or restore it"},
      {"CREATE UNIQUE INDEX u ON Config(Version)", "has the unique index u on Config"},
      {"DROP TABLE StagedBase; CREATE VIRTUAL TABLE StagedBase USING fts5(Component)",
       "StagedBase is a virtual table"}};
  for (const auto& [sql, reason] : cases) {
    const TemporaryHost host;
    auto open = Connect();
    Database(host).Run(sql);
    open.reset();  // whoever has the store open goes on; it is looked at when it is opened
    const auto many = [] { return std::vector{Connect(), Connect(), Connect()}; };
    const auto result = HostSetup::Initialize();
    EXPECT_THAT(result.failure, HasSubstr(std::string(HostPaths::kStore) + ": " + reason)) << sql;
    EXPECT_EQ(DBStore::GetLastError().kind, ErrorKind::CORRUPT);
    EXPECT_EQ(many().back(), nullptr);
  }
}

TEST(Declarations, OfOthersThatHarmNobodyAreToldOnce) {
  const TemporaryHost host;
  Database(host).Run(
      "ALTER TABLE Config ADD COLUMN Mine TEXT DEFAULT 'x'; DROP TRIGGER ConfigModified;"
      "CREATE INDEX i ON Config(Mine); CREATE TABLE Theirs(x); CREATE TRIGGER t AFTER INSERT ON "
      "Theirs BEGIN SELECT 1; END");
  const CapturedLog log;
  const std::vector<DBStore::ConnectionHandle> connections{Connect(), Connect()};
  EXPECT_TRUE(connections.back());
  const std::string name = std::string("1 ") + HostPaths::kStore + ": ";
  for (const char* line : {"has the column Mine of Config, which is not of this layout",
                           "has the index i on Config, which is not of this layout",
                           "the trigger ConfigModified is missing"}) {
    EXPECT_EQ(log.Count(name + line), 1) << line;
  }
  EXPECT_EQ(log.Lines().size(), 3U);
  Database(host).Run("ALTER TABLE Config ADD COLUMN Needed TEXT NOT NULL DEFAULT ''");
  EXPECT_TRUE(Connect());
  EXPECT_EQ(log.Lines().size(), 7U) << "it is another state of the same file";
}

}  // namespace
