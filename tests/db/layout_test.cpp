#include "db/layout.h"

#include "db/database.h"
#include "db/database_file.h"
#include "support/temporary_host.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace {

using namespace TestSupport;

class Layout : public testing::Test {
 protected:
  int Types(const char* sql) {
    const auto types =
        DBStore::internal::OpenDatabase(DBStore::internal::SchemaStoreLayout(), true);
    return sqlite3_exec(types.handle.get(), sql, nullptr, nullptr, nullptr);
  }

  TemporaryHost host_;
  DBStore::ConnectionHandle connection_ = Connect();
};

constexpr const char* kOldRow =
    "INSERT INTO Config(Component, ConfigGroup, Name, Identifier, Version, UserValue, "
    "CreationTime, "
    "ModifiedTime) VALUES('c', 'g', 'n', 'i', '1', '{}', '2001-01-01 00:00:00', '2001-01-01 "
    "00:00:00')";
constexpr const char* kIsNew = "SELECT ModifiedTime >= datetime('now', '-60 seconds') FROM Config";

TEST_F(Layout, AFreshRowIsConfirmedAndDated) {
  ASSERT_EQ(
      Execute(connection_,
              "INSERT OR REPLACE INTO Config(Identifier, Name, ConfigGroup, Component, Version, "
              "Success) VALUES('', 'n', 'g', 'c', '1', NULL)"),
      0);
  EXPECT_EQ(Query(connection_,
                  "SELECT Success, Revision, CreationTime = ModifiedTime, length(CreationTime) "
                  "FROM Config"),
            "1 1 1 19");
  EXPECT_EQ(Query(connection_, kIsNew), "1");
}

TEST_F(Layout, EveryUpdateOfARowIsDatedAndOthersAreNot) {
  for (const char* change :
       {"Version = '2'", "UserValue = NULL", "DesiredValue = '{}'", "AutoConfValue = '{}'",
        "VitalValue = '{}'", "CachedValue = '{}'", "Success = 0", "Revision = 9",
        "CreationTime = '2002-02-02 00:00:00'"}) {
    ASSERT_EQ(Execute(connection_, kOldRow), 0);
    EXPECT_EQ(Query(connection_, kIsNew), "0");
    ASSERT_EQ(Execute(connection_, std::string("UPDATE Config SET ") + change), 0);
    EXPECT_EQ(Query(connection_, kIsNew), "1") << change;
    ASSERT_EQ(Execute(connection_, "DELETE FROM Config"), 0);
  }
  ASSERT_EQ(Execute(connection_, kOldRow), 0);
  ASSERT_EQ(Execute(connection_, "UPDATE Config SET ModifiedTime = '2003-03-03 00:00:00'"), 0);
  EXPECT_EQ(Query(connection_, "SELECT ModifiedTime FROM Config"), "2003-03-03 00:00:00");
}

TEST_F(Layout, PrefixesOfTheKeyAreSearchedByIt) {
  for (const char* table : {"Config", "DefaultConfig", "DesiredUserConfig"}) {
    const std::string sql = std::string("EXPLAIN QUERY PLAN SELECT * FROM ") + table +
                            " WHERE Name = ? AND ConfigGroup = ? AND Component = ?";
    EXPECT_NE(Query(connection_, sql).find("USING PRIMARY KEY"), std::string::npos) << table;
  }
}

TEST_F(Layout, OnlyTheThreeBootActionsAreStored) {
  const auto store = [this](const char* action) {
    return Execute(connection_,
                   "INSERT OR REPLACE INTO DesiredUserConfig VALUES('c', 'g', 'n', '', '1', NULL, "
                   "NULL, NULL, ?)",
                   action);
  };
  EXPECT_EQ(store("SET"), 0);
  EXPECT_EQ(store("DELETE"), 0);
  EXPECT_EQ(store("DELETE_INSTANCE"), 0);
  EXPECT_EQ(store("set"), 1);
}

TEST_F(Layout, EveryChangeOfTypesRaisesTheirGeneration) {
  ASSERT_EQ(DBStore::AttachSchemaStore(connection_), 0);
  const auto generation = [this] { return Query(connection_, "SELECT Value FROM ss.Generation"); };
  EXPECT_EQ(generation(), "1");
  ASSERT_EQ(Types("INSERT INTO Types VALUES('c', 'g', 'plain', '1', 'tarn', '{}'),"
                  "('c', 'g', 'shared', '1', 'tarn-shared', '{}')"),
            SQLITE_OK);
  EXPECT_EQ(generation(), "3");
  EXPECT_EQ(
      Query(connection_, "SELECT Component, ConfigGroup, Name, ValueType FROM ss.SmartnicSchema"),
      "c g shared tarn-shared");
  Types("INSERT OR REPLACE INTO Types VALUES('c', 'g', 'plain', '2', 'tarn', '{}')");
  EXPECT_EQ(generation(), "4");
  Types("UPDATE Types SET Version = '3' WHERE Name = 'plain'");
  EXPECT_EQ(generation(), "5");
  Types("DELETE FROM Types");
  EXPECT_EQ(generation(), "7");
}

TEST_F(Layout, TheAttachedTypesGoWhenTheLastUserDetachesThem) {
  EXPECT_EQ(DBStore::DetachSchemaStore(connection_), 21);
  ASSERT_EQ(DBStore::AttachSchemaStore(connection_), 0);
  ASSERT_EQ(DBStore::AttachSchemaStore(connection_), 0);
  ASSERT_EQ(DBStore::DetachSchemaStore(connection_), 0);
  EXPECT_EQ(Query(connection_, "SELECT count(*) FROM ss.SmartnicSchema"), "0");
  EXPECT_EQ(Execute(connection_, "DELETE FROM ss.Types"), 1);

  ASSERT_EQ(DBStore::BeginTransaction(connection_), 0);
  EXPECT_EQ(Query(connection_, "SELECT count(*) FROM ss.SmartnicSchema"), "0");
  EXPECT_EQ(DBStore::DetachSchemaStore(connection_), 0);
  ASSERT_EQ(DBStore::CommitTransaction(connection_), 0);
  EXPECT_EQ(Query(connection_, "SELECT count(*) FROM ss.SmartnicSchema"), "failed");

  ASSERT_EQ(DBStore::AttachSchemaStore(connection_), 0);
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
