#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/key_values.h"
#include "tarnconfigstore/listing.h"

#include "platform/db_testing.h"
#include "platform/host_paths.h"

#include "objects/config_store_object_impl.h"
#include "objects/schema_lookup.h"
#include "persistence/boot_flags.h"
#include "persistence/connection.h"
#include "persistence/read_current.h"
#include "persistence/write_config.h"
#include "support/captured_log.h"
#include "support/database.h"
#include "support/raised.h"
#include "support/test_types.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class Rows : public ::testing::Test {
 protected:
  Rows() : database_(host_) {
    InstallType(host_, TestSupport::kPlainType);
    InstallType(host_, TestSupport::kSwitchType);
    connection_ = GetDBStore(DBStore::Type::CURRENT_STORE, true);
    plainSchema_ = FindSchema(plain_);
    switchSchema_ = FindSchema(switch_);
  }
  ~Rows() override { DBStore::testing::SetHook({}); }

  void SetUpgradeContext(const char* text) {
    const std::filesystem::path file = host_.Path(HostPaths::kUpgradeContext);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::trunc) << text;
  }
  // A row of the plain type; null pointers are NULL.
  void PutRow(const char* user, const char* desired, const char* automatic, const char* vital,
              const char* cached, int success) {
    const auto text = [](const char* value) {
      return value == nullptr ? std::string("NULL") : "'" + std::string(value) + "'";
    };
    database_.Run(
        "INSERT OR REPLACE INTO Config (Component, ConfigGroup, Name, Identifier, Version, "
        "UserValue, "
        "DesiredValue, AutoConfValue, VitalValue, CachedValue, Success, CreationTime, Revision) "
        "VALUES ("
        "'tarn','test','plain','','1.0'," +
        text(user) + "," + text(desired) + "," + text(automatic) + "," + text(vital) + "," +
        text(cached) + "," + std::to_string(success) + ",'2020-01-01 00:00:00',7)");
  }
  static std::string Data(const ObjectHandle& object) {
    return object ? object->GetData() : "none";
  }

  TestSupport::TemporaryHost host_;
  TestSupport::Database database_;
  TestSupport::CapturedLog log_;
  ConfigStoreObjectId plain_{"plain", "test", "tarn"};
  ConfigStoreObjectId switch_{"switch", "test", "tarn", "s1"};
  DBStore::ConnectionHandle connection_;
  SchemaHandle plainSchema_;
  SchemaHandle switchSchema_;
};

TEST_F(Rows, MapsLeaveOutNullsAndKeepEmptyTexts) {
  char name[] = "A", other[] = "B", last[] = "C", value[] = "x", empty[] = "", later[] = "longer";
  char* names[] = {name, other, last};
  char* values[] = {value, nullptr, empty};
  RowMap row;
  EXPECT_EQ(CollectRowMap(&row, 3, values, names), 0);
  EXPECT_EQ(row.Find("A"), "x");
  EXPECT_EQ(row.Find("B"), std::nullopt);
  EXPECT_EQ(row.Find("C"), "");
  char* second[] = {later, nullptr, nullptr};
  CollectRowMap(&row, 3, second, names);
  EXPECT_EQ(row.Find("A"), "longer");
  EXPECT_EQ(row.Find("C"), "") << "NULL overwrites nothing";
}

TEST_F(Rows, ReadersChooseTheUsersColumn) {
  struct Case {
    const char* user;
    const char* desired;
    int success;
    const char* upgrade;
    const char* internal;   // GetInternal
    const char* confirmed;  // GetCurrentConfigInternal
  };
  const Case cases[] = {
      {"[1]", "[2]", 1, "0", "[1]", "[1]"},       {"[1]", "[2]", 0, "0", "none", "none"},
      {"[1]", "[2]", 1, "2", "[2]", "[1]"},       {"[1]", nullptr, 1, "2", "[1]", "[1]"},
      {"[1]", nullptr, 0, "1", "[1]", "none"},    {nullptr, "[2]", 1, "0", "none", "none"},
      {nullptr, nullptr, 1, "0", "none", "none"},
  };
  for (const Case& each : cases) {
    SetUpgradeContext(each.upgrade);
    PutRow(each.user, each.desired, nullptr, nullptr, nullptr, each.success);
    const std::string row = database_.Rows() + " upgrade=" + each.upgrade;
    EXPECT_EQ(Data(GetInternal(plain_, connection_, plainSchema_)), each.internal) << row;
    EXPECT_EQ(Data(GetCurrentConfigInternal(plain_, connection_, plainSchema_)), each.confirmed)
        << row;
  }
}

