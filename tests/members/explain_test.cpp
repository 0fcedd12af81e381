// What is told of stored objects: by layer, by default, and after the next boot.
#include "tarnconfigstore/explain.h"

#include "members/explained_text.h"
#include "support/next_boot_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Lines;
using TestSupport::TypeFile;

constexpr const char* kPlacesSchema = R"({"type":"object","properties":{
  "n":{"type":["integer","null"],"default":7,"description":"how many"},
  "o":{"type":"object","default":{"a":1},"properties":{"a":{"type":"integer","default":2},
    "b":{"type":"integer","default":3}}},
  "next":{"type":"object","properties":{"next":{"$ref":"#/properties/next"},
    "d":{"type":"integer","default":5}}},
  "free":{"type":"object","patternProperties":{"^x":{"type":"integer","maximum":9}},
    "additionalProperties":{"type":"string"}},
  "either":{"type":"object","properties":{"p":{"type":"integer"}},
    "allOf":[{"properties":{"all":{"type":"boolean"}}}],
    "anyOf":[{"properties":{"q":{"type":"integer"}}},{"properties":{"r":{"type":"string"}}}]},
  "list":{"type":"array","items":{"type":"integer"},"default":[1,2]},
  "ids":{"type":"array","items":{"type":"object","properties":{
    "id":{"type":"string","instanceId":true},"w":{"type":"integer","default":1}}}},
  "s":{"type":"string","secret":true,"default":"initial","enum":["initial","other"]},
  "vault":{"type":"object","secret":true,"properties":{"k":{"type":"string"}}}}})";

class Explain : public TestSupport::NextBootFixture {
 protected:
  Explain() { TestSupport::InstallType(host_, TypeFile("places", "1.0", kPlacesSchema)); }

  static std::string Told(const Id& id, const std::string& place = "", bool reveal = false) {
    return Lines(ExplainObject(id, place, reveal));
  }

  Id places_{"places", "test", "tarn"};
};

TEST_F(Explain, TellsWhoSetWhatAndWhatThatHides) {
  PutRow(switch_, R"({"name":"s1","mtu":9,"ports":[{"id":"p","vlan":1}]})", "",
         R"({"name":"s1","mtu":5,"ports":[{"id":"q","vlan":2}],"rules":[{"allow":"x"}]})",
         R"({"name":"s1","serial":"v","ports":[{"id":"p","mac":"m"}]})",
         R"({"name":"s1","state":{"up":true},"mtu":4})", 1);
  EXPECT_EQ(Told(switch_), R"(/name="s1" u:"s1" v:"s1" c:"s1" a:"s1"
/mtu=9 u:9 (c:4) (a:5)
/serial="v" v:"v"
/state/up=true c:true
/ports/q/id="q" a:"q"
/ports/q/vlan=2 a:2
/ports/p/id="p" u:"p" v:"p"
/ports/p/vlan=1 u:1
/ports/p/mac="m" v:"m"
/rules=[{"allow":"x"}] a:[{"allow":"x"}])");
  const ObjectExplanation object = ExplainObject(switch_, "/ports/p");
  ASSERT_EQ(object.members.size(), 8U);  // itself, its members and those of "policy"
  EXPECT_EQ(object.members[0].pointer + object.members[5].pointer + object.members[7].pointer,
            "/ports/p/ports/p/policy/ports/p/policy/seen");
  EXPECT_TRUE(object.isStored);
  EXPECT_EQ(object.revision, 7);
  EXPECT_EQ(object.version + object.type.version + object.creationTime + object.modifiedTime,
            "12.12020-01-01 00:00:002020-01-01 00:00:00");
  EXPECT_EQ(Told(switch_, "/ports/none") + Told(switch_, "/nothing") + Told(switch_, "/rules/0"),
            "");
}

// What lies under a value of another kind is not read, be it in the same member.
TEST_F(Explain, WhatIsNoObjectHidesTheObjectsUnderIt) {
  TestSupport::InstallType(host_, TypeFile("kinds", "1.0", R"({"type":"object","properties":{
    "k":{"type":["object","integer","null"],"properties":{"a":{"type":"integer"},"b":{"type":"integer"}}}}})"));
  const Id kinds("kinds", "test", "tarn");
  PutRow(kinds, R"({"k":{"a":1}})", "", R"({"k":{"b":2}})", "", R"({"k":3})", 1);
  EXPECT_EQ(Told(kinds), "/k: (c:3)\n/k/a=1 u:1\n/k/b=- (a:2)");
  PutRow(kinds, R"({"k":null})", "", R"({"k":{"b":2}})", "", "", 1);
  EXPECT_EQ(Told(kinds), "/k: (u:null)\n/k/b=2 a:2");
  EXPECT_EQ(Data(store_->Get(kinds)), R"({"k":{"b":2}})");
}

TEST_F(Explain, DefaultsAreReadWhereNothingIsSetAndNullsCountAsThat) {
  const std::string defaults = R"(/n=7*
/o/a=1*
/o/b=3*
/next/d=5*
/list=[1,2]*
/s="***"*)";
  EXPECT_EQ(Told(places_), defaults);
  EXPECT_FALSE(ExplainObject(places_).isStored);
  PutRow(places_, R"({"n":null,"o":{"a":9},"next":{},"ids":[{"id":"i"}],"list":[]})", "", "", "",
         "", 1);
  EXPECT_EQ(Told(places_), R"(/n=7* u:null
/o/a=9 u:9
/o/b=3*
/next/next/d=5*
/next/d=5*
/list=[] u:[]
/ids/i/id="i" u:"i"
/ids/i/w=1*
/s="***"*)");
  EXPECT_EQ(GetEffectiveConfig(places_).object->GetData(),
            R"({"n":7,"o":{"a":9,"b":3},"next":{"next":{"d":5},"d":5},"ids":[{"id":"i","w":1}],)"
            R"("list":[],"s":"initial"})");
  EffectiveConfig plain = GetEffectiveConfig(plain_);
  EXPECT_EQ(Data(plain.object) + (plain.isStored ? "stored" : "") + (plain.hasDefaults ? "!" : ""),
            R"({"port":22}!)");
  EXPECT_FALSE(GetEffectiveConfig(switch_).hasDefaults);
  EXPECT_EQ(Data(GetEffectiveConfig(switch_).object), R"({"name":"s1"})");
}

