#include "tarnconfigstore/key_values.h"

#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/write_by_context.h"
#include "support/store_fixture.h"

#include <functional>

namespace TarnConfigStore {
namespace {

using DBStore::testing::Operation;
using TestSupport::Raised;

class SingleWrites : public TestSupport::StoreFixture {
 protected:
  // A row of s1 with something in every value, unconfirmed, written five times.
  void PutFullRow() {
    database_.Run(
        R"(INSERT OR REPLACE INTO Config (Component, ConfigGroup, Name, Identifier, Version,
           UserValue, DesiredValue, AutoConfValue, VitalValue, CachedValue, Success, CreationTime,
           ModifiedTime, Revision) VALUES ('tarn','test','switch','s1','1','{"name":"s1","mtu":1}',
           '{"name":"s1","mtu":2}','{"name":"s1","mtu":3}','{"name":"s1","serial":"old"}',
           '{"name":"s1","state":{"up":false}}',0,'2020-01-01 00:00:00','2020-01-01 00:00:00',5))");
  }
  std::string Row() {
    const std::string row = database_.Rows();
    const std::string name = "tarn/test/switch/s1 ";
    return row.rfind(name, 0) == 0 ? row.substr(name.size()) : row;
  }
};

TEST_F(SingleWrites, EachKindChangesItsOwnValues) {
  const std::string auto3 = R"(a={"name":"s1","mtu":3} )";
  const std::string vital = R"(v={"name":"s1","serial":"old"} )";
  const std::string cached = R"(c={"name":"s1","state":{"up":false}} )";
  const std::string pending = R"(d={"name":"s1","mtu":2} )";
  const std::string user = R"(u={"name":"s1","mtu":1} )";
  const std::string kept = "ok=0 rev=6";
  const auto mtu = SwitchObject("s1", R"("mtu":9)");
  const auto serial = SwitchObject("s1", R"("serial":"new")");
  const auto up = SwitchObject("s1", R"("state":{"up":true})");
  const auto all = SwitchObject("s1", R"("mtu":9,"serial":"new","state":{"up":true})");
  const std::string mtu9 = R"({"name":"s1","mtu":9} )";
  const std::string newSerial = R"(v={"name":"s1","serial":"new"} )";
  const std::string nowUp = R"(c={"name":"s1","state":{"up":true}} )";
  struct Case {
    const char* name;
    std::function<void()> write;
    std::string row;
    const char* upgrade = "0";
  };
  const Case cases[] = {
      {"Set", [&] { store_->Set(all, EXTERNAL); },
       "u=" + mtu9 + "d=- a=- " + newSerial + nowUp + "ok=1 rev=6"},
      {"SetUserData", [&] { store_->SetUserData(mtu, EXTERNAL); },
       "u=" + mtu9 + "d=- " + auto3 + vital + cached + "ok=1 rev=6"},
      {"SetUserData in an upgrade", [&] { store_->SetUserData(mtu, EXTERNAL); },
       "u=" + mtu9 + "d=- " + auto3 + vital + cached + "ok=0 rev=6", "2"},
      {"SetUserData automatic", [&] { store_->SetUserData(mtu, AUTO_CONFIG); },
       user + pending + "a=" + mtu9 + vital + cached + kept},
      {"SetVitalData", [&] { store_->SetVitalData(serial); },
       user + pending + auto3 + newSerial + cached + kept},
      {"SetCachedData", [&] { store_->SetCachedData(up); },
       user + pending + auto3 + vital + nowUp + kept},
      {"Update user", [&] { store_->Update(mtu, EXTERNAL); },
       "u=" + mtu9 + "d=- " + auto3 + vital + cached + kept},
      {"Update vital", [&] { store_->Update(serial, EXTERNAL); },
       user + "d=- " + auto3 + newSerial + cached + kept},
      {"Update cached", [&] { store_->Update(up, EXTERNAL); },
       user + "d=- " + auto3 + vital + nowUp + kept},
      {"Update in an upgrade", [&] { store_->Update(mtu, EXTERNAL); },
       "u=" + mtu9 + "d=- " + auto3 + vital + cached + "ok=1 rev=6", "1"},
      {"Update automatic", [&] { store_->Update(all, AUTO_CONFIG); },
       user + "d=- a=" + mtu9 + newSerial + nowUp + kept},
      {"Delete", [&] { store_->Delete(switch_); }, ""},
      {"DeleteInstances, one",
       [&] { store_->DeleteInstances(std::make_shared<FilterSpecObject>(switch_)); }, ""},
  };
  for (const Case& each : cases) {
    SetUpgradeContext(each.upgrade);
    PutFullRow();
    EXPECT_EQ(Raised(each.write), "nothing") << each.name;
    EXPECT_EQ(Row(), each.row) << each.name;
    const auto meta =
        database_.Run("SELECT Version, CreationTime, ModifiedTime > '2020-01-02' FROM Config");
    if (!each.row.empty()) {
      EXPECT_EQ(meta, std::vector<std::string>{"2.1 2020-01-01 00:00:00 1"}) << each.name;
    }
  }
}

TEST_F(SingleWrites, TheFirstWriteOfEachKindMakesARow) {
  store_->SetCachedData(SwitchObject("s1", R"("state":{"up":true})"));
  store_->SetVitalData(SwitchObject("s2", R"("serial":"x")"));
  store_->SetUserData(SwitchObject("s3", R"("mtu":1)"), AUTO_CONFIG);
  store_->Update(SwitchObject("s4", R"("mtu":1)"), EXTERNAL);
  EXPECT_EQ(database_.Rows(),
            R"(tarn/test/switch/s1 u=- d=- a=- v=- c={"name":"s1","state":{"up":true}} ok=1 rev=1
tarn/test/switch/s2 u=- d=- a=- v={"name":"s2","serial":"x"} c=- ok=1 rev=1
tarn/test/switch/s3 u=- d=- a={"name":"s3","mtu":1} v=- c=- ok=1 rev=1
tarn/test/switch/s4 u={"name":"s4","mtu":1} d=- a=- v=- c=- ok=1 rev=1)");
}

TEST_F(SingleWrites, UpdatesMergeMembersObjectsAndInstances) {
  Set(switch_, R"({"name":"s1","mtu":1,"serial":"x","ports":[{"id":"a","vlan":1,"speed":5},
      {"id":"b","vlan":2}]})");
  store_->Update(
      SwitchObject("s1", R"("ports":[{"id":"c","mac":"m"},{"id":"b","vlan":3,"speed":6}])"),
      EXTERNAL);
  EXPECT_EQ(
      Row(),
      R"(u={"name":"s1","mtu":1,"ports":[{"id":"a","vlan":1},{"id":"b","vlan":3},{"id":"c"}]} )"
      R"(d=- a=- v={"name":"s1","serial":"x","ports":[{"id":"c","mac":"m"},{"id":"b"}]} )"
      R"(c={"name":"s1","ports":[{"id":"a","speed":5},{"id":"b","speed":6},{"id":"c"}]} ok=1 rev=2)");
  Set(plain_, R"({"name":"a","tags":["x","y"],"nested":{"deep":{"leaf":"l"}}})");
  store_->Update(Object(plain_, R"({"tags":["z"],"nested":{"deep":{}}})"), EXTERNAL);
  EXPECT_EQ(store_->Get(plain_)->GetData(),
            R"({"name":"a","tags":["z"],"nested":{"deep":{"leaf":"l"}}})");
}

