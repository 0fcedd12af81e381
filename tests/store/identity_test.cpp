// Which object a write is for: ids that may be written, data that hold their id, and what other
// parts have to hold.
#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/next_boot_store.h"

#include "store/every_write.h"

#include <gmock/gmock.h>

namespace TarnConfigStore {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using TestSupport::Raised;

class Identity : public TestSupport::EveryWrite {
 protected:
  Identity() { InstallType(host_, TestSupport::Staged(TestSupport::kSwitchType, "staged")); }
  void Stage(const std::string& instance, const char* json) {
    store_->GetNextBootStore()->Set(Object({"staged-switch", "test", "tarn", instance}, json));
  }
  /// What a call raises, with the texts of the findings.
  static std::string Refused(const std::function<void()>& call) { return Raised(call, true); }
};

TEST_F(Identity, EveryWriteRefusesIdsThatNoRowMayHave) {
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
  InstallType(host_, TestSupport::TypeFile("demanding", "1", R"({
      "type":"object","required":["serial","seen","name"],
      "dependencies":{"name":["serial"]},"allOf":[{"required":["serial"]}],"properties":{
        "name":{"type":"string"},"serial":{"type":"string","vital":true},
        "seen":{"type":"integer","cached":true},"mtu":{"type":"integer"},
        "mixed":{"type":"object","required":["v","u"],"properties":{
          "v":{"type":"integer","vital":true},"u":{"type":"integer"}}}}})"));
  const Id demanding("demanding", "test", "tarn");
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
  InstallType(host_, TestSupport::TypeFile("pair", "1", R"({"type":"object","maxProperties":1,
      "properties":{"a":{"type":"integer"},"b":{"type":"integer"}}})"));
  const Id pair("pair", "test", "tarn");
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
