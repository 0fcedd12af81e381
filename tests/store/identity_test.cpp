// Which object a write is for: ids that may be written, data that hold their id, and what other
// parts have to hold.
#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/next_boot_store.h"

#include "support/store_fixture.h"

#include <gmock/gmock.h>

namespace TarnConfigStore {
namespace {

using ::testing::HasSubstr;

class Identity : public TestSupport::StoreFixture {
 protected:
  Identity() {
    InstallType(host_, TestSupport::Staged(TestSupport::kSwitchType, "staged"));
    InstallType(host_, R"({"component":"tarn","group":"test","key":"demanding","version":"1",
        "schema":{"type":"object","required":["serial","seen","name"],
          "dependencies":{"name":["serial"]},"allOf":[{"required":["serial"]}],
          "properties":{"name":{"type":"string"},"serial":{"type":"string","vital":true},
            "seen":{"type":"integer","cached":true},"mtu":{"type":"integer"},
            "mixed":{"type":"object","required":["v","u"],"properties":{
              "v":{"type":"integer","vital":true},"u":{"type":"integer"}}}}}})");
  }
  static ConfigStoreObjectId StagedSwitch(const std::string& instance) {
    return {"staged-switch", "test", "tarn", instance};
  }

  /// What a call raises, with the texts of the findings.
  static std::string Refused(const std::function<void()>& call) {
    try {
      call();
    } catch (const ValidationException& refusal) {
      std::string text = std::to_string(refusal.GetErrorCode()) + " " + refusal.what();
      for (const ErrorInfo& error : refusal.GetErrors()) {
        text += "\n" + error.field + ": " + error.error;
      }
      return text;
    }
    return "nothing";
  }

  ConfigStoreObjectId demanding_{"demanding", "test", "tarn"};
};

TEST_F(Identity, EveryWriteRefusesIdsThatNoRowMayHave) {
  using namespace std::string_literals;
  const std::pair<std::string, const char*> ids[] = {
      {"a\0b"s, "a\\x00b"},       {"a\nb", "a\\nb"}, {"\x7f", "\\x7f"},
      {"\xc2\x85", "\\xc2\\x85"}, {"\xff", "\\xff"}, {std::string(256, 'x'), "xxx"}};
  for (const auto& [id, shown] : ids) {
    const ObjectHandle object = Object(Switch(id), R"({"mtu":1})");
    const std::function<void()> writes[] = {
        [&] { store_->Set(object, EXTERNAL); },
        [&] { store_->SetUserData(object, AUTO_CONFIG); },
        [&] { store_->SetVitalData(object); },
        [&] { store_->SetCachedData(object); },
        [&] { store_->Update(object, EXTERNAL); },
        [&] { store_->SetInstances({object}, EXTERNAL); },
        [&] { store_->SetVitalDataInstances({object}); },
        [&] { store_->GetNextBootStore()->Set(Object(StagedSwitch(id), R"({"mtu":1})")); },
        [&] { store_->GetNextBootStore()->SetInstances({Object(StagedSwitch(id), "{}")}); }};
    for (const auto& write : writes) {
      const std::string raised = Refused(write);
      EXPECT_THAT(raised, HasSubstr("2000 An instance id is a text of 1 to 255 bytes"));
      EXPECT_THAT(raised, HasSubstr(shown));
    }
  }
  EXPECT_EQ(database_.Rows(), "");
  store_->Set(Object(Switch(std::string(255, 'x')), R"({"mtu":1})"), EXTERNAL);
  store_->Set(Object(Switch("\xc3\xa4 /"), R"({"mtu":1})"), EXTERNAL);
  // Rows that older versions let in can be read and deleted.
  database_.Run(
      "INSERT INTO Config(Component, ConfigGroup, Name, Identifier, Version, UserValue) "
      "VALUES('tarn', 'test', 'switch', 'a' || char(10), '1', '{\"mtu\":7}')");
  EXPECT_EQ(store_->Get(Switch("a\n"))->GetData(), R"({"mtu":7})");
  store_->Delete(Switch("a\n"));
  EXPECT_EQ(store_->GetInstanceIds(Switch("")).size(), 2U);
}

TEST_F(Identity, DataHoldTheirIdAndNoOther) {
  const auto wrong = [] { return Object(Switch("s1"), R"({"name":"s2","mtu":1})"); };
  const auto staged = [] { return Object(StagedSwitch("s1"), R"({"name":"s2","mtu":1})"); };
  const std::pair<const char*, std::function<void()>> writes[] = {
      {"1089", [&] { store_->Set(wrong(), EXTERNAL); }},
      {"1087", [&] { store_->SetUserData(wrong(), EXTERNAL); }},
      {"1086",
       [&] { store_->SetVitalData(Object(Switch("s1"), R"({"name":"s2","serial":"x"})")); }},
      {"1090", [&] { store_->Update(wrong(), EXTERNAL); }},
      {"1089", [&] { store_->SetInstances({wrong()}, EXTERNAL); }},
      {"1088", [&] { SetPartialBootStatus(wrong()); }},
      {"1089", [&] { store_->GetNextBootStore()->Set(staged()); }}};
  for (const auto& [code, write] : writes) {
    const std::string raised = Refused(write);
    EXPECT_THAT(raised, HasSubstr(code));
    EXPECT_THAT(raised, HasSubstr(R"(/name: expected "s1", found "s2")"));
  }
  // After the schema's own findings; none where the identifier itself is wrong.
  const auto findings = store_->Validate(Object(Switch("s1"), R"({"name":"s2","mtu":"x"})"));
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[0].field, "/mtu");
  EXPECT_EQ(findings[1].field, "/name");
  EXPECT_EQ(store_->Validate(Object(Switch(""), R"({"name":"s2"})")).size(), 1U);
  EXPECT_TRUE(store_->Validate(Object(Switch("s1"), R"({"mtu":1})")).empty());
  EXPECT_EQ(database_.Rows(), "");