TEST_F(Explain, MembersThatOnlyBranchesAndPatternsKnowAreToldWhereTheyAre) {
  Set(places_, R"({"n":1,"either":{"q":4},"free":{"x1":3,"y":"z"}})");
  EXPECT_EQ(Told(places_, "/free") + Told(places_, "/either"),
            "/free/x1=3 u:3\n/free/y=\"z\" u:\"z\"/either/q=4 u:4");
  const ObjectExplanation object = ExplainObject(places_, "/free/x1");
  ASSERT_EQ(object.members.size(), 1U);
  EXPECT_EQ(object.members[0].limits.at(0).keyword + object.members[0].limits.at(0).value,
            "maximum9");
  EXPECT_FALSE(object.members[0].limits.at(0).always);
  // "r" is not there; "all" could be, whatever else is.
  std::string pointers;
  for (const ExplainedMember& member : ExplainObject(places_, "/either").members) {
    pointers += member.pointer + " ";
  }
  EXPECT_EQ(pointers, "/either /either/p /either/all /either/q ");
}

TEST_F(Explain, SecretsAreMaskedWithTheirDefaultsAndWhatIsInThem) {
  Set(places_, R"({"s":"other","vault":{"k":"deep"}})");
  const auto all = [&](const std::string& place, bool reveal) {
    std::string text = Told(places_, place, reveal);
    for (const ExplainedMember& member : ExplainObject(places_, place, reveal).members) {
      text += member.defaultValue.value_or("");
      for (const MemberLimit& limit : member.limits) {
        text += limit.value;
      }
    }
    return text;
  };
  EXPECT_EQ(all("/s", false), R"(/s="***" u:"***""***""***")");
  EXPECT_EQ(all("/s", true), R"(/s="other" u:"other""initial"["initial","other"])");
  EXPECT_EQ(all("/vault/k", false), R"(/vault="***" u:"***")");
  EXPECT_EQ(all("/vault/k", true), R"(/vault/k="deep" u:"deep")");
  const std::string whole = all("", false);
  for (const char* secret : {"other", "deep", "initial"}) {
    EXPECT_EQ(whole.find(secret), std::string::npos) << whole;
  }
}

TEST_F(Explain, TellsWhatWaitsAndWhatTheBootMakesOfIt) {
  PutRow("a", R"("mtu":1)", R"("mtu":2)", R"("mtu":3)", "", 1);
  EXPECT_EQ(Told(Many("a"), "/mtu"), "/mtu=1 u:1 (a:3) d:2? ->2");
  SetUpgradeContext("1");
  EXPECT_EQ(Told(Many("a"), "/mtu"), "/mtu=2 d:2 (a:3) (u:1)");
  SetUpgradeContext("0");
  PutRow("b", R"("mtu":1)", "", R"("mtu":3)", "", 0);
  EXPECT_EQ(Told(Many("b"), "/mtu"), "/mtu=3 u:1? a:3 ->1");
  EXPECT_FALSE(ExplainObject(Many("b")).isConfirmed);
  nextBoot_->Set(Mtu("c", 8));
  nextBoot_->Set(Mtu("a", 9));
  EXPECT_EQ(Told(Many("c"), "/mtu") + Told(Many("a"), "/mtu"),
            "/mtu=- ->8/mtu=1 u:1 (a:3) d:2? ->9");
  nextBoot_->Delete(Many("a"));
  const ObjectExplanation gone = ExplainObject(Many("a"), "/mtu");
  EXPECT_EQ(Lines(gone), "/mtu=1 u:1 (a:3) d:2? ->-");
  EXPECT_TRUE(gone.removedAtBoot && gone.changesAtBoot && gone.type.needsReboot);
  database_.Run("UPDATE DesiredUserConfig SET Value = '{\"mtu\":\"x\"}' WHERE Identifier = 'c'");
  EXPECT_EQ(ExplainObject(Many("c")).misfits.size(), 1U);
}

TEST_F(Explain, RaisesWhatReadsRaise) {
  PutRow(plain_, "{", "", "", "", "", 1);
  ExpectRaised({{"IAE 1080", [this] { ExplainObject(plain_); }},
                {"IAE 2000 \"x\" is no JSON Pointer.", [this] { ExplainObject(plain_, "x"); }},
                {"CSE 1037", [] { ExplainObject(Id("no", "test", "tarn")); }},
                {"CSE 1037", [] { GetEffectiveConfig(Id("no", "test", "tarn")); }},
                {"VE 2000", [] { ExplainObject(Switch("")); }}});
  Fail(Operation::GET_CONNECTION, 14);
  ExpectRaised({{"CSE 2000 Failed to connect", [this] { ExplainObject(plain_); }},
                {"CSE 2000 Failed to connect", [this] { GetEffectiveConfig(plain_); }}});
}

}  // namespace
}  // namespace TarnConfigStore
