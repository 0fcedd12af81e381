#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/key_values.h"
#include "tarnconfigstore/next_boot_store.h"

#include "support/store_fixture.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

namespace TarnConfigStore {
namespace {

using namespace TestSupport;
using ::testing::AllOf;
using ::testing::HasSubstr;

// What has to hold for each of the store's ways to write.
class Store : public StoreFixture {
 protected:
  struct NamedWrite {
    std::string name;
    std::string code;     // of what is raised for data that do not fit
    std::string members;  // of the switch type, that it takes
    std::function<void(const ObjectHandle&)> write;

    bool IsOfMany() const { return name.ends_with("Instances"); }
    bool IsOfUser() const { return members.starts_with(R"("mtu")"); }
  };
  const std::string mtu_ = R"("mtu":1)";
  const std::string serial_ = R"("serial":"x")";
  const std::string state_ = R"("state":{"up":true})";
  const std::vector<NamedWrite> writes_ = {
      {"Set", "1089", mtu_, [&](auto& o) { store_->Set(o, EXTERNAL); }},
      {"SetUserData", "1087", mtu_, [&](auto& o) { store_->SetUserData(o, EXTERNAL); }},
      {"SetInstances", "1089", mtu_, [&](auto& o) { store_->SetInstances({o}, EXTERNAL); }},
      {"SetUserDataInstances", "1087", mtu_,
       [&](auto& o) { store_->SetUserDataInstances({o}, EXTERNAL); }},
      {"Update", "1090", mtu_, [&](auto& o) { store_->Update(o, EXTERNAL); }},
      {"SetVitalData", "1086", serial_, [&](auto& o) { store_->SetVitalData(o); }},
      {"SetCachedData", "1084", state_, [&](auto& o) { store_->SetCachedData(o); }},
      {"SetVitalDataInstances", "1086", serial_,
       [&](auto& o) { store_->SetVitalDataInstances({o}); }},
      {"SetCachedDataInstances", "1084", state_,
       [&](auto& o) { store_->SetCachedDataInstances({o}); }}};

