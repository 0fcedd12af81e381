#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/diagnostics.h"
#include "tarnconfigstore/type_administration.h"

#include "platform/db_testing.h"

#include "admin/type_folder.h"
#include "support/database.h"
#include "support/raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
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
using TestSupport::TemporaryHost;
using TestSupport::TypeFile;
using TestSupport::TypeFolder;

constexpr const char* kMixed = R"({"type":"object","properties":{
    "id":{"type":"string","instanceId":true},"a":{"type":"integer"},"v":{"vital":true},
    "c":{"cached":true}}})";

std::vector<std::string> Defaults(const TemporaryHost& host) {
  return Database(host).Run(
      "SELECT Name, Identifier, Version, Value, VitalValue, CachedValue FROM DefaultConfig");
}

// Answers operations on statements and keys that contain a text, of one kind, with a status.
class FailingOperation {
 public:
  FailingOperation(DBStore::testing::Operation which, std::string detail) {
    DBStore::testing::SetHook(
        [which, detail](DBStore::testing::Operation operation, std::string_view text) {
          return operation == which && text.find(detail) != std::string_view::npos ? 1 : 0;
        });
  }
  FailingOperation(const FailingOperation&) = delete;
  FailingOperation& operator=(const FailingOperation&) = delete;
  ~FailingOperation() { DBStore::testing::SetHook({}); }
};

TEST(InstallTypes, OneBadFileKeepsAllOthersOut) {
  const TemporaryHost host;
  const TypeFolder folder(host);
  folder.Write("a.json", TypeFile("a", "1.0"));
  folder.Write("b.json", TypeFile("b", "1.0", R"({"type":"object","vital":false})"));
  folder.Write("c.json", TypeFile("c", "1.0", kMixed, R"({"instance":"x","value":{"id":"x"}})"));
  folder.Write("notes.txt", "no type");
  EXPECT_THAT(
      folder.Install(),
      ElementsAre("a.json valid", StartsWith("b.json invalid | /schema/vital "), "c.json valid"));
  EXPECT_THAT(InstalledTypes(), IsEmpty());
  EXPECT_THAT(Defaults(host), IsEmpty());

  folder.Write("b.json", TypeFile("b", "1.0"));
  EXPECT_THAT(folder.Install(),
              ElementsAre("a.json installed", "b.json installed", "c.json installed"));
  EXPECT_THAT(InstalledTypes(), ElementsAre("a 1.0", "b 1.0", "c 1.0"));
}

TEST(InstallTypes, OutcomeTellsWhatBecameOfEachFile) {
  const TemporaryHost host;
  const TypeFolder folder(host);
  folder.Write("a.json", TypeFile("a", "1.9"));
  EXPECT_THAT(folder.Install(), ElementsAre("a.json installed"));
  folder.Write("a.json", " \n" + TypeFile("a", "1.9") + "\n");
  EXPECT_THAT(folder.Install(), ElementsAre("a.json unchanged"));
  folder.Write("a.json", TypeFile("a", "1.9", kMixed));
  EXPECT_THAT(folder.Install(), ElementsAre("a.json upgraded"));
  folder.Write("a.json", TypeFile("a", "1.10", kMixed));
  EXPECT_THAT(folder.Install({.checkOnly = true}), ElementsAre("a.json valid"));
  EXPECT_THAT(InstalledTypes(), ElementsAre("a 1.9"));
  EXPECT_THAT(folder.Install(), ElementsAre("a.json upgraded"));

  folder.Write("a.json", TypeFile("a", "1.9"));
  folder.Write("b.json", TypeFile("b", "1.0"));
  const auto refused = ElementsAre(
      "a.json invalid | /version version 1.9 is older than the installed "
      "version 1.10; going back has to be forced",
      "b.json valid");
  EXPECT_THAT(folder.Install(), refused);
  EXPECT_THAT(folder.Install({.checkOnly = true}), refused);
  EXPECT_THAT(InstalledTypes(), ElementsAre("a 1.10"));
  EXPECT_THAT(folder.Install({.force = true}),
              ElementsAre("a.json downgraded", "b.json installed"));
  EXPECT_THAT(InstalledTypes(), ElementsAre("a 1.9", "b 1.0"));
}

