#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/write_by_context.h"
#include "support/store_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class SingleWrites : public TestSupport::StoreFixture {
 protected:
  // A row of s1 with something in every value, unconfirmed.
  void PutFullRow() {
    PutRow(switch_, Named("s1", R"("mtu":1)"), Named("s1", R"("mtu":2)"), Named("s1", R"("mtu":3)"),
           Named("s1", R"("serial":"old")"), Named("s1", R"("state":{"up":false})"), 0);
  }
  // The only row: "u=1 d=2 a=3 v="old" c={"up":false} ok=0 rev=7", the values without their names.
  std::string Row() {
    std::string row = database_.Lines(
        "SELECT 'u=' || ifnull(UserValue ->> 'mtu', '-'), 'd=' || ifnull(DesiredValue ->> 'mtu', "
        "'-'), "
        "'a=' || ifnull(AutoConfValue ->> 'mtu', '-'), 'v=' || ifnull(VitalValue ->> 'serial', "
        "'-'), "
        "'c=' || ifnull(CachedValue ->> 'state', '-'), 'ok=' || Success, 'rev=' || Revision FROM "
        "Config");
    return row;
  }
};

TEST_F(SingleWrites, EachKindChangesItsOwnValues) {
  const auto mtu = SwitchObject("s1", R"("mtu":9)");
  const auto serial = SwitchObject("s1", R"("serial":"new")");
  const auto up = SwitchObject("s1", R"("state":{"up":true})");
  const auto all = SwitchObject("s1", R"("mtu":9,"serial":"new","state":{"up":true})");
  struct Case {
    const char* name;
    std::function<void()> write;
    const char* row;
    const char* upgrade = "0";
  };
  const Case cases[] = {
      {"Set", [&] { store_->Set(all, EXTERNAL); }, R"(u=9 d=- a=- v=new c={"up":true} ok=1 rev=8)"},
      {"SetUserData", [&] { store_->SetUserData(mtu, EXTERNAL); },
       R"(u=9 d=- a=3 v=old c={"up":false} ok=1 rev=8)"},
      {"SetUserData in an upgrade", [&] { store_->SetUserData(mtu, EXTERNAL); },
       R"(u=9 d=- a=3 v=old c={"up":false} ok=0 rev=8)", "2"},
      {"SetUserData automatic", [&] { store_->SetUserData(mtu, AUTO_CONFIG); },
       R"(u=1 d=2 a=9 v=old c={"up":false} ok=0 rev=8)"},
      {"SetVitalData", [&] { store_->SetVitalData(serial); },
       R"(u=1 d=2 a=3 v=new c={"up":false} ok=0 rev=8)"},
      {"SetCachedData", [&] { store_->SetCachedData(up); },
       R"(u=1 d=2 a=3 v=old c={"up":true} ok=0 rev=8)"},
      {"Update user", [&] { store_->Update(mtu, EXTERNAL); },
       R"(u=9 d=- a=3 v=old c={"up":false} ok=0 rev=8)"},
      {"Update vital", [&] { store_->Update(serial, EXTERNAL); },
       R"(u=1 d=- a=3 v=new c={"up":false} ok=0 rev=8)"},
      {"Update cached", [&] { store_->Update(up, EXTERNAL); },
       R"(u=1 d=- a=3 v=old c={"up":true} ok=0 rev=8)"},
      {"Update in an upgrade", [&] { store_->Update(mtu, EXTERNAL); },
       R"(u=9 d=- a=3 v=old c={"up":false} ok=1 rev=8)", "1"},
      {"Update automatic", [&] { store_->Update(all, AUTO_CONFIG); },
       R"(u=1 d=- a=9 v=new c={"up":true} ok=0 rev=8)"},
      {"Delete", [&] { store_->Delete(switch_); }, ""},
      {"DeleteInstances, one", [&] { store_->DeleteInstances(Filter(switch_)); }, ""},
  };
  for (const Case& each : cases) {
    SetUpgradeContext(each.upgrade);
    PutFullRow();
    EXPECT_EQ(Raised(each.write), "nothing") << each.name;
    EXPECT_EQ(Row(), each.row) << each.name;
    EXPECT_EQ(
        database_.Lines("SELECT Version, CreationTime, ModifiedTime > '2020-01-02' FROM Config"),
        *each.row == '\0' ? "" : "2.1 2020-01-01 00:00:00 1")
        << each.name;
  }
  EXPECT_EQ(Raised([&] { store_->Update(SwitchObject("s4", R"("mtu":1)"), EXTERNAL); }), "nothing");
  EXPECT_EQ(Row(), "u=1 d=- a=- v=- c=- ok=1 rev=1") << "the first write makes the row";
}