  /// What each write raises for an object, or how that begins.
  template <class Expected>
  void ExpectOfEach(const ObjectHandle& object, Expected expected) {
    for (const NamedWrite& each : writes_) {
      const std::string text = expected(each);
      EXPECT_EQ(Raised([&] { each.write(object); }).substr(0, text.size()), text) << each.name;
    }
  }
  static Id TestId(const char* key, const std::string& instance = "") {
    return {key, "test", "tarn", instance};
  }
  void Stage(const std::string& instance, const char* json) {
    store_->GetNextBootStore()->Set(Object(TestId("staged-switch", instance), json));
  }
  /// What a call raises, with the texts of the findings.
  static std::string Refused(const std::function<void()>& call) { return Raised(call, true); }
};

TEST_F(Store, GivesElementsWithoutAnIdOneThatStays) {
  const auto rules = [&] { return database_.Lines("SELECT UserValue ->> 'rules' FROM Config"); };
  Set(switch_, R"({"name":"s1","rules":[{"allow":"x"}]})");
  const std::string stored = rules();
  EXPECT_NE(stored.find(R"("cs_generated_id":")"), std::string::npos);
  const auto read = store_->Get(switch_);
  EXPECT_EQ(Data(read), R"({"name":"s1","rules":[{"allow":"x"}]})");
  store_->Set(read, EXTERNAL);
  EXPECT_EQ(rules(), stored);
  for (const NamedWrite& each : writes_) {
    if (each.IsOfUser()) {
      each.write(SwitchObject("s1", R"("rules":[{"allow":"new"}])"));
      EXPECT_EQ(rules().find(R"({"allow":"new"})"), std::string::npos) << each.name;
    }
  }
}

TEST_F(Store, ChecksIdentifiersBeforeTheDatabaseIsTouched) {
  using Call = std::function<void(const Id&)>;
  const Call ofOne[] = {
      [&](auto& id) { store_->Get(id); }, [&](auto& id) { store_->GetDefaultConfig(id); },
      [&](auto& id) { store_->GetRevision(id); }, [&](auto& id) { store_->Delete(id); }};
  const Call ofMany[] = {[&](auto& id) { store_->GetInstances(Filter(id)); },
                         [&](auto& id) { store_->GetDefaultConfigInstances(Filter(id)); },
                         [&](auto& id) { store_->GetInstanceIds(id); },
                         [&](auto& id) { store_->GetInstancesRevision(id); },
                         [&](auto& id) { store_->DeleteInstances(Filter(id)); }};
  const std::string singleton = "VE 2000 Singleton object cannot contain instanceId";
  const std::string instance = "VE 2000 Non-Singleton object should contain instanceId";
  const std::string instances = "VE 2000 API called for singleton object, non-singleton expected";
  const std::string noType = "CSE 1037 No schema is installed for comp tarn grp test key such.";
  int asked = 0;
  DBStore::testing::SetHook([&](Operation, std::string_view) { return ++asked; });
  for (const Call& call : ofOne) {
    ExpectRaised({{singleton, [&] { call(TestId("plain", "x")); }},
                  {instance, [&] { call(Switch("")); }},
                  {noType, [&] { call(TestId("such")); }}});
  }
  for (const Call& call : ofMany) {
    ExpectRaised({{instances, [&] { call(plain_); }}, {noType, [&] { call(TestId("such")); }}});
  }
  ExpectOfEach(Object(TestId("plain", "x"), R"({"name":"a"})"),
               [&](auto& each) { return each.IsOfMany() ? instances : singleton; });
  for (const NamedWrite& each : writes_) {
    const auto unnamed = Object(Switch(""), R"({"mtu":1})");
    EXPECT_TRUE(each.IsOfMany() || Raised([&] { each.write(unnamed); }) == instance) << each.name;
  }
  ExpectRaised({{"IAE 2000 Invalid value for namespace.", [] { ConfigStore::GetStore(" "); }}});
  EXPECT_EQ(asked, 0);
  ExpectRaised({{"CSE 2000 GetRevision command failed", [&] { store_->GetRevision(plain_); }}});
}

TEST_F(Store, RefusedWritesChangeNothing) {
  Set(switch_, R"({"name":"s1","mtu":1})");
  const std::string before = database_.Rows();
  ExpectOfEach(SwitchObject("s1", R"("other":1)"), [](auto& each) { return "VE " + each.code; });
  EXPECT_EQ(Raised([&] { Set(plain_, "[]"); }),
            "VE 1089 The object to be set does not fit its type. | /");
  EXPECT_EQ(Raised([&] { store_->Update(Object(plain_, "[1]"), EXTERNAL); }),
            "VE 1090 The update does not fit its type. | /");
  const auto unfit = SwitchObject("s9", R"("mtu":"x")");
  EXPECT_THAT(Refused([&] {
                store_->SetInstances({SwitchObject("s8"), unfit}, EXTERNAL);
              }),
              HasSubstr(R"((instance "s9"))"));
  SetUpgradeContext("no number");
  const std::string untold = "CSE 2000 Upgrade context ";
  ExpectRaised({{untold, [&] { store_->Get(switch_); }},
                {untold, [&] { store_->GetInstances(Filter(Switch(""))); }},
                {untold, [&] { store_->SetUserData(SwitchObject("s1", mtu_), EXTERNAL); }},
                {untold, [&] { store_->Update(SwitchObject("s1", mtu_), EXTERNAL); }},
                {untold, [&] { store_->GetNextBootStore(); }}});
  EXPECT_EQ(database_.Rows(), before);
}

TEST_F(Store, HandlesAndEmptyObjectsAreLoggedAndLeftAlone) {
  EXPECT_EQ(store_->GetRevision(switch_), kDefaultRevision);
  Set(switch_, R"({"name":"s1","mtu":1})");
  EXPECT_EQ(log_.Count("3 Set : comp tarn grp test key switch id s1, context: 1"), 1);
  const std::string before = database_.Rows();
  ExpectOfEach(nullptr, [](auto& each) { return each.IsOfMany() ? "IAE 1061" : "nothing"; });
  for (const NamedWrite& each : writes_) {
    EXPECT_EQ(log_.Count("1 [1041] " + each.name + ": The argument is null."), 1) << each.name;
    // Emptiness is asked of what passes the checks of its type: this one has no required member.
    // An update of an empty list is one.
    each.write(Object(switch_, each.name == "Update" ? R"({"name":"s1"})"
                               : each.IsOfUser()     ? R"({"name":"s1","ports":[]})"
                                                     : "{}"));
    EXPECT_EQ(
        log_.Count(each.name == "Update"
                       ? "1 Update called with empty object for " + switch_.toString() +
                             ", deletes are not supported"
                       : "1 " + each.name + ", Configuration object for " + switch_.toString() +
                             " is empty, will not be persisted in the db"),
        1)
        << each.name;
  }
  store_->DeleteInstances(nullptr);
  EXPECT_TRUE(store_->GetInstances(nullptr).empty());
  EXPECT_TRUE(store_->GetDefaultConfigInstances(nullptr).empty());
  EXPECT_EQ(database_.Rows(), before);
  store_->SetVitalData(SwitchObject("s2"));
  EXPECT_EQ(store_->GetRevision(Switch("s2")), 1) << "a vital value may be nothing but an id";
}

TEST_F(Store, BootKeepsOtherThanAutomaticConfigurationOut) {
  InstallType(host_, TypeFile("open", "1", R"({"type":"object",
      "bootAccessible":true,"properties":{"x":{"type":"integer"}}})"));
  SetKeyValue("IS_BOOT", "true");
  const std::string refused = "VE 2000 API cannot be invoked with EXTERNAL context during boot";
  for (const NamedWrite& each : writes_) {
    EXPECT_EQ(Raised([&] { each.write(SwitchObject("s1", each.members)); }),
              each.IsOfUser() ? refused : "nothing")
        << each.name;
  }
  const auto vital = SwitchObject("s1", serial_);
  ExpectRaised({{"nothing", [&] { Set(plain_, R"({"name":"a"})", AUTO_CONFIG); }},
                {"nothing", [&] { store_->Set(vital, EXTERNAL); }},
                {"nothing", [&] { store_->SetInstances({vital}, EXTERNAL); }},
                {"nothing", [&] { Set(TestId("open"), R"({"x":1})"); }}});
  SetUpgradeContext("1");
  ExpectOfEach(SwitchObject("s1", mtu_),
               [](auto& each) { return each.IsOfUser() ? "nothing" : "VE 108"; });
}

// The daemon reads what it finds: the user's value alone is announced before it is written.
TEST_F(Store, AnnouncesEachChangeOnce) {
  std::string steps;
  DBStore::testing::SetHook([&](Operation asked, std::string_view detail) {
    const bool writes = asked == Operation::EXECUTE &&
                        (detail.starts_with("INSERT") || detail.starts_with("DELETE"));
    steps += detail == "NOTIFY_KEELD"     ? "told "
             : asked == Operation::COMMIT ? "committed "
             : writes                     ? "written "
                                          : "";
    return 0;
  });
  const auto stepsOf = [&](const std::function<void()>& call) {
    steps.clear();
    call();
    return steps;
  };
  for (const NamedWrite& each : writes_) {
    const std::string expected = each.name == "SetUserData"    ? "told written "
                                 : each.name == "SetInstances" ? "written written committed told "
                                 : each.IsOfMany() || each.name == "Update"
                                     ? "written committed told "
                                     : "written told ";
    EXPECT_EQ(stepsOf([&] { each.write(SwitchObject("s1", each.members)); }), expected)
        << each.name;
  }
  const Objects two = List(SwitchObject("s1", serial_), SwitchObject("s2", mtu_));
  EXPECT_EQ(stepsOf([&] { store_->SetInstances(two, EXTERNAL); }),
            "written written written committed told ");
  const auto conditions = Filter(Switch(""), R"({"serial":"x"})");
  EXPECT_EQ(stepsOf([&] { store_->DeleteInstances(conditions); }), "written committed told ");
  EXPECT_EQ(stepsOf([&] { store_->DeleteInstances(conditions); }), "committed told ");
  EXPECT_EQ(stepsOf([&] { store_->DeleteInstances(Filter(switch_)); }), "written ")
      << "without conditions it announces nothing";
  EXPECT_EQ(stepsOf([&] { store_->Delete(switch_); }), "written told ");
}

TEST_F(Store, NeverOpensOrPreparesTwice) {
  // A schema store that was written a moment ago is looked into until its time stamp can be
  // trusted.
  std::this_thread::sleep_for(std::chrono::milliseconds(150));
  const auto use = [&] {
    (void)store_->Get(plain_);
    Set(plain_, R"({"name":"a"})");
    (void)store_->GetRevision(plain_);
  };
  use();
  const auto before = DBStore::testing::GetCounters();
  const ConfigStoreTransaction transaction(store_);
  for (int i = 0; i < 300; ++i) {
    use();
  }
  EXPECT_EQ(DBStore::testing::GetCounters().opens, before.opens);
  EXPECT_EQ(DBStore::testing::GetCounters().prepares, before.prepares);
}

// Which object a write is for: ids that may be written, data that hold their id, and what other
// parts have to hold.
using Identity = Store;

TEST_F(Identity, EveryWriteRefusesIdsThatNoRowMayHave) {
  InstallType(host_, Staged(kSwitchType, "staged"));
  using namespace std::string_literals;
  const std::pair<std::string, const char*> ids[] = {
      {"a\0b"s, "a\\x00b"},       {"a\nb", "a\\nb"}, {"\x7f", "\\x7f"},
      {"\xc2\x85", "\\xc2\\x85"}, {"\xff", "\\xff"}, {std::string(256, 'x'), "xxx"}};
  for (const auto& [id, shown] : ids) {
    const std::string& instance = id;
    const auto refused =
        AllOf(HasSubstr("VE 2000 An instance id is a text of 1 to 255 bytes"), HasSubstr(shown));
    EXPECT_THAT(Refused([&] { Stage(instance, R"({"mtu":1})"); }), refused);
    for (const NamedWrite& each : writes_) {
      const auto object = Object(Switch(id), R"({"mtu":1})");
      EXPECT_THAT(Refused([&] { each.write(object); }), refused) << each.name;
    }
  }
  EXPECT_EQ(database_.Rows(), "");
  store_->Set(Object(Switch(std::string(255, 'x')), R"({"mtu":1})"), EXTERNAL);
  store_->Set(Object(Switch("\xc3\xa4 /"), R"({"mtu":1})"), EXTERNAL);
  // Rows that older versions let in can be read and deleted.
  PutRow(Switch("a\n"), R"({"mtu":7})", "", "", "", "", 1);
  EXPECT_EQ(Data(store_->Get(Switch("a\n"))), R"({"mtu":7})");
  store_->Delete(Switch("a\n"));
  EXPECT_EQ(store_->GetInstanceIds(Switch("")).size(), 2U);
}

TEST_F(Identity, DataHoldTheirIdAndNoOther) {
  InstallType(host_, Staged(kSwitchType, "staged"));
  const std::string other = R"(/name: expected "s1", found "s2")";
  for (const NamedWrite& each : writes_) {
    const auto object = Object(switch_, Named("s2", each.members));
    EXPECT_THAT(Refused([&] { each.write(object); }),
                AllOf(HasSubstr("VE " + each.code), HasSubstr(other)))
        << each.name;
  }
  EXPECT_THAT(Refused([&] { SetPartialBootStatus(Object(switch_, Named("s2", mtu_))); }),
              AllOf(HasSubstr("VE 1088"), HasSubstr(other)));
  EXPECT_THAT(Refused([&] { Stage("s1", R"({"name":"s2","mtu":1})"); }), HasSubstr(other));
  // After the schema's own findings; none where the identifier itself is wrong.
  const auto findings = store_->Validate(Object(switch_, R"({"name":"s2","mtu":"x"})"));
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[0].field + findings[1].field, "/mtu/name");
  EXPECT_EQ(store_->Validate(Object(Switch(""), R"({"name":"s2"})")).size(), 1U);
  EXPECT_TRUE(store_->Validate(Object(switch_, R"({"mtu":1})")).empty());
  EXPECT_EQ(database_.Rows(), "");

  store_->SetVitalData(Object(switch_, R"({"serial":"x"})"));
  store_->SetCachedData(Object(switch_, R"({"state":{"up":true}})"));
  store_->SetUserDataInstances({Object(switch_, R"({"mtu":2})")}, EXTERNAL);
  store_->Update(Object(Switch("s2"), R"({"name":null,"mtu":3})"), EXTERNAL);
  EXPECT_EQ(database_.Rows(),
            R"(tarn/test/switch/s1 u={"mtu":2,"name":"s1"} d=- a=- v={"serial":"x","name":"s1"} )"
            R"(c={"state":{"up":true},"name":"s1"} ok=1 rev=3)"
            "\n"
            R"(tarn/test/switch/s2 u={"name":"s2","mtu":3} d=- a=- v=- c=- ok=1 rev=1)");
}

TEST_F(Identity, WhatIsRequiredOfAnotherPartIsThatPartsToHold) {
  InstallType(host_, TypeFile("demanding", "1", R"({
      "type":"object","required":["serial","seen","name"],
      "dependencies":{"name":["serial"]},"allOf":[{"required":["serial"]}],"properties":{
        "name":{"type":"string"},"serial":{"type":"string","vital":true},
        "seen":{"type":"integer","cached":true},"mtu":{"type":"integer"},
        "mixed":{"type":"object","required":["v","u"],"properties":{
          "v":{"type":"integer","vital":true},"u":{"type":"integer"}}}}})"));
  const Id demanding = TestId("demanding");
  const auto user = [&](const char* json) {
    return Refused([&] { store_->SetUserData(Object(demanding, json), EXTERNAL); });
  };
  const auto update = [&](const char* json) {
    return Refused([&] { store_->Update(Object(demanding, json), EXTERNAL); });
  };
  EXPECT_EQ(user(R"({"name":"n","mixed":{"u":1}})"), "nothing");
  EXPECT_THAT(user(R"({"mtu":1,"mixed":{}})"), HasSubstr("member \"name\" is required"));
  EXPECT_THAT(Refused([&] { Set(demanding, R"({"name":"n"})"); }),
              HasSubstr("member \"serial\" is required"));
  EXPECT_EQ(update(R"({"mtu":2})"), "nothing");
  EXPECT_THAT(update(R"({"serial":"x"})"), HasSubstr("/mixed: member \"v\" is required"))
      << "the vital part is written, and has to be whole then";
  EXPECT_EQ(update(R"({"serial":"x","mixed":{"v":1}})"), "nothing");
  EXPECT_EQ(Data(store_->Get(demanding)),
            R"({"serial":"x","mixed":{"v":1,"u":1},"name":"n","mtu":2})");
}

TEST_F(Identity, AnUpdateDuringAnUpgradeKeepsWhatItsReaderSees) {
  PutRow(switch_, R"({"name":"s1","mtu":1})",
         R"({"name":"s1","mtu":2,"ports":[{"id":"p","vlan":1}]})", "",
         R"({"name":"s1","serial":"x"})", "", 1);
  SetUpgradeContext("1");
  store_->Update(SwitchObject("s1", R"("ports":[{"id":"p","vlan":5}])"), EXTERNAL);
  EXPECT_EQ(database_.Rows(),
            R"(tarn/test/switch/s1 u={"name":"s1","mtu":2,"ports":[{"id":"p","vlan":5}]} d=- a=- )"
            R"(v={"name":"s1","serial":"x"} c=- ok=1 rev=8)");
}

TEST_F(Identity, RestoringAPartKnowsTheDesiredViewAndItsElements) {
  Set(switch_, R"({"name":"s1","mtu":1,"rules":[{"allow":"a"},{"allow":"b"}]})");
  const std::string before = database_.Rows();
  // Nothing waits: the user's own value is what is desired.
  SetPartialBootStatus(SwitchObject("s1", R"("rules":[{"allow":"b"}])"));
  EXPECT_EQ(database_.Rows(), before) << "the element is the one it matches, not a new one";
  // What comes out has to fit.
  InstallType(host_, TypeFile("pair", "1", R"({"type":"object","maxProperties":1,
      "properties":{"a":{"type":"integer"},"b":{"type":"integer"}}})"));
  const Id pair = TestId("pair");
  PutRow(pair, R"({"a":1})", R"({"b":2})", "", "", "", 1);
  EXPECT_THAT(Refused([&] { SetPartialBootStatus(Object(pair, R"({"b":2})")); }),
              HasSubstr("VE 1088"));
}

TEST_F(Identity, ARevisionBeyondWhatAnObjectCanTellIsTheLargest) {
  Set(plain_, R"({"name":"n"})");
  database_.Run("UPDATE Config SET Revision = 2147483650");
  EXPECT_EQ(store_->GetRevision(plain_), 2147483647);
  EXPECT_EQ(store_->Get(plain_)->GetRevision(), 2147483647);
}

}  // namespace
}  // namespace TarnConfigStore