TEST(InstallTypes, ShippedObjectsBecomeTheTypesDefaultRows) {
  const TemporaryHost host;
  const TypeFolder folder(host);
  folder.Write("a.json", TypeFile("a", "1.0", kMixed,
                                  R"({"instance":"y","value":{"id":"y","a":1,"v":2,"c":3}},
                                     {"instance":"x","value":{"id":"x","v":[]}})"));
  folder.Write("b.json",
               TypeFile("b", "7", R"({"type":"object"})", R"({"instance":"","value":{}})"));
  folder.Install();
  EXPECT_THAT(
      Defaults(host),
      ElementsAre(R"(a x 1.0 - {"id":"x","v":[]} -)",
                  R"(a y 1.0 {"id":"y","a":1} {"id":"y","v":2} {"id":"y","c":3})", "b  7 {} - -"));

  folder.Write("a.json",
               TypeFile("a", "1.1", kMixed, R"({"instance":"z","value":{"id":"z","a":1}})"));
  folder.Install();
  EXPECT_THAT(Defaults(host), ElementsAre(R"(a z 1.1 {"id":"z","a":1} - -)", "b  7 {} - -"));
}

TEST(InstallTypes, InstallingAgainPutsLostDefaultsBackAndOtherwiseWritesNothing) {
  const TemporaryHost host;
  const TypeFolder folder(host);
  folder.Write("a.json",
               TypeFile("a", "1", R"({"type":"object"})", R"({"instance":"","value":{}})"));
  folder.Install();
  {
    const FailingOperation noWrites(DBStore::testing::Operation::EXECUTE, "INTO DefaultConfig");
    EXPECT_THAT(folder.Install(), ElementsAre("a.json unchanged"));
  }
  Database(host).Run("DELETE FROM DefaultConfig");
  EXPECT_THAT(folder.Install(), ElementsAre("a.json unchanged"));
  EXPECT_THAT(Defaults(host), ElementsAre("a  1 {} - -"));
}

TEST(InstallTypes, FailureOfTheStoreLeavesTheTypesAndDefaultsAsTheyWere) {
  using DBStore::testing::Operation;
  const TemporaryHost host;
  const TypeFolder folder(host);
  const std::string schema = R"({"type":"object","properties":{"a":{},"m":{}}})";
  folder.Write("a.json", TypeFile("a", "1", schema, R"({"instance":"","value":{"a":1}})"));
  folder.Install();
  Database database(host);
  database.Run(
      "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue) VALUES "
      R"(('tarn','test','a','','1','{"m":1}'))");
  const std::string row = database.Rows();
  folder.Write("a.json",
               TypeFile("a", "2", R"({"type":"object","properties":{"a":{},"m":{"vital":true}}})",
                        R"({"instance":"","value":{"a":2}})"));
  folder.Write("b.json", TypeFile("b", "1", schema, R"({"instance":"","value":{"a":3}})"));
  const std::pair<Operation, const char*> failures[] = {{Operation::GET_CONNECTION, ""},
                                                        {Operation::BEGIN, ""},
                                                        {Operation::PREPARE, "UPDATE Config"},
                                                        {Operation::EXECUTE, "UPDATE Config"},
                                                        {Operation::EXECUTE, "FROM Config"},
                                                        {Operation::PREPARE, "INTO DefaultConfig"},
                                                        {Operation::EXECUTE, "FROM DefaultConfig"},
                                                        {Operation::EXECUTE, "INTO DefaultConfig"},
                                                        {Operation::COMMIT, ""}};
  for (const auto& [operation, detail] : failures) {
    const FailingOperation failing(operation, detail);
    EXPECT_THAT(Raised([&] { folder.Install(); }), StartsWith("CSE 2000 ")) << detail;
    EXPECT_THAT(InstalledTypes(), ElementsAre("a 1"));
    EXPECT_THAT(Defaults(host), ElementsAre(R"(a  1 {"a":1} - -)"));
    EXPECT_EQ(database.Rows(), row);
  }
  EXPECT_THAT(folder.Install(), ElementsAre("a.json upgraded", "b.json installed"));
  EXPECT_NE(database.Rows(), row);
  EXPECT_THAT(Defaults(host), ElementsAre(R"(a  2 {"a":2} - -)", R"(b  1 {"a":3} - -)"));
}

// A reader that does not let go keeps the schemas from being committed, after the rows were.
TEST(InstallTypes, InstallationThatStoppedBetweenTheCommitsIsMendedByAnother) {
  const TemporaryHost host;
  const TypeFolder folder(host);
  Database database(host);
  folder.Write("b.json", TypeFile("b", "1", R"({"type":"object","properties":{"m":{}}})"));
  folder.Install();
  const auto store = ConfigStore::GetStore("");
  const auto object = std::make_shared<ConfigStoreObject>(ConfigStoreObjectId("b", "test", "tarn"));
  object->SetValue("m", 1);
  store->Set(object, EXTERNAL);
  folder.Write("a.json",
               TypeFile("a", "1", R"({"type":"object"})", R"({"instance":"","value":{}})"));
  folder.Write("b.json",
               TypeFile("b", "2", R"({"type":"object","properties":{"m":{"vital":true}}})"));
  sqlite3* reader = nullptr;
  ASSERT_EQ(sqlite3_open(host.Path(HostPaths::kSchemaStore).c_str(), &reader), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(reader, "BEGIN; SELECT * FROM Types", nullptr, nullptr, nullptr),
            SQLITE_OK);
  EXPECT_THAT(Raised([&] { folder.Install(); }), StartsWith("CSE 2000 "));
  EXPECT_EQ(GetLastStoreError().kind, StoreErrorKind::BUSY);
  sqlite3_close(reader);
  EXPECT_THAT(InstalledTypes(), ElementsAre("b 1"));
  EXPECT_THAT(Defaults(host), ElementsAre("a  1 {} - -"));
  EXPECT_EQ(database.Rows(), R"(tarn/test/b/ u=- d=- a=- v={"m":1} c=- ok=1 rev=1)");
  EXPECT_EQ(store->Get(object->GetConfigStoreObjectId())->GetData(), R"({"m":1})");

  object->SetValue("m", 2);
  store->Update(object, EXTERNAL);
  EXPECT_EQ(database.Rows(), R"(tarn/test/b/ u={"m":2} d=- a=- v={"m":1} c=- ok=1 rev=2)");
  EXPECT_THAT(folder.Install(), ElementsAre("a.json installed", "b.json upgraded"));
  EXPECT_EQ(database.Rows(), R"(tarn/test/b/ u=- d=- a=- v={"m":2} c=- ok=1 rev=2)");
}

TEST(InstallTypes, TypeComesFromOneFileOnly) {
  const TemporaryHost host;
  const TypeFolder folder(host);
  folder.Write("a.json", TypeFile("a", "1"));
  folder.Write("b.json", TypeFile("a", "2"));
  EXPECT_THAT(folder.Install(),
              ElementsAre("a.json valid", HasSubstr("/key the type tarn/test/a comes from ")));
}

TEST(InstallTypes, PathThatCannotBeReadIsAnArgumentError) {
  const TemporaryHost host;
  const TypeFolder folder(host);
  std::filesystem::create_directory(folder.Path() + "/folder.json");
  for (const std::string& path :
       {folder.Path() + "/none.json", folder.Path(), std::string("/dev/zero")}) {
    EXPECT_THAT(Raised([&] { CheckTypes({path}); }), StartsWith("IAE 1081 ")) << path;
  }
}

TEST(InstallTypes, ChecksNeedNoStoreAndInstallationsDo) {
  const TemporaryHost host(TemporaryHost::Content::NOTHING);
  const TypeFolder folder(host);
  folder.Write("a.json", TypeFile("a", "1"));
  EXPECT_THAT(TypeFolder::Lines(CheckTypes({folder.Path()})), ElementsAre("a.json valid"));
  EXPECT_THAT(Raised([&] { folder.Install(); }),
              StartsWith("CSE 2000 The schema store cannot be opened"));
  EXPECT_EQ(GetLastStoreError().kind, StoreErrorKind::MISSING);
}

TEST(TypeUpgrades, NameTheStoredObjectsThatWouldNoLongerFit) {
  const TemporaryHost host;
  const TypeFolder folder(host);
  const auto schema = [](const char* limit) {
    return R"({"type":"object","properties":{"id":{"type":"string","instanceId":true},
      "mtu":{"type":"integer","maximum":)" +
           std::string(limit) + R"(},"old":{"type":"string"}}})";
  };
  folder.Write("a.json", TypeFile("link", "1", schema("9000")));
  folder.Install();
  auto store = ConfigStore::GetStore("");
  for (const char* id : {"a", "b"}) {
    auto object =
        std::make_shared<ConfigStoreObject>(ConfigStoreObjectId("link", "test", "tarn", id));
    object->SetValue("mtu", id[0] == 'a' ? 1500 : 9000);
    store->Set(object, EXTERNAL);
  }
  const auto install = [&](bool checkOnly, bool force) {
    InstallOptions options;
    options.checkOnly = checkOnly;
    options.force = force;
    const TypeReport report = InstallTypes({folder.Path()}, options).at(0);
    std::string text = report.outcome == TypeOutcome::INVALID    ? "invalid"
                       : report.outcome == TypeOutcome::UPGRADED ? "upgraded"
                                                                 : "valid";
    for (const ErrorInfo& misfit : report.misfits) {
      text += " | " + misfit.field + ": " + misfit.error;
    }
    return text;
  };
  folder.Write("a.json", TypeFile("link", "2", schema("1500")));
  const std::string misfit =
      " | tarn/test/link/b#/mtu: 1500 is the largest value allowed, found 9000";
  EXPECT_EQ(install(true, false), "invalid" + misfit);
  EXPECT_EQ(install(false, false), "invalid" + misfit);
  EXPECT_EQ(ListTypes().at(0).version, "1") << "refused";
  EXPECT_EQ(install(true, true), "valid" + misfit);
  EXPECT_EQ(install(false, true), "upgraded" + misfit);
  EXPECT_EQ(ListTypes().at(0).version, "2");
  folder.Write("a.json", TypeFile("link", "3", R"({"type":"object","properties":{"mtu":{}}})"));
  EXPECT_THAT(install(true, false),
              HasSubstr("tarn/test/link/a#/: The object cannot have an instance id"));
}

}  // namespace
}  // namespace TarnConfigStore
