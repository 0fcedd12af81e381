#include "db/layout.h"

#include "db/database.h"
#include "db/database_file.h"

#include <sqlite3.h>

namespace {

using namespace TestSupport;

class Layout : public DatabaseTest {
 protected:
  // What becomes of the types' generation.
  std::string Types(const char* sql) {
    const auto types =
        DBStore::internal::OpenDatabase(DBStore::internal::SchemaStoreLayout(), true);
    EXPECT_EQ(sqlite3_exec(types.handle.get(), sql, nullptr, nullptr, nullptr), SQLITE_OK);
    return Query(connection_, "SELECT Value FROM ss.Generation");
  }
};

constexpr const char* kOldRow =
    "INSERT INTO Config VALUES('c', 'g', 'n', 'i', '1', '{}', NULL, NULL, NULL, NULL, 1, "
    "'2001-01-01 00:00:00', '2001-01-01 00:00:00', 1)";
constexpr const char* kIsNew = "SELECT ModifiedTime >= datetime('now', '-60 seconds') FROM Config";

TEST_F(Layout, AFreshRowIsConfirmedAndDated) {
  ASSERT_EQ(Execute(connection_,
                    "INSERT OR REPLACE INTO Config(Identifier, Name, ConfigGroup, Component, "
                    "Version, Success) VALUES('', 'n', 'g', 'c', '1', NULL)"),
            0);
  EXPECT_EQ(Query(connection_,
                  "SELECT Success, Revision, CreationTime = ModifiedTime, length(CreationTime) "
                  "FROM Config"),
            "1 1 1 19");
  EXPECT_EQ(Query(connection_, kIsNew), "1");
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
  for (const char* action : {"SET", "DELETE", "DELETE_INSTANCE", "set"}) {
    EXPECT_EQ(Execute(connection_,
                      "INSERT OR REPLACE INTO DesiredUserConfig VALUES('c', 'g', 'n', '', '1', "
                      "NULL, NULL, NULL, ?)",
                      action),
              *action == 's' ? 1 : 0);
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
