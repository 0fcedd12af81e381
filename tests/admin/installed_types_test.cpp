#include "tarnconfigstore/key_values.h"
#include "tarnconfigstore/type_administration.h"

#include "admin/type_folder.h"
#include "persistence/statements.h"
#include "support/database.h"
#include "support/raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace TarnConfigStore {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using TestSupport::Database;
using TestSupport::InstalledTypes;
using TestSupport::Raised;
using TestSupport::TypeFile;
using TestSupport::TypeFolder;

class InstalledTypesTest : public ::testing::Test {
 protected:
  std::vector<std::string> Count(const std::string& table) {
    return Database(host_).Run("SELECT COUNT(*) FROM " + table);
  }

  TestSupport::TemporaryHost host_;
  TypeFolder folder_{host_};
};

TEST_F(InstalledTypesTest, ListTellsFlagsAndInstancesInTheOrderOfNames) {
  folder_.Write("z.json",
                TypeFile("a", "1", R"({"type":"object","shared":true,"rebootRequired":true})"));
  folder_.Write("a.json", TypeFile("b", "2", R"({"type":"object","properties":{
      "id":{"type":"string","instanceId":true}}})"));
  folder_.Install();
  std::vector<std::string> lines;
  for (const InstalledType& type : ListTypes()) {
    lines.push_back(type.component + "/" + type.group + "/" + type.key + " " + type.version + " [" +
                    type.flags + "]" + (type.hasInstances ? " instances" : ""));
  }
  EXPECT_THAT(lines,
              ElementsAre("tarn/test/a 1 [rebootRequired shared]", "tarn/test/b 2 [] instances"));
  EXPECT_EQ(GetTypeFile("tarn", "test", "a"),
            TypeFile("a", "1", R"({"type":"object","shared":true,"rebootRequired":true})"));
  EXPECT_THAT(Raised([] { GetTypeFile("tarn", "test", "c"); }), StartsWith("CSE 1037 "));
}

TEST_F(InstalledTypesTest, TypeWithStoredObjectsIsRemovedByForceOnly) {
  folder_.Write("a.json",
                TypeFile("a", "1", R"({"type":"object"})", R"({"instance":"","value":{}})"));
  folder_.Install();
  Database(host_).Run(
      "INSERT INTO Config(Component, ConfigGroup, Name, Identifier, Version, DesiredValue) VALUES "
      "('tarn', 'test', 'a', 'x', '1', '{}'), ('tarn', 'test', 'a', 'empty', '1', NULL), "
      "('tarn', 'test', 'b', 'x', '1', '{}')");
  EXPECT_THAT(Raised([] { RemoveType("tarn", "test", "a", false); }),
              StartsWith("CSE 2000 Objects stored of the type comp tarn grp test key a: 1."));
  EXPECT_THAT(InstalledTypes(), ElementsAre("a 1"));
  EXPECT_THAT(Count("DefaultConfig"), ElementsAre("1"));

  RemoveType("tarn", "test", "a", true);
  EXPECT_THAT(InstalledTypes(), IsEmpty());
  EXPECT_THAT(Count("DefaultConfig"), ElementsAre("0"));
  EXPECT_THAT(Count("Config"), ElementsAre("3"));
  EXPECT_THAT(Raised([] { RemoveType("tarn", "test", "a", true); }), StartsWith("CSE 1037 "));
}

TEST_F(InstalledTypesTest, StagedChangesGoWithTheirTypeOnlyByForce) {
  folder_.Write("a.json", TypeFile("a", "1", R"({"type":"object","rebootRequired":true})"));
  folder_.Install();
  Database(host_).Run(
      "INSERT INTO DesiredUserConfig VALUES ('tarn','test','a','','1','{}',NULL,NULL,'SET'),"
      "('tarn','test','a','x','1',NULL,NULL,NULL,'DELETE'),"
      "('tarn','test','b','','1',NULL,NULL,NULL,'DELETE')");
  EXPECT_THAT(
      Raised([] { RemoveType("tarn", "test", "a", false); }),
      StartsWith("CSE 2000 Changes staged for the next boot of the type comp tarn grp test key a: "
                 "2. Removing"));
  SetKeyValue("BOOT_MODE", "1");
  EXPECT_THAT(Raised([] { RemoveType("tarn", "test", "a", true); }), HasSubstr("remediated"));
  EXPECT_THAT(InstalledTypes(), ElementsAre("a 1"));
  EXPECT_THAT(Count("DesiredUserConfig"), ElementsAre("3"));
  SetKeyValue("BOOT_MODE", "4");
  RemoveType("tarn", "test", "a", true);
  EXPECT_THAT(InstalledTypes(), IsEmpty());
  EXPECT_THAT(Count("DesiredUserConfig WHERE Name = 'b'"), ElementsAre("1"));
  EXPECT_THAT(Count("DesiredUserConfig"), ElementsAre("1"));
}

TEST_F(InstalledTypesTest, StatementsWalkTheKeysIndex) {
  for (const std::string_view statement : {READ_DEFAULT_INSTANCES, DELETE_DEFAULT_INSTANCES,
                                           COUNT_STORED_INSTANCES, READ_STAGED_OF_TYPE}) {
    EXPECT_THAT(
        Database(host_).Run("EXPLAIN QUERY PLAN " + std::string(statement)),
        ElementsAre(HasSubstr("USING PRIMARY KEY (Component=? AND ConfigGroup=? AND Name=?)")))
        << statement;
  }
}

}  // namespace
}  // namespace TarnConfigStore