TEST_F(SingleWrites, UpdatesMergeMembersObjectsAndInstances) {
  Set(switch_, R"({"name":"s1","mtu":1,"serial":"x","ports":[{"id":"a","vlan":1,"speed":5},
      {"id":"b","vlan":2}]})");
  store_->Update(
      SwitchObject("s1", R"("ports":[{"id":"c","mac":"m"},{"id":"b","vlan":3,"speed":6}])"),
      EXTERNAL);
  EXPECT_EQ(
      database_.Rows(),
      R"(tarn/test/switch/s1 u={"name":"s1","mtu":1,"ports":[{"id":"a","vlan":1},{"id":"b","vlan":3},{"id":"c"}]} )"
      R"(d=- a=- v={"name":"s1","serial":"x","ports":[{"id":"c","mac":"m"},{"id":"b"}]} )"
      R"(c={"name":"s1","ports":[{"id":"a","speed":5},{"id":"b","speed":6},{"id":"c"}]} ok=1 rev=2)");
  Set(plain_, R"({"name":"a","tags":["x","y"],"nested":{"deep":{"leaf":"l"}}})");
  store_->Update(Object(plain_, R"({"tags":["z"],"nested":{"deep":{}}})"), EXTERNAL);
  EXPECT_EQ(Data(store_->Get(plain_)),
            R"({"name":"a","tags":["z"],"nested":{"deep":{"leaf":"l"}}})");
}

TEST_F(SingleWrites, WhatAnUpdateMakesOfARowHasToFitItsType) {
  const auto update = [&](const char* json) {
    return Raised([&] { store_->Update(Object(plain_, json), EXTERNAL); });
  };
  const std::string refused = "VE 1090 The update does not fit its type. | /";
  EXPECT_EQ(update(R"({"port":2})"), refused) << "what it needs is nowhere";
  EXPECT_EQ(update(R"({"port":0,"other":1})"), refused + "port | /other");
  // A row that no longer fits its type is shown whole in the findings.
  PutRow(plain_, R"({"name":7,"port":99999})", "", "", "", "", 1);
  const std::string before = database_.Rows();
  EXPECT_EQ(update(R"({"port":2})"), refused + "name");
  EXPECT_EQ(database_.Rows(), before);
}

TEST_F(SingleWrites, ContextUpdatesDoNotCountAsWrites) {
  const SchemaHandle schema = FindSchema(switch_);
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  const auto object = SwitchObject("s1", R"("mtu":9,"serial":"new")");
  const auto after = [&](UPDATE_CONTEXT context) {
    PutFullRow();
    UpdateByContextInternal(object, schema, context, connection);
    return Row();
  };
  EXPECT_EQ(after(UPDATE_USER), "u=9 d=2 a=3 v=new c=- ok=0 rev=7");
  EXPECT_EQ(after(UPDATE_DURING_UPGRADE), "u=9 d=- a=3 v=new c=- ok=0 rev=7");
  EXPECT_EQ(after(UPDATE_AUTOMATIC), "u=1 d=2 a=9 v=new c=- ok=0 rev=7");
  SetByContextInternal(object, schema, UPDATE_AUTOMATIC, connection);
  EXPECT_EQ(Row(), "u=1 d=- a=9 v=new c=- ok=0 rev=8");
  store_->Delete(switch_);
  UpdateByContextInternal(object, schema, UPDATE_USER, connection);
  EXPECT_EQ(database_.Rows(), "") << "an update makes no row";
}

TEST_F(SingleWrites, FailedStatementsSayWhichWriteItWas) {
  Set(switch_, R"({"name":"s1","mtu":1})");
  const std::string before = database_.Rows();
  DBStore::testing::SetHook([](Operation operation, std::string_view sql) {
    const bool changes = sql.find("INSERT") != sql.npos || sql.find("DELETE") != sql.npos;
    return operation == Operation::EXECUTE && changes ? 5 : 0;
  });
  const auto mtu = SwitchObject("s1", R"("mtu":9)");
  const auto serial = SwitchObject("s1", R"("serial":"x")");
  ExpectRaised(
      {{"CSE 2000 WriteComplete failed", [&] { store_->Set(mtu, EXTERNAL); }},
       {"CSE 2000 Write user data failed", [&] { store_->SetUserData(mtu, EXTERNAL); }},
       {"CSE 2000 Write config instances failed", [&] { store_->SetUserData(mtu, AUTO_CONFIG); }},
       {"CSE 2000 Write config instances failed", [&] { store_->SetVitalData(serial); }},
       {"CSE 2000 Database call to update configuration by context failed for: " +
            switch_.toString(),
        [&] { store_->Update(mtu, EXTERNAL); }},
       {"CSE 2000 Delete failed: " + switch_.toString(), [&] { store_->Delete(switch_); }},
       {"CSE 2000 Delete instances failed: " + Switch("").toString(),
        [&] { store_->DeleteInstances(Filter(Switch(""))); }}});
  DBStore::testing::SetHook({});
  EXPECT_EQ(database_.Rows(), before);
}

}  // namespace
}  // namespace TarnConfigStore
