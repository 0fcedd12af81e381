#include "tarnconfigstore/diagnostics.h"
#include "tarnconfigstore/key_values.h"

#include "admin/type_folder.h"
#include "support/store_fixture.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

namespace TarnConfigStore {
namespace {

using namespace ::testing;
using namespace TestSupport;

/// "KEY VERSION" of everything that is installed.
std::vector<std::string> InstalledTypes() {
  std::vector<std::string> lines;
  for (const InstalledType& type : ListTypes()) {
    lines.push_back(type.key + " " + type.version);
  }
  return lines;
}

constexpr const char* kObject = R"({"type":"object"})";
constexpr const char* kEmpty = R"({"instance":"","value":{}})";
constexpr const char* kMixed = R"({"type":"object","properties":{
    "id":{"type":"string","instanceId":true},"a":{"type":"integer"},"v":{"vital":true},
    "c":{"cached":true}}})";

class InstallTypes : public HostFixture {
 protected:
  std::string Defaults() {
    return database_.Lines(
        "SELECT Name, Identifier, Version, Value, VitalValue, CachedValue FROM DefaultConfig ORDER "
        "BY 1, 2");
  }
  std::string Count(const std::string& table) {
    return database_.Lines("SELECT COUNT(*) FROM " + table);
  }
  // The type "b", whose member "m" has a tag or none; "a" is the user's.
  void WriteTagged(const char* version, const std::string& tag, const std::string& shipped = "") {
    folder_.Write("b.json", TypeFile("b", version,
                                     R"({"type":"object","properties":{"a":{},"m":{)" + tag + "}}}",
                                     shipped));
  }
  TypeFolder folder_{host_};
};

TEST_F(InstallTypes, OneBadFileKeepsAllOthersOut) {
  folder_.Write("a.json", TypeFile("a", "1.0"));
  folder_.Write("b.json", TypeFile("b", "1.0", R"({"type":"object","vital":0})"));
  folder_.Write("c.json", TypeFile("c", "1.0", kMixed, R"({"instance":"x","value":{"id":"x"}})"));
  folder_.Write("notes.txt", "no type");
  EXPECT_THAT(
      folder_.Install(),
      ElementsAre("a.json valid", StartsWith("b.json invalid | /schema/vital "), "c.json valid"));
  EXPECT_THAT(InstalledTypes(), IsEmpty());
  EXPECT_EQ(Defaults(), "");
  folder_.Write("b.json", TypeFile("a", "2"));
  EXPECT_THAT(folder_.Install(),
              ElementsAre("a.json valid", HasSubstr("/key the type tarn/test/a comes from "),
                          "c.json valid"));
  folder_.Write("b.json", TypeFile("b", "1.0"));
  EXPECT_THAT(folder_.Install(),
              ElementsAre("a.json installed", "b.json installed", "c.json installed"));
  EXPECT_THAT(InstalledTypes(), ElementsAre("a 1.0", "b 1.0", "c 1.0"));
}

TEST_F(InstallTypes, OutcomeTellsWhatBecameOfEachFile) {
  folder_.Write("a.json", TypeFile("a", "1.9"));
  EXPECT_THAT(folder_.Install(), ElementsAre("a.json installed"));
  folder_.Write("a.json", " \n" + TypeFile("a", "1.9") + "\n");
  EXPECT_THAT(folder_.Install(), ElementsAre("a.json unchanged"));
  folder_.Write("a.json", TypeFile("a", "1.9", kMixed));
  EXPECT_THAT(folder_.Install(), ElementsAre("a.json upgraded"));
  folder_.Write("a.json", TypeFile("a", "1.10", kMixed));
  EXPECT_THAT(folder_.Install({.checkOnly = true}), ElementsAre("a.json valid"));
  EXPECT_THAT(InstalledTypes(), ElementsAre("a 1.9"));
  EXPECT_THAT(folder_.Install(), ElementsAre("a.json upgraded"));

  folder_.Write("a.json", TypeFile("a", "1.9"));
  folder_.Write("b.json", TypeFile("b", "1.0"));
  const auto refused = ElementsAre(
      "a.json invalid | /version version 1.9 is older than the installed version 1.10; going back "
      "has to be forced",
      "b.json valid");
  EXPECT_THAT(folder_.Install(), refused);
  EXPECT_THAT(folder_.Install({.checkOnly = true}), refused);
  EXPECT_THAT(InstalledTypes(), ElementsAre("a 1.10"));
  EXPECT_THAT(folder_.Install({.force = true}),
              ElementsAre("a.json downgraded", "b.json installed"));
  EXPECT_THAT(InstalledTypes(), ElementsAre("a 1.9", "b 1.0"));
}