TEST_F(Rows, BootAndContextDecideWhoSeesPendingValues) {
  PutRow(R"({"u":1})", R"({"d":1})", R"({"a":1})", R"({"v":1})", R"({"c":1})", 1);
  const auto read = [&](USERDATA_CONTEXT context) {
    return Data(GetConfigByBootAndContext(plain_, plainSchema_, context, connection_));
  };
  EXPECT_EQ(read(AUTO_CONFIG), R"({"a":1})");
  EXPECT_EQ(read(EXTERNAL), R"({"a":1,"c":1,"v":1,"u":1})");
  SetUpgradeContext("1");
  EXPECT_EQ(read(EXTERNAL), R"({"a":1,"c":1,"v":1,"d":1})");
}

TEST_F(Rows, CarryTheirMetadataIntoTheObject) {
  PutRow(R"({"name":"x"})", nullptr, nullptr, nullptr, nullptr, 1);
  database_.Run("UPDATE Config SET Version = '0.9', ModifiedTime = '2021-02-03 04:05:06'");
  const ObjectHandle object = GetInternal(plain_, connection_, plainSchema_);
  EXPECT_EQ(
      object->GetVersion() + "|" + object->GetCreationTime() + "|" + object->GetModifiedTime(),
      "0.9|2020-01-01 00:00:00|2021-02-03 04:05:06");
  EXPECT_EQ(object->GetRevision(), 7);
  database_.Run("UPDATE Config SET Revision = 'many'");
  EXPECT_EQ(GetInternal(plain_, connection_, plainSchema_)->GetRevision(), 0);
  database_.Run("UPDATE Config SET UserValue = '{'");
  EXPECT_EQ(Raised([&] { GetInternal(plain_, connection_, plainSchema_); }),
            "IAE 1080 The text is not valid JSON.");
  EXPECT_EQ(
      log_.Count(
          "0 UserValue of comp tarn grp test key plain is not valid JSON at byte 1: Missing a "
          "name for object member."),
      1);
}

TEST_F(Rows, CompleteWritesReplaceTheRowAndCountRevisions) {
  const auto write = [&](const char* json, USERDATA_CONTEXT context) {
    auto object = std::make_shared<ConfigStoreObject>(switch_);
    object->SetData(json);
    SetInternal(object, TarnSchemaStore::SchemaStore::GetCache(), context, connection_);
    return database_.Rows();
  };
  EXPECT_EQ(
      write(R"({"name":"s1","mtu":1,"serial":"x"})", EXTERNAL),
      R"(tarn/test/switch/s1 u={"name":"s1","mtu":1} d=- a=- v={"name":"s1","serial":"x"} c=- ok=1 rev=1)");
  database_.Run(
      "UPDATE Config SET CreationTime = '2020-01-01 00:00:00', DesiredValue = '{}', Success = 0");
  EXPECT_EQ(write(R"({"name":"s1","mtu":2})", AUTO_CONFIG),
            R"(tarn/test/switch/s1 u=- d=- a={"name":"s1","mtu":2} v=- c=- ok=1 rev=2)");
  EXPECT_EQ(database_.Run("SELECT CreationTime, Version FROM Config").at(0),
            "2020-01-01 00:00:00 2.1");

  auto fresh =
      std::make_shared<ConfigStoreObject>(ConfigStoreObjectId("switch", "test", "tarn", "s2"));
  auto known =
      std::make_shared<ConfigStoreObject>(ConfigStoreObjectId("switch", "test", "tarn", "s3"));
  SetInstancesInternal({fresh, known}, EXTERNAL, TarnSchemaStore::SchemaStore::GetCache(),
                       connection_, ExistingInstances{{"s3", {4, "2019-01-01 00:00:00"}}});
  EXPECT_EQ(
      database_
          .Run("SELECT Revision, CreationTime = DATETIME(CURRENT_TIMESTAMP) OR CreationTime > "
               "DATETIME('now', '-1 minute') FROM Config WHERE Identifier = 's2'")
          .at(0),
      "1 1");
  EXPECT_EQ(
      database_.Run("SELECT Revision, CreationTime FROM Config WHERE Identifier = 's3'").at(0),
      "5 2019-01-01 00:00:00");
}