TEST_F(SingleWrites, RefusedUpdatesChangeNothing) {
  const auto update = [&](const ConfigStoreObjectId& id, const char* json) {
    return Raised([&] { store_->Update(Object(id, json), EXTERNAL); });
  };
  const std::string refused = "VE 1090 The update does not fit its type.";
  EXPECT_EQ(update(plain_, R"({"port":2})"), refused + " | /") << "what it needs is nowhere";
  Set(plain_, R"({"name":"a","port":1})");
  Set(switch_, R"({"name":"s1","mtu":1})");
  const std::string before = database_.Rows();
  EXPECT_EQ(update(plain_, R"({"port":0,"other":1})"), refused + " | /port | /other");
  EXPECT_EQ(update({"switch", "test", "tarn"}, R"({"mtu":1})"),
            "VE 2000 Non-Singleton object should contain instanceId");
  EXPECT_EQ(update(switch_, R"({"name":"s1","ports":[]})"), "nothing");
  EXPECT_EQ(log_.Count("1 Update called with empty object for comp tarn grp test key switch id s1, "
                       "deletes are not supported"),
            1);
  SetKeyValue("IS_BOOT", "true");
  EXPECT_EQ(update(plain_, R"({"port":2})"),
            "VE 2000 API cannot be invoked with EXTERNAL context during boot");
  SetKeyValue("IS_BOOT", "false");
  EXPECT_EQ(database_.Rows(), before);
  // A row that no longer fits its type is shown whole in the findings.
  database_.Run(R"(UPDATE Config SET UserValue = '{"name":7,"port":99999}' WHERE Name = 'plain')");
  EXPECT_EQ(update(plain_, R"({"port":2})"), refused + " | /name");
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
  const std::string mtu9 = R"({"name":"s1","mtu":9} )";
  const std::string rest = R"(v={"name":"s1","serial":"new"} c=- ok=0 rev=5)";
  EXPECT_EQ(after(UPDATE_USER),
            "u=" + mtu9 + R"(d={"name":"s1","mtu":2} a={"name":"s1","mtu":3} )" + rest);
  EXPECT_EQ(after(UPDATE_DURING_UPGRADE), "u=" + mtu9 + R"(d=- a={"name":"s1","mtu":3} )" + rest);
  EXPECT_EQ(after(UPDATE_AUTOMATIC),
            R"(u={"name":"s1","mtu":1} d={"name":"s1","mtu":2} a=)" + mtu9 + rest);
  SetByContextInternal(object, schema, UPDATE_AUTOMATIC, connection);
  EXPECT_EQ(Row(),
            R"(u={"name":"s1","mtu":1} d=- a=)" + mtu9 + rest.substr(0, rest.size() - 1) + "6");
  store_->Delete(switch_);
  UpdateByContextInternal(object, schema, UPDATE_USER, connection);
  EXPECT_EQ(database_.Rows(), "") << "an update makes no row";
}