TEST_F(InstallTypes, ShippedObjectsBecomeTheTypesDefaultRows) {
  folder_.Write("a.json", TypeFile("a", "1.0", kMixed,
                                   R"({"instance":"y","value":{"id":"y","a":1,"v":2,"c":3}},
                                      {"instance":"x","value":{"id":"x","v":[]}})"));
  folder_.Write("b.json", TypeFile("b", "7", kObject, kEmpty));
  folder_.Install();
  EXPECT_EQ(Defaults(), R"(a x 1.0 - {"id":"x","v":[]} -
a y 1.0 {"id":"y","a":1} {"id":"y","v":2} {"id":"y","c":3}
b  7 {} - -)");
  folder_.Write("a.json",
                TypeFile("a", "1.1", kMixed, R"({"instance":"z","value":{"id":"z","a":1}})"));
  folder_.Install();
  const std::string installed = R"(a z 1.1 {"id":"z","a":1} - -
b  7 {} - -)";
  EXPECT_EQ(Defaults(), installed);
  // Installing again puts back what was lost, and otherwise writes nothing.
  database_.Run("DELETE FROM DefaultConfig");
  EXPECT_THAT(folder_.Install(), ElementsAre("a.json unchanged", "b.json unchanged"));
  EXPECT_EQ(Defaults(), installed);
  DBStore::testing::SetHook([](Operation, std::string_view sql) {
    return sql.find("INTO DefaultConfig") != sql.npos ? 1 : 0;
  });
  EXPECT_THAT(folder_.Install(), ElementsAre("a.json unchanged", "b.json unchanged"));
}

// A reader that does not let go keeps the schemas from being committed, after the rows were.
TEST_F(InstallTypes, InstallationThatStoppedBetweenTheCommitsIsMendedByAnother) {
  WriteTagged("1", "");
  folder_.Install();
  const auto store = ConfigStore::GetStore("");
  const auto object = std::make_shared<ConfigStoreObject>(ConfigStoreObjectId("b", "test", "tarn"));
  object->SetValue("m", 1);
  store->Set(object, EXTERNAL);
  folder_.Write("a.json", TypeFile("a", "1", kObject, kEmpty));
  WriteTagged("2", R"("vital":true)");
  sqlite3* reader = nullptr;
  ASSERT_EQ(sqlite3_open(host_.Path(HostPaths::kSchemaStore).c_str(), &reader), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(reader, "BEGIN; SELECT * FROM Types", nullptr, nullptr, nullptr),
            SQLITE_OK);
  EXPECT_THAT(Raised([&] { folder_.Install(); }), StartsWith("CSE 2000 "));
  EXPECT_EQ(GetLastStoreError().kind, StoreErrorKind::BUSY);
  sqlite3_close(reader);
  EXPECT_THAT(InstalledTypes(), ElementsAre("b 1"));
  EXPECT_EQ(Defaults(), "a  1 {} - -");
  EXPECT_EQ(database_.Rows(), R"(tarn/test/b/ u=- d=- a=- v={"m":1} c=- ok=1 rev=1)");
  EXPECT_EQ(store->Get(object->GetConfigStoreObjectId())->GetData(), R"({"m":1})");

  object->SetValue("m", 2);
  store->Update(object, EXTERNAL);
  EXPECT_EQ(database_.Rows(), R"(tarn/test/b/ u={"m":2} d=- a=- v={"m":1} c=- ok=1 rev=2)");
  EXPECT_THAT(folder_.Install(), ElementsAre("a.json installed", "b.json upgraded"));
  EXPECT_EQ(database_.Rows(), R"(tarn/test/b/ u=- d=- a=- v={"m":2} c=- ok=1 rev=2)");
}

