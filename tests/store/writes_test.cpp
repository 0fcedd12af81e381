#include "tarnconfigstore/next_boot_store.h"

#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/write_by_context.h"
#include "store/under_transaction.h"
#include "support/store_fixture.h"

#include <cstring>
#include <stdexcept>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class ConfigWrites : public TestSupport::StoreFixture {
 protected:
  // Something in every value, unconfirmed.
  void PutFullRow(const char* instance = "s1") {
    PutRow(Switch(instance), Named(instance, R"("mtu":1)"), Named(instance, R"("mtu":2)"),
           Named(instance, R"("mtu":3)"), Named(instance, R"("serial":"old")"),
           Named(instance, R"("state":{"up":false})"), 0);
  }
  // The only row: "u=1 d=2 a=3 v="old" c={"up":false} ok=0 rev=7", the values without their names.
  std::string Row() {
    return database_.Lines(R"(SELECT 'u=' || ifnull(UserValue ->> 'mtu', '-'),
        'd=' || ifnull(DesiredValue ->> 'mtu', '-'), 'a=' || ifnull(AutoConfValue ->> 'mtu', '-'),
        'v=' || ifnull(VitalValue ->> 'serial', '-'), 'c=' || ifnull(CachedValue ->> 'state', '-'),
        'ok=' || Success, 'rev=' || Revision FROM Config)");
  }
  const ObjectHandle mtu_ = SwitchObject("s1", R"("mtu":9)");
  const ObjectHandle serial_ = SwitchObject("s1", R"("serial":"new")");
};

TEST_F(ConfigWrites, EachKindChangesItsOwnValues) {
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
      {"Set automatic", [&] { store_->Set(all, AUTO_CONFIG); },
       R"(u=- d=- a=9 v=new c={"up":true} ok=1 rev=8)"},
      {"SetUserData", [&] { store_->SetUserData(mtu_, EXTERNAL); },
       R"(u=9 d=- a=3 v=old c={"up":false} ok=1 rev=8)"},
      {"SetUserData in an upgrade", [&] { store_->SetUserData(mtu_, EXTERNAL); },
       R"(u=9 d=- a=3 v=old c={"up":false} ok=0 rev=8)", "2"},
      {"SetUserData automatic", [&] { store_->SetUserData(mtu_, AUTO_CONFIG); },
       R"(u=1 d=2 a=9 v=old c={"up":false} ok=0 rev=8)"},
      {"SetVitalData", [&] { store_->SetVitalData(serial_); },
       R"(u=1 d=2 a=3 v=new c={"up":false} ok=0 rev=8)"},
      {"SetCachedData", [&] { store_->SetCachedData(up); },
       R"(u=1 d=2 a=3 v=old c={"up":true} ok=0 rev=8)"},
      {"Update user", [&] { store_->Update(mtu_, EXTERNAL); },
       R"(u=9 d=- a=3 v=old c={"up":false} ok=0 rev=8)"},
      {"Update vital", [&] { store_->Update(serial_, EXTERNAL); },
       R"(u=1 d=- a=3 v=new c={"up":false} ok=0 rev=8)"},
      {"Update cached", [&] { store_->Update(up, EXTERNAL); },
       R"(u=1 d=- a=3 v=old c={"up":true} ok=0 rev=8)"},
      {"Update in an upgrade", [&] { store_->Update(mtu_, EXTERNAL); },
       R"(u=9 d=- a=3 v=old c={"up":false} ok=1 rev=8)", "1"},
      {"Update automatic", [&] { store_->Update(all, AUTO_CONFIG); },
       R"(u=1 d=- a=9 v=new c={"up":true} ok=0 rev=8)"},
  };
  for (const Case& each : cases) {
    SetUpgradeContext(each.upgrade);
    PutFullRow();
    EXPECT_EQ(Raised(each.write), "nothing") << each.name;
    EXPECT_EQ(Row(), each.row) << each.name;
    EXPECT_EQ(
        database_.Lines("SELECT Version, CreationTime, ModifiedTime > '2020-01-02' FROM Config"),
        "2.1 2020-01-01 00:00:00 1")
        << each.name;
  }
  store_->Delete(switch_);
  store_->Update(mtu_, EXTERNAL);
  EXPECT_EQ(Row(), "u=9 d=- a=- v=- c=- ok=1 rev=1") << "the first write makes the row";
}

