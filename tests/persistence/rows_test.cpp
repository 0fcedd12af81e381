#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/key_values.h"
#include "tarnconfigstore/listing.h"

#include "objects/schema_lookup.h"
#include "persistence/boot_flags.h"
#include "persistence/connection.h"
#include "persistence/read_current.h"
#include "persistence/write_config.h"
#include "support/store_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class Rows : public TestSupport::StoreFixture {
 protected:
  DBStore::ConnectionHandle connection_ = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  SchemaHandle plainSchema_ = FindSchema(plain_);
  SchemaHandle switchSchema_ = FindSchema(switch_);
};

TEST_F(Rows, MapsLeaveOutNullsAndKeepEmptyTexts) {
  RowMap row;
  const auto collect = [&](const char* sql) {
    DBStore::ExecuteStmt(connection_, DBStore::internal::Prepare(connection_, sql, 0),
                         CollectRowMap, &row, DBStore::kWaitLimit);
  };
  collect("SELECT 'x' AS A, NULL AS B, '' AS C");
  EXPECT_EQ(row.Find("A"), "x");
  EXPECT_EQ(row.Find("B"), std::nullopt);
  EXPECT_EQ(row.Find("C"), "");
  collect("SELECT 'longer' AS A, NULL AS B, NULL AS C");
  EXPECT_EQ(row.Find("A"), "longer");
  EXPECT_EQ(row.Find("C"), "") << "NULL overwrites nothing";
}

TEST_F(Rows, ReadersChooseTheUsersColumn) {
  const auto read = [&](USERDATA_CONTEXT context) {
    return Data(GetConfigByBootAndContext(plain_, plainSchema_, context, connection_));
  };
  const auto current = [&] {
    return Data(GetCurrentConfigInternal(plain_, connection_, plainSchema_));
  };
  PutRow(plain_, R"({"u":1})", R"({"d":1})", R"({"a":1})", R"({"v":1})", R"({"c":1})", 1);
  EXPECT_EQ(read(AUTO_CONFIG), R"({"a":1})");
  EXPECT_EQ(read(EXTERNAL), R"({"a":1,"c":1,"v":1,"u":1})");
  EXPECT_EQ(current(), R"({"a":1,"u":1})");
  SetUpgradeContext("1");
  EXPECT_EQ(read(EXTERNAL), R"({"a":1,"c":1,"v":1,"d":1})");
  EXPECT_EQ(current(), R"({"a":1,"u":1})") << "pending values are not current yet";
  SetUpgradeContext("0");
  PutRow(plain_, "[1]", "[2]", "", "", "", 0);
  EXPECT_EQ(current() + read(EXTERNAL), "nonenone") << "the user's value is not confirmed";
}

TEST_F(Rows, CarryTheirMetadataIntoTheObject) {
  PutRow(plain_, R"({"name":"x"})", "", "", "", "", 1);
  database_.Run("UPDATE Config SET Version = '0.9', ModifiedTime = '2021-02-03 04:05:06'");
  const ObjectHandle object = store_->Get(plain_);
  EXPECT_EQ(
      object->GetVersion() + "|" + object->GetCreationTime() + "|" + object->GetModifiedTime(),
      "0.9|2020-01-01 00:00:00|2021-02-03 04:05:06");
  EXPECT_EQ(object->GetRevision(), 7);
  database_.Run("UPDATE Config SET Revision = 'many'");
  EXPECT_EQ(store_->Get(plain_)->GetRevision(), 0);
  database_.Run("UPDATE Config SET UserValue = '{'");
  EXPECT_EQ(Raised([&] { store_->Get(plain_); }), "IAE 1080 The text is not valid JSON.");
  EXPECT_EQ(log_.Count("0 UserValue of comp tarn grp test key plain is not valid JSON at byte 1: "
                       "Missing a name for object member."),
            1);
}

TEST_F(Rows, ThatAreNewTakeTheHistoryTheyAreGiven) {
  SetInstancesInternal(List(SwitchObject("s2"), SwitchObject("s3")), EXTERNAL,
                       TarnSchemaStore::SchemaStore::GetCache(), connection_,
                       ExistingInstances{{"s3", {4, "2019-01-01 00:00:00"}}});
  EXPECT_EQ(database_.Lines("SELECT Identifier, Revision, iif(CreationTime > DATETIME('now', '-1 "
                            "minute'), 'new', CreationTime) FROM Config"),
            "s2 1 new\ns3 5 2019-01-01 00:00:00");
}

TEST_F(Rows, InstancesAreReadEachFromItsOwnRow) {
  PutRow(Switch("a"), R"({"mtu":1})", "", R"({"x":1})", "", "", 1);
  PutRow(Switch("b"), R"({"mtu":2})", R"({"mtu":3})", "", R"({"serial":"x"})", "", 1);
  PutRow(Switch("emptied"), "", "", "", "", "", 1);
  const auto read = [&](const Id& id, const char* conditions = "{}") {
    return Data(store_->GetInstances(Filter(id, conditions)));
  };
  EXPECT_EQ(read(Switch("")), R"(a{"x":1,"mtu":1} b{"serial":"x","mtu":2} )");
  EXPECT_EQ(read(Switch(""), R"({"mtu":2})"), R"(b{"serial":"x","mtu":2} )");
  EXPECT_EQ(read(Switch("a")) + read(Switch("a"), R"({"mtu":2})"), R"(a{"x":1,"mtu":1} )");
  const auto current = [&](const Id& id) {
    return Data(GetCurrentConfigInstancesInternal(id, connection_, switchSchema_));
  };
  EXPECT_EQ(current(Switch("")), R"(a{"x":1,"mtu":1} b{"mtu":2} )");
  EXPECT_EQ(current(Switch("b")), R"(b{"mtu":2} )");
  SetUpgradeContext("1");
  EXPECT_EQ(read(Switch(""), R"({"mtu":3})"), R"(b{"serial":"x","mtu":3} )");
}