TEST_F(InstallTypes, PathThatCannotBeReadIsAnArgumentError) {
  const std::string inside = folder_.Path() + "/folder.json";
  std::filesystem::create_directory(inside);
  const struct {
    std::string path, named, reason;
  } cases[] = {
      {folder_.Path() + "/none.json", folder_.Path() + "/none.json", "No such file or directory"},
      {folder_.Path(), inside, "is a directory"},
      {"/dev/zero", "/dev/zero", "is no regular file"}};
  for (const auto& row : cases) {
    EXPECT_THAT(Raised([&] { CheckTypes({row.path}); }), StartsWith("IAE 1081 File " + row.named));
    EXPECT_EQ(GetLastParseFailure().source, row.named);
    EXPECT_EQ(GetLastParseFailure().reason, row.reason);
    EXPECT_EQ(log_.Count("0 " + row.named + " cannot be read: " + row.reason), 1);
    const auto reports = CheckTypes({row.path, row.path}, UnreadFile::IS_INVALID);
    ASSERT_EQ(reports.size(), 2U) << "it keeps the others from being told of";
    EXPECT_EQ(reports[1].path, row.named);
    EXPECT_EQ(reports[1].errors.front().error, "it cannot be read: " + row.reason);
  }
}

using InstalledTypesTest = InstallTypes;

TEST_F(InstalledTypesTest, ListTellsFlagsAndInstancesInTheOrderOfNames) {
  const std::string a =
      TypeFile("a", "1", R"({"type":"object","shared":true,"rebootRequired":true})");
  folder_.Write("z.json", a);
  folder_.Write("a.json", TypeFile("b", "2", kMixed));
  folder_.Install();
  std::vector<std::string> lines;
  for (const InstalledType& type : ListTypes()) {
    lines.push_back(type.component + "/" + type.group + "/" + type.key + " " + type.version + " [" +
                    type.flags + "]" + (type.hasInstances ? " instances" : ""));
  }
  EXPECT_THAT(lines,
              ElementsAre("tarn/test/a 1 [rebootRequired shared]", "tarn/test/b 2 [] instances"));
  EXPECT_EQ(GetTypeFile("tarn", "test", "a"), a);
  EXPECT_THAT(Raised([] { GetTypeFile("tarn", "test", "c"); }), StartsWith("CSE 1037 "));
}

TEST_F(InstalledTypesTest, GoWithWhatIsStoredOrStagedOfThemByForceOnly) {
  const auto remove = [](bool force) {
    return Raised([=] { RemoveType("tarn", "test", "a", force); });
  };
  folder_.Write("a.json", TypeFile("a", "1", kObject, kEmpty));
  folder_.Install();
  database_.Run(
      "INSERT INTO Config(Component, ConfigGroup, Name, Identifier, Version, DesiredValue) VALUES "
      "('tarn', 'test', 'a', 'x', '1', '{}'), ('tarn', 'test', 'a', 'empty', '1', NULL), "
      "('tarn', 'test', 'b', 'x', '1', '{}')");
  EXPECT_THAT(remove(false),
              StartsWith("CSE 2000 Objects stored of the type comp tarn grp test key a: 1."));
  EXPECT_THAT(InstalledTypes(), ElementsAre("a 1"));
  EXPECT_EQ(Count("DefaultConfig"), "1");
  EXPECT_EQ(remove(true), "nothing");
  EXPECT_THAT(InstalledTypes(), IsEmpty());
  EXPECT_EQ(Count("DefaultConfig") + Count("Config"), "03");
  EXPECT_THAT(remove(true), StartsWith("CSE 1037 "));

  database_.Run("DELETE FROM Config");
  folder_.Install();
  database_.Run(
      "INSERT INTO DesiredUserConfig VALUES "
      "('tarn','test','a','','1','{}',NULL,NULL,'SET'),"
      "('tarn','test','a','x','1',NULL,NULL,NULL,'DELETE'),"
      "('tarn','test','b','','1',NULL,NULL,NULL,'DELETE')");
  EXPECT_THAT(remove(false),
              StartsWith("CSE 2000 Changes staged for the next boot of the type comp "
                         "tarn grp test key a: 2. Removing"));
  SetKeyValue("BOOT_MODE", "1");
  EXPECT_THAT(remove(true), HasSubstr("remediated"));
  EXPECT_THAT(InstalledTypes(), ElementsAre("a 1"));
  EXPECT_EQ(Count("DesiredUserConfig"), "3");
  SetKeyValue("BOOT_MODE", "4");
  EXPECT_EQ(remove(true), "nothing");
  EXPECT_THAT(InstalledTypes(), IsEmpty());
  EXPECT_EQ(database_.Lines("SELECT Name FROM DesiredUserConfig"), "b");
}

}  // namespace
}  // namespace TarnConfigStore