TEST_F(ConfigWrites, WhatAnUpdateMakesOfARowHasToFitItsType) {
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
  Set(plain_, R"({"name":"a","tags":["x","y"],"nested":{"deep":{"leaf":"l"}}})");
  EXPECT_EQ(update(R"({"tags":["z"],"nested":{"deep":{}}})"), "nothing");
  EXPECT_EQ(Data(store_->Get(plain_)), R"({"name":"a","tags":["z"],"nested":{}})");
}

TEST_F(ConfigWrites, AnUpdateTakesAwayWhatItGivesAsNullOrEmpty) {
  const auto update = [&](const char* members, USERDATA_CONTEXT context = EXTERNAL) {
    const auto object = SwitchObject("s1", members);
    const std::string given = object->GetData();
    const std::string raised = Raised([&] { store_->Update(object, context); });
    EXPECT_TRUE(raised == "nothing" || object->GetData() == given)
        << "a refused object is as it was";
    return raised;
  };
  const std::string refused = "VE 1090 The update does not fit its type. | /";
  Set(switch_, R"({"name":"s1","mtu":1,"serial":"x","state":{"up":true},"ports":[
      {"id":"a","vlan":1,"mac":"m","policy":{"limit":1,"seen":2}},{"id":"b","vlan":2}]})");
  EXPECT_EQ(
      update(R"("mtu":null,"serial":null,"ports":[{"id":"a","vlan":null,"policy":{}},{"id":"c"}])"),
      "nothing");
  EXPECT_EQ(Data(store_->Get(switch_)),
            Named("s1", R"("state":{"up":true},"ports":[)"
                        R"({"id":"a","mac":"m"},{"id":"b","vlan":2},{"id":"c"}])"));
  EXPECT_EQ(update(R"("mut":null)"), refused + "mut");
  EXPECT_EQ(update(R"("mtu":2,"ports":[{"id":"a","valn":null}])"), refused + "ports/0/valn");
  store_->SetUserData(SwitchObject("s1", R"("mtu":3,"ports":[{"id":"b"}])"), AUTO_CONFIG);
  const std::string before = database_.Rows();
  EXPECT_EQ(update(R"("mtu":null,"ports":[])"), refused + "mtu | /ports") << "they are automatic";
  EXPECT_EQ(database_.Rows(), before);
  EXPECT_EQ(update(R"("mtu":null)", AUTO_CONFIG), "nothing");
  EXPECT_EQ(update(R"("ports":[],"state":null)"), refused + "ports");
  EXPECT_EQ(update(R"("ports":null)", AUTO_CONFIG), refused + "ports")
      << "the user's part holds it";
  Set(switch_, R"({"name":"s1","mtu":1})");
  EXPECT_EQ(update(R"("mtu":null)"), refused) << "nothing would be left";
  Set(plain_, R"({"name":"a","tags":["x"],"port":23})");
  EXPECT_EQ(Raised([&] { store_->Update(Object(plain_, R"({"name":null})"), EXTERNAL); }), refused);
  store_->SetUserData(Object(plain_, R"({"name":"a","tags":["auto"]})"), AUTO_CONFIG);
  store_->Update(Object(plain_, R"({"tags":[],"port":null})"), EXTERNAL);
  EXPECT_EQ(Data(store_->Get(plain_)), R"({"name":"a","tags":[]})") << "the user's list wins";
}