TEST_F(Rows, InstancesAreReadEachFromItsOwnRow) {
  for (const char* id : {"b", "a"}) {
    auto object =
        std::make_shared<ConfigStoreObject>(ConfigStoreObjectId("switch", "test", "tarn", id));
    object->SetValue("mtu", id[0] == 'a' ? 1 : 2);
    SetInternal(object, TarnSchemaStore::SchemaStore::GetCache(), EXTERNAL, connection_);
  }
  database_.Run(
      "UPDATE Config SET AutoConfValue = '{\"name\":\"a\",\"x\":1}' WHERE Identifier = 'a'");
  database_.Run(
      "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version) VALUES "
      "('tarn','test','switch','emptied','1')");
  const auto render = [](const std::vector<ObjectHandle>& objects) {
    std::string text;
    for (const ObjectHandle& object : objects) {
      text += object->GetConfigStoreObjectId().instanceId + object->GetData() + " ";
    }
    return text;
  };
  auto filter = std::make_shared<FilterSpecObject>(ConfigStoreObjectId("switch", "test", "tarn"));
  EXPECT_EQ(render(GetConfigInstancesInternal(filter, connection_, switchSchema_)),
            R"(a{"name":"a","x":1,"mtu":1} b{"name":"b","mtu":2} )");
  filter->SetValue("mtu", 2);
  EXPECT_EQ(render(GetConfigInstancesInternal(filter, connection_, switchSchema_)),
            R"(b{"name":"b","mtu":2} )");
  const auto one =
      std::make_shared<FilterSpecObject>(ConfigStoreObjectId("switch", "test", "tarn", "a"));
  EXPECT_EQ(render(GetConfigInstancesInternal(one, connection_, switchSchema_)),
            R"(a{"name":"a","x":1,"mtu":1} )");
  EXPECT_EQ(render(GetCurrentConfigInstancesInternal(ConfigStoreObjectId("switch", "test", "tarn"),
                                                     connection_, switchSchema_))
                .substr(0, 2),
            "a{");
  EXPECT_EQ(GetBulkConfigInternal("tarn", "").size(), 2U);
  EXPECT_EQ(GetBulkConfigInternal("tarn", "other").size(), 0U);
  database_.Run(
      "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue) VALUES "
      "('tarn','test','gone','','1','{}')");
  EXPECT_EQ(GetBulkConfigInternal("tarn", "test").size(), 2U);
  EXPECT_EQ(log_.Count("1 Skipped, its type is not installed: comp tarn grp test key gone"), 1);
}

TEST_F(Rows, ContentsAreTheConfirmedValuesUnlessAskedOtherwise) {
  PutRow("{}", "[2]", nullptr, nullptr, nullptr, 0);
  EXPECT_TRUE(GetUserConfigContents(connection_).empty());
  const RowMapList all = GetStoreContentsInternalST("DesiredValue", connection_, true);
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0]->Find("Value"), "[2]");
  ConfigTypeMap types;
  UpdateConfigTypeMap(types, std::make_shared<ConfigStoreObject>(switch_));
  EXPECT_TRUE(types.at("switch").at("s1"));
}