  store_->SetVitalData(Object(Switch("s1"), R"({"serial":"x"})"));
  store_->SetCachedData(Object(Switch("s1"), R"({"state":{"up":true}})"));
  store_->SetUserDataInstances({Object(Switch("s1"), R"({"mtu":2})")}, EXTERNAL);
  store_->Update(Object(Switch("s2"), R"({"name":null,"mtu":3})"), EXTERNAL);
  store_->SetVitalData(Object(Switch("s3"), "{}"));
  EXPECT_EQ(database_.Rows(),
            R"(tarn/test/switch/s1 u={"mtu":2,"name":"s1"} d=- a=- v={"serial":"x","name":"s1"} )"
            R"(c={"state":{"up":true},"name":"s1"} ok=1 rev=3)"
            "\n"
            R"(tarn/test/switch/s2 u={"name":"s2","mtu":3} d=- a=- v=- c=- ok=1 rev=1)");
}

TEST_F(Identity, WhatIsRequiredOfAnotherPartIsThatPartsToHold) {
  const auto write = [&](const char* json, auto method) {
    return Refused([&] { method(Object(demanding_, json)); });
  };
  const auto user = [&](const ObjectHandle& object) { store_->SetUserData(object, EXTERNAL); };
  const auto update = [&](const ObjectHandle& object) { store_->Update(object, EXTERNAL); };
  EXPECT_EQ(write(R"({"name":"n","mixed":{"u":1}})", user), "nothing");
  EXPECT_THAT(write(R"({"mtu":1,"mixed":{}})", user), HasSubstr("member \"name\" is required"));
  EXPECT_THAT(write(R"({"name":"n"})", [&](const auto& o) { store_->Set(o, EXTERNAL); }),
              HasSubstr("member \"serial\" is required"));
  EXPECT_EQ(write(R"({"mtu":2})", update), "nothing");
  EXPECT_THAT(write(R"({"serial":"x"})", update), HasSubstr("/mixed: member \"v\" is required"))
      << "the vital part is written, and has to be whole then";
  EXPECT_EQ(write(R"({"serial":"x","mixed":{"v":1}})", update), "nothing");
  EXPECT_EQ(store_->Get(demanding_)->GetData(),
            R"({"serial":"x","mixed":{"v":1,"u":1},"name":"n","mtu":2})");
}

TEST_F(Identity, AnUpdateDuringAnUpgradeKeepsWhatItsReaderSees) {
  Set(switch_, R"({"name":"s1","mtu":1,"serial":"x"})");
  database_.Run(
      R"(UPDATE Config SET DesiredValue = '{"name":"s1","mtu":2,"ports":[{"id":"p","vlan":1}]}')");
  SetUpgradeContext("1");
  store_->Update(SwitchObject("s1", R"("ports":[{"id":"p","vlan":5}])"), EXTERNAL);
  EXPECT_EQ(database_.Rows(),
            R"(tarn/test/switch/s1 u={"name":"s1","mtu":2,"ports":[{"id":"p","vlan":5}]} d=- a=- )"
            R"(v={"name":"s1","serial":"x"} c=- ok=1 rev=2)");
}

TEST_F(Identity, RestoringAPartKnowsTheDesiredViewAndItsElements) {
  Set(switch_, R"({"name":"s1","mtu":1,"rules":[{"allow":"a"},{"allow":"b"}]})");
  const std::string before = database_.Rows();
  // Nothing waits: the user's own value is what is desired.
  SetPartialBootStatus(SwitchObject("s1", R"("rules":[{"allow":"b"}])"));
  EXPECT_EQ(database_.Rows(), before) << "the element is the one it matches, not a new one";
  // What comes out has to fit.
  InstallType(host_, R"({"component":"tarn","group":"test","key":"pair","version":"1","schema":{
      "type":"object","properties":{"a":{"type":"integer"},"b":{"type":"integer"}},
      "maxProperties":1}})");
  const ConfigStoreObjectId pair("pair", "test", "tarn");
  Set(pair, R"({"a":1})");
  database_.Run(R"(UPDATE Config SET DesiredValue = '{"b":2}' WHERE Name = 'pair')");
  EXPECT_THAT(Refused([&] { SetPartialBootStatus(Object(pair, R"({"b":2})")); }),
              HasSubstr("1088"));
}

TEST_F(Identity, ARevisionBeyondWhatAnObjectCanTellIsTheLargest) {
  Set(plain_, R"({"name":"n"})");
  database_.Run("UPDATE Config SET Revision = 2147483650");
  EXPECT_EQ(store_->GetRevision(plain_), 2147483647);
  EXPECT_EQ(store_->Get(plain_)->GetRevision(), 2147483647);
}

}  // namespace
}  // namespace TarnConfigStore