TEST_F(ConfigWrites, AMemberWithoutANameIsNoId) {
  InstallType(host_,
              TestSupport::TypeFile("open", "1", R"({"type":"object","additionalProperties":{},
      "properties":{"u":{"type":"integer"},"v":{"type":"integer","vital":true}}})"));
  const Id open("open", "test", "tarn");
  const auto given = Object(open, R"({"":"x"})");
  store_->Set(given, EXTERNAL);
  EXPECT_EQ(Data(store_->Get(open)), R"({"":"x"})");
  EXPECT_EQ(Data(given), R"({"":"x"})");
  Set(open, R"({"":5,"u":1,"v":1})");
  store_->Update(Object(open, R"({"u":null,"v":null})"), EXTERNAL);
  EXPECT_EQ(Data(store_->Get(open)), R"({"":5})") << "something is left";
  store_->Update(Object(open, R"({"":null,"u":2})"), EXTERNAL);
  EXPECT_EQ(Data(store_->Get(open)), R"({"u":2})");
}

TEST_F(ConfigWrites, NothingIsWrittenOfAnIdAlone) {
  for (const char* data : {"{}", R"({"name":"s1"})", R"({"name":null})"}) {
    const auto object = Object(switch_, data);
    store_->Set(object, EXTERNAL);
    EXPECT_EQ(Data(object) + database_.Rows(), "{}") << data;
    store_->Update(Object(switch_, data), EXTERNAL);
    store_->SetUserData(Object(switch_, data), AUTO_CONFIG);
    EXPECT_EQ(database_.Rows(), "") << data;
  }
}

TEST_F(ConfigWrites, WhatOnlyTakesAwayAddsNothing) {
  InstallType(host_,
              TestSupport::TypeFile(
                  "spare", "1", R"({"type":"object","required":["name"],"additionalProperties":{},
      "properties":{"name":{"type":"string"},"tags":{"type":"array","items":{"type":"string"}},
      "security":{"type":"object","required":["level"],"properties":{"level":{"type":"integer","default":1},
          "more":{"type":"object","properties":{"x":{"type":"integer"}}}}},
      "v1":{"type":"integer","vital":true},"v2":{"type":"integer","vital":true}}})"));
  const Id spare("spare", "test", "tarn");
  const auto update = [&](const char* json) {
    return Raised([&] { store_->Update(Object(spare, json), EXTERNAL); });
  };
  const auto layers = [&] {
    return database_.Lines("SELECT ifnull(UserValue, '-'), ifnull(VitalValue, '-') FROM Config");
  };
  Set(spare, R"({"name":"a"})");
  EXPECT_EQ(
      update(
          R"({"security":{"level":null,"more":{"x":null}},"free":{"in":{"x":null}},"tags":["t"]})"),
      "nothing");
  EXPECT_EQ(layers(), R"({"name":"a","tags":["t"]} -)") << "no object is made to take from";
  store_->Delete(spare);
  store_->SetVitalData(Object(spare, R"({"v1":1,"v2":2})"));
  EXPECT_EQ(update(R"({"v1":null})"), "nothing") << "nothing is asked of the user's part";
  EXPECT_EQ(layers(), R"(- {"v2":2})");
  EXPECT_EQ(update(R"({"name":null,"v2":3})"), "nothing") << "there was no name to take";
  Set(switch_, R"({"name":"s1","mtu":1,"serial":"x"})");
  store_->Update(SwitchObject("s1", R"("mtu":null)"), EXTERNAL);
  EXPECT_EQ(database_.Lines("SELECT UserValue IS NULL FROM Config WHERE Name = 'switch'"), "1");
}

// What other programs write between reading and writing is not undone.
TEST_F(ConfigWrites, AnUpdateStartsAgainWhereTheRowChangedMeanwhile) {
  Set(switch_, R"({"name":"s1","mtu":1})");
  int begun = 0;
  DBStore::testing::SetHook([&](Operation asked, std::string_view) {
    if (asked == Operation::BEGIN) {
      PutRow(switch_,
             Named("s1", R"("mtu":1,"ports":[{"id":"p)" + std::to_string(++begun) + "\"}]"), "", "",
             Named("s1", R"("serial":"new")"), "", 1);
    }
    return 0;
  });
  store_->Update(mtu_, EXTERNAL);
  DBStore::testing::SetHook({});
  EXPECT_EQ(begun, 4) << "others wait in the end";
  EXPECT_EQ(Data(store_->Get(switch_)),
            Named("s1", R"("serial":"new","mtu":9,"ports":[{"id":"p4"}])"));
}