TEST_F(SingleWrites, FailedStatementsSayWhichWriteItWas) {
  Set(switch_, R"({"name":"s1","mtu":1})");
  const std::string before = database_.Rows();
  DBStore::testing::SetHook([](Operation operation, std::string_view sql) {
    const bool changes = sql.find("INSERT") != std::string_view::npos ||
                         sql.find("DELETE") != std::string_view::npos;
    return operation == Operation::EXECUTE && changes ? 1 : 0;
  });
  const auto mtu = SwitchObject("s1", R"("mtu":9)");
  const std::string failed = "CSE 2000 ";
  EXPECT_EQ(Raised([&] { store_->SetUserData(mtu, EXTERNAL); }), failed + "Write user data failed");
  EXPECT_EQ(Raised([&] { store_->SetUserData(mtu, AUTO_CONFIG); }),
            failed + "Write config instances failed");
  EXPECT_EQ(Raised([&] { store_->SetVitalData(SwitchObject("s1", R"("serial":"x")")); }),
            failed + "Write config instances failed");
  EXPECT_EQ(Raised([&] { store_->Update(mtu, EXTERNAL); }),
            failed + "Database call to update configuration by context failed for: " +
                switch_.toString());
  EXPECT_EQ(Raised([&] { store_->Delete(switch_); }),
            failed + "Delete failed: " + switch_.toString());
  EXPECT_EQ(
      Raised([&] { store_->DeleteInstances(std::make_shared<FilterSpecObject>(Switch(""))); }),
      failed + "Delete instances failed: " + Switch("").toString());
  DBStore::testing::SetHook({});
  EXPECT_EQ(database_.Rows(), before);
}

}  // namespace
}  // namespace TarnConfigStore