TEST_F(Rows, OfAComponentOrOfTheWholeStore) {
  PutRow(plain_, "{}", "[2]", "", "", "", 0);
  PutRow(Switch("a"), R"({"mtu":1})", "", "", "", "", 1);
  PutRow({"gone", "other", "tarn"}, "{}", "", "", "", "", 1);
  EXPECT_EQ(Data(GetBulkConfigInternal("tarn", "test")), R"(a{"mtu":1} )");
  EXPECT_EQ(Data(GetBulkConfigInternal("tarn", "")), R"(a{"mtu":1} )");
  EXPECT_EQ(log_.Count("1 Skipped, its type is not installed: comp tarn grp other key gone"), 1);
  EXPECT_EQ(GetUserConfigContents(connection_).size(), 2U) << "of confirmed rows";
  const RowMapList all = GetStoreContentsInternalST("DesiredValue", connection_, true);
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0]->Find("Value"), "[2]");
  ConfigTypeMap types;
  UpdateConfigTypeMap(types, SwitchObject("s1"));
  EXPECT_TRUE(types.at("switch").at("s1"));
}

TEST_F(Rows, ListingSkipsRowsWithoutValues) {
  PutRow(plain_, "", "", "", "", "", 1);
  EXPECT_TRUE(ListStored(Id("", "", "")).empty());
  PutRow(plain_, "", "{}", "", "{}", "", 0);
  for (const Id& prefix : {Id("", "", ""), Id("", "", "tarn"), Id("", "test", "tarn"), plain_}) {
    const std::vector<StoredObject> stored = ListStored(prefix);
    ASSERT_EQ(stored.size(), 1U) << prefix.toString();
    const StoredObject& one = stored[0];
    EXPECT_TRUE(one.id == plain_ && one.revision == 7 && !one.confirmed && one.hasPending &&
                one.hasVital && !one.hasUser && !one.hasAutomatic && !one.hasCached);
  }
  EXPECT_TRUE(ListStored(Id("", "tes", "tarn")).empty());
}

TEST_F(Rows, BootIsExactlyTrue) {
  EXPECT_EQ(GetKeyValue("IS_BOOT"), "");
  for (const char* value : {"TRUE", "1", "", "true ", "true"}) {
    SetKeyValue("IS_BOOT", value);
    EXPECT_EQ(IsBoot(), value == std::string("true")) << value;
    EXPECT_EQ(GetKeyValue("IS_BOOT"), value);
  }
}

TEST_F(Rows, FailuresOfTheDatabaseNameWhatFailed) {
  Fail(Operation::EXECUTE);
  ExpectRaised({{"CSE 2000 Get failed: comp tarn grp test key plain", [&] { store_->Get(plain_); }},
                {"CSE 2000 Read Instances failed for: comp tarn grp test key switch",
                 [&] { store_->GetInstances(Filter(Switch(""))); }},
                {"CSE 2000 GetInstanceIds failed", [&] { store_->GetInstanceIds(switch_); }},
                {"CSE 2000 GetRevision", [&] { store_->GetInstancesRevision(switch_); }},
                {"CSE 2000 Get store rows failed.", [&] { GetUserConfigContents(connection_); }},
                {"CSE 2000 Get all keys failed", [] { GetBulkConfigInternal("tarn", ""); }}});
  Fail(Operation::EXECUTE, 5);
  EXPECT_EQ(Raised([&] { store_->Get(plain_); }), "nothing")
      << "readers take every status but 1 for an answer";
  Fail(Operation::READ_KEY_VALUE, 5);
  ExpectRaised({{"CSE 2000 Failed to read value from database.", [] { IsBoot(); }},
                {"CSE 2000 Failed to read KV table for key: K", [] { GetKeyValue("K"); }}});
  Fail(Operation::WRITE_KEY_VALUE, 5);
  ExpectRaised({{"CSE 2000 Failed to write KV table for key: K", [] { SetKeyValue("K", "v"); }}});
  Fail(Operation::GET_CONNECTION, 14);
  ExpectRaised(
      {{"CSE 1002 Cannot connect to the store database "
        "/etc/kestrel/configstore/current-store-1.",
        [] { GetKeyValue("K"); }},
       {"CSE 2000 Failed to connect", [] { GetDBStore(DBStore::Type::CURRENT_STORE, true); }},
       {"CSE 2000 Failed to read value from database.", [] { IsBoot(); }}});
  EXPECT_EQ(GetDBStore(DBStore::Type::CURRENT_STORE, false), nullptr);
}

}  // namespace
}  // namespace TarnConfigStore