TEST_F(ConfigWrites, NumbersAreStoredInTheKindOfTheirType) {
  InstallType(host_, TestSupport::TypeFile("numbers", "1", R"({"type":"object","properties":{
      "i":{"type":["integer","null"]},"n":{"type":"number","default":7},"any":{"type":["integer","number"]},
      "list":{"type":"array","items":{"type":"number"}},"free":{},
      "narrow":{"type":"number","allOf":[{"type":"integer"}]}}})"));
  const Id numbers("numbers", "test", "tarn");
  Set(numbers, R"({"i":9.0,"n":5,"any":1.0,"list":[1,2.5,-3],"free":4,"narrow":6})");
  const auto object = store_->Get(numbers);
  EXPECT_EQ(Data(object), R"({"i":9,"n":5.0,"any":1.0,"list":[1.0,2.5,-3.0],"free":4,"narrow":6})");
  int i = 0;
  double n = 0;
  EXPECT_EQ(object->GetValue("i", &i) + object->GetValue("n", &n), 2);
  Set(numbers, R"({"i":18446744073709551615.0e0,"n":9007199254740993})");
  EXPECT_EQ(Data(store_->Get(numbers)), R"({"i":18446744073709551616.0,"n":9007199254740993})")
      << "what would be rounded stays";
  store_->Update(Object(numbers, R"({"i":-3.0,"n":null})"), EXTERNAL);
  EXPECT_EQ(Data(store_->Get(numbers)), R"({"i":-3})");
  EXPECT_EQ(store_->Get(numbers)->GetValue("n", &n), 2) << "a default is of its kind too";
  Set(numbers, R"({"i":null,"n":1})");
  EXPECT_EQ(Data(store_->Get(numbers)), R"({"i":null,"n":1.0})");
}