TEST_F(Rows, ListingSkipsRowsWithoutValues) {
  PutRow(nullptr, nullptr, nullptr, nullptr, nullptr, 1);
  EXPECT_TRUE(ListStored(ConfigStoreObjectId("", "", "")).empty());
  PutRow(nullptr, "{}", nullptr, "{}", nullptr, 0);
  for (const auto& prefix : {ConfigStoreObjectId("", "", ""), ConfigStoreObjectId("", "", "tarn"),
                             ConfigStoreObjectId("", "test", "tarn"), plain_}) {
    const std::vector<StoredObject> stored = ListStored(prefix);
    ASSERT_EQ(stored.size(), 1U) << prefix.toString();
    const StoredObject& one = stored[0];
    EXPECT_TRUE(one.id == plain_ && one.revision == 7 && !one.confirmed && one.hasPending &&
                one.hasVital && !one.hasUser && !one.hasAutomatic && !one.hasCached);
  }
  EXPECT_TRUE(ListStored(ConfigStoreObjectId("", "tes", "tarn")).empty());
}

TEST_F(Rows, KeyValuesAndTheBootFlag) {
  EXPECT_EQ(GetKeyValue("IS_BOOT"), "");
  EXPECT_FALSE(IsBoot());
  for (const char* value : {"TRUE", "1", "", "true "}) {
    SetKeyValue("IS_BOOT", value);
    EXPECT_FALSE(IsBoot()) << value;
  }
  SetKeyValue("IS_BOOT", "true");
  EXPECT_TRUE(IsBoot());
  EXPECT_TRUE(IsBootInternal(connection_));
  EXPECT_EQ(GetKeyValue("IS_BOOT"), "true");
}

TEST_F(Rows, FailuresOfTheDatabaseNameWhatFailed) {
  using DBStore::testing::Operation;
  const auto fail = [](Operation operation, int status) {
    DBStore::testing::SetHook(
        [=](Operation asked, std::string_view) { return asked == operation ? status : 0; });
  };
  const auto filter =
      std::make_shared<FilterSpecObject>(ConfigStoreObjectId("switch", "test", "tarn"));
  fail(Operation::EXECUTE, 1);
  EXPECT_EQ(Raised([&] { GetInternal(plain_, connection_, plainSchema_); }),
            "CSE 2000 Get failed: comp tarn grp test key plain");
  EXPECT_EQ(Raised([&] { GetConfigInstancesInternal(filter, connection_, switchSchema_); }),
            "CSE 2000 Read Instances failed for: comp tarn grp test key switch");
  EXPECT_EQ(Raised([&] { GetUserConfigContents(connection_); }), "CSE 2000 Get store rows failed.");
  EXPECT_EQ(Raised([&] { GetBulkConfigInternal("tarn", ""); }), "CSE 2000 Get all keys failed");
  const auto object = std::make_shared<ConfigStoreObject>(switch_);
  const auto cache = TarnSchemaStore::SchemaStore::GetCache();
  for (const int status : {1, 5}) {
    fail(Operation::EXECUTE, status);
    EXPECT_EQ(Raised([&] { SetInternal(object, cache, EXTERNAL, connection_); }),
              "CSE 2000 WriteComplete failed");
  }
  EXPECT_EQ(Raised([&] { GetInternal(plain_, connection_, plainSchema_); }), "nothing")
      << "readers take every status but 1 for an answer";
  fail(Operation::READ_KEY_VALUE, 5);
  EXPECT_EQ(Raised([] { IsBoot(); }), "CSE 2000 Failed to read value from database.");
  EXPECT_EQ(Raised([] { GetKeyValue("K"); }), "CSE 2000 Failed to read KV table for key: K");
  fail(Operation::WRITE_KEY_VALUE, 5);
  EXPECT_EQ(Raised([] { SetKeyValue("K", "v"); }), "CSE 2000 Failed to write KV table for key: K");
  fail(Operation::GET_CONNECTION, 14);
  EXPECT_EQ(
      Raised([] { GetKeyValue("K"); }),
      "CSE 1002 Cannot connect to the store database /etc/kestrel/configstore/current-store-1.");
  EXPECT_EQ(Raised([] { GetDBStore(DBStore::Type::CURRENT_STORE, true); }),
            "CSE 2000 Failed to connect to database");
  EXPECT_EQ(GetDBStore(DBStore::Type::CURRENT_STORE, false), nullptr);
  EXPECT_EQ(Raised([] { IsBoot(); }), "CSE 2000 Failed to read value from database.");
}

}  // namespace
}  // namespace TarnConfigStore