TEST_F(ConfigWrites, ContextUpdatesDoNotCountAsWrites) {
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

TEST_F(ConfigWrites, FailedStatementsSayWhichWriteItWas) {
  Fail(Operation::EXECUTE, 5);
  const std::string byContext = "CSE 2000 Database call to update configuration by context failed ";
  ExpectRaised(
      {{"CSE 2000 WriteComplete failed", [&] { store_->Set(mtu_, EXTERNAL); }},
       {"CSE 2000 Write user data failed", [&] { store_->SetUserData(mtu_, EXTERNAL); }},
       {"CSE 2000 Write config instances failed", [&] { store_->SetUserData(mtu_, AUTO_CONFIG); }},
       {"CSE 2000 Write config instances failed", [&] { store_->SetVitalData(serial_); }},
       {byContext + "for: " + switch_.toString(), [&] { store_->Update(mtu_, EXTERNAL); }},
       {"CSE 2000 Delete failed: " + switch_.toString(), [&] { store_->Delete(switch_); }},
       {"CSE 2000 Delete instances failed: " + Switch("").toString(),
        [&] { store_->DeleteInstances(Filter(Switch(""))); }}});
}

TEST_F(ConfigWrites, InstancesThatAreReplacedKeepTheirHistory) {
  PutFullRow("s2");
  PutFullRow("s3");
  store_->SetInstances(List(SwitchObject("s4", R"("mtu":4)"), SwitchObject("s5", R"("ports":[])"),
                            SwitchObject("s2", R"("mtu":2,"serial":"y")")),
                       EXTERNAL);
  EXPECT_EQ(database_.Lines("SELECT Identifier, Revision, CreationTime < '2021' FROM Config"),
            "s2 8 1\ns4 1 0")
      << "the empty one is left out, and the others lie in the order of their ids";
}

// Rows are written by one statement, which keeps what is bound.
TEST_F(ConfigWrites, InstancesTakeNothingFromThoseBeforeThem) {
  PutFullRow("s2");
  const auto s1 = SwitchObject("s1", R"("mtu":1,"serial":"x","state":{"up":true})");
  const auto s2 = SwitchObject("s2", R"("serial":"y")");
  const auto s3 = SwitchObject("s3", R"("mtu":3)");
  store_->SetInstances(List(s3, s1, s2), EXTERNAL);
  EXPECT_EQ(database_.Lines("SELECT Identifier, UserValue IS NULL, VitalValue IS NULL, CachedValue "
                            "IS NULL, AutoConfValue IS NULL, Revision, CreationTime < '2021' FROM "
                            "Config ORDER BY Identifier"),
            "s1 0 0 0 1 1 0\ns2 1 0 1 1 8 1\ns3 0 1 1 1 1 0");
  EXPECT_EQ(Raised([&] { store_->SetInstances(List(s2, s3, s1, s3), EXTERNAL); }),
            "IAE 2000 The instance is listed twice: " + Switch("s3").toString());
}

TEST_F(ConfigWrites, BadListsAreRefusedBeforeAnythingIsWritten) {
  PutFullRow();
  const std::string before = database_.Rows();
  const auto good = SwitchObject("s9");
  const std::pair<Objects, std::string> lists[] = {
      {{}, "IAE 1061"},
      {List(good, Object(plain_, R"({"name":"a"})")), "IAE 1062"},
      {List(good, ObjectHandle(), SwitchObject("s9")),
       "IAE 2000 The instance is listed twice: " + Switch("s9").toString()},
      {List(good, SwitchObject("")), "VE 2000 Non-Singleton object should contain instanceId"}};
  for (const auto& [list, expected] : lists) {
    const Objects& objects = list;
    ExpectRaised({{expected, [&] { store_->SetInstances(objects, EXTERNAL); }},
                  {expected, [&] { store_->SetUserDataInstances(objects, EXTERNAL); }},
                  {expected, [&] { store_->SetVitalDataInstances(objects); }},
                  {expected, [&] { store_->SetCachedDataInstances(objects); }}});
  }
  EXPECT_EQ(database_.Rows(), before);
}

// Everything that an operation asks of the database is made to fail, one thing after the other: the
// store is as it was before each time, and works as soon as the failing ends.
TEST_F(ConfigWrites, AFailureAnywhereLeavesTheStoreAsItWas) {
  const Objects mtus = List(SwitchObject("s2", R"("mtu":9)"), SwitchObject("s4", R"("mtu":9)"));
  const Objects serials = List(SwitchObject("s2", R"("serial":"y")"));
  const Objects states = List(SwitchObject("s2", R"("state":{"up":true})"));
  const std::pair<const char*, std::function<void()>> operations[] = {
      {"SetInstances", [&] { store_->SetInstances(mtus, EXTERNAL); }},
      {"SetUserDataInstances", [&] { store_->SetUserDataInstances(mtus, EXTERNAL); }},
      {"automatic", [&] { store_->SetUserDataInstances(mtus, AUTO_CONFIG); }},
      {"vital", [&] { store_->SetVitalDataInstances(serials); }},
      {"cached", [&] { store_->SetCachedDataInstances(states); }},
      {"DeleteInstances", [&] { store_->DeleteInstances(Filter(Switch(""), R"({"mtu":3})")); }},
      {"Update", [&] { store_->Update(mtus[0], EXTERNAL); }}};
  const auto look = [&] { return database_.Lines("SELECT * FROM Config"); };
  for (const auto& [name, operation] : operations) {
    database_.Run("DELETE FROM Config");
    PutFullRow("s1");
    PutFullRow("s2");
    EXPECT_GE(FailEachStep(name, operation, look), 4)
        << name << ": begin, statements and commit have failed in turn";
  }
}

}  // namespace
}  // namespace TarnConfigStore
