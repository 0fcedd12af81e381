// Unsetting members and resetting objects.
#include "tarnconfigstore/taking_back.h"

#include "tarnconfigstore/key_values.h"

#include "support/next_boot_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;
using TestSupport::TypeFile;

class TakingBack : public TestSupport::NextBootFixture {
 protected:
  /// What is left of the switch's row, and what became of each place: "/mtu:u(a)" for taken from the
  /// user's part and left in the automatic one.
  std::string Unset(const std::vector<std::string>& places, std::optional<ConfigPart> part = {}) {
    std::string text;
    const UnsetResult result = UnsetMembers(switch_, places, part);
    for (const UnsetMember& member : result.members) {
      text += member.pointer + ":" + Letters(member.taken);
      text += member.left.empty() ? " " : "(" + Letters(member.left) + ") ";
    }
    return text + (result.isWritten ? "" : "nothing ") + (result.dropsPending ? "pending " : "") +
           Row();
  }
  static std::string Letters(const std::vector<ConfigPart>& parts) {
    std::string letters;
    for (const ConfigPart part : parts) {
      letters += *NameOf(part);
    }
    return letters;
  }
  std::string Reset(const Id& id, ResetTarget target, const std::string& place = "",
                    ConfigPart part = ConfigPart::USER) {
    const ResetResult result = ResetObject(id, target, place, part);
    const char* outcomes[] = {"unchanged ", "changed ", "removed ", "not shipped "};
    return outcomes[static_cast<int>(result.outcome)] +
           std::string(result.dropsPending ? "pending " : "") + Row();
  }
  /// The rows but for the part of the names that all have.
  std::string Row() {
    std::string text = database_.Rows();
    for (std::size_t at; (at = text.find("tarn/test/")) != std::string::npos;) {
      text.erase(at, 10);
    }
    return text;
  }
  void PutSwitch() {
    PutRow(switch_,
           R"({"name":"s1","mtu":9,"ports":[{"id":"p","vlan":1,"policy":{"limit":2}},{"id":"q"}]})",
           "", R"({"name":"s1","mtu":5})",
           R"({"name":"s1","serial":"v","ports":[{"id":"p","mac":"m"}]})",
           R"({"name":"s1","state":{"up":true}})", 1);
  }

  const std::string rest_ = R"( d=- a={"name":"s1","mtu":5} )";
};

TEST_F(TakingBack, TakesFromThePartsAskedForAndKeepsTheOthers) {
  PutSwitch();
  EXPECT_EQ(
      Unset({"/mtu"}),
      R"(/mtu:u(a) switch/s1 u={"name":"s1","ports":[{"id":"p","vlan":1,"policy":{"limit":2}},{"id":"q"}]})" +
          rest_ +
          R"(v={"name":"s1","serial":"v","ports":[{"id":"p","mac":"m"}]} c={"name":"s1","state":{"up":true}} ok=1 rev=8)");
  EXPECT_EQ(
      Unset({"/ports/p/policy/limit", "/state"}),  // what is empty without them goes, too
      R"(/ports/p/policy/limit:u /state:c switch/s1 u={"name":"s1","ports":[{"id":"p","vlan":1},{"id":"q"}]})" +
          rest_ + R"(v={"name":"s1","serial":"v","ports":[{"id":"p","mac":"m"}]} c=- ok=1 rev=9)");
  EXPECT_EQ(Unset({"/ports/p"}, ConfigPart::USER),
            R"(/ports/p:u(v) switch/s1 u={"name":"s1","ports":[{"id":"q"}]})" + rest_ +
                R"(v={"name":"s1","serial":"v","ports":[{"id":"p","mac":"m"}]} c=- ok=1 rev=10)");
  EXPECT_EQ(Unset({"/ports/p", "/ports/q"}), R"(/ports/p:v /ports/q:u switch/s1 u=-)" + rest_ +
                                                 R"(v={"name":"s1","serial":"v"} c=- ok=1 rev=11)");
  EXPECT_EQ(Unset({"/mtu"}, ConfigPart::AUTOMATIC),
            R"(/mtu:a switch/s1 u=- d=- a=- v={"name":"s1","serial":"v"} c=- ok=1 rev=12)");
  // A value that is written over a null stands behind it, and would come to light.
  database_.Run(R"(UPDATE Config SET UserValue = '{"name":"s1","mtu":null,"mtu":9,"mtu":8}')");
  EXPECT_EQ(Unset({"/mtu"}),
            R"(/mtu:u switch/s1 u=- d=- a=- v={"name":"s1","serial":"v"} c=- ok=1 rev=13)");
}

TEST_F(TakingBack, WritesNothingUnlessAllIsSetAndFits) {
  PutSwitch();
  const std::string before = Row();
  EXPECT_EQ(Unset({"/mtu", "/none"}), "/mtu:u(a) /none: nothing " + before);
  EXPECT_EQ(Unset({"/mtu"}, ConfigPart::CACHED), "/mtu:(ua) nothing " + before);
  EXPECT_EQ(Unset({}), "nothing " + before);
  TestSupport::InstallType(
      host_, TypeFile("needs", "1", R"({"type":"object","required":["a"],"properties":{
    "a":{"type":"integer"},"o":{"type":"object","required":["l"],"properties":{"l":{"type":"array","items":{"type":"integer"}}}},
    "x":{"type":"integer","secret":true}},"patternProperties":{"^p":{"type":["null","integer"]}},"additionalProperties":{"type":"string"}})"));
  const Id needs("needs", "test", "tarn");
  Set(needs, R"({"a":1,"o":{"l":[1]},"p1":null,"f":"x","x":4})");
  Set(plain_, R"({"name":"n"})");
  const std::string all = Row();
  const auto refused = [&](const Id& id, const std::string& place) {
    return Raised([&] { UnsetMembers(id, {place}); }, true);
  };
  const std::string unfit = "VE 1090 The update does not fit its type. | ";
  EXPECT_EQ(refused(needs, "/a"), unfit + R"(/: member "a" is required)");
  EXPECT_EQ(refused(needs, "/o/l"), unfit + R"(/o: member "l" is required)");
  EXPECT_EQ(refused(needs, "/o/l/0"),
            unfit + "/o/l/0: elements of this list have no ids: set the whole list instead");
  EXPECT_EQ(
      refused(needs, ""),
      unfit + "/: a member has to be named; to take back all of an object, reset or delete it");
  EXPECT_EQ(refused(switch_, "/ports/p/id"),
            unfit + "/ports/p/id: an instance id names its object, and cannot be changed alone");
  EXPECT_EQ(refused(plain_, "/name"),
            unfit + "/: nothing would be left of the object; delete it instead");
  EXPECT_EQ(Row(), all);
  UnsetMembers(needs, {"/p1", "/f", "/x"});  // by pattern, as any other, secret
  EXPECT_EQ(Data(store_->Get(needs)), R"({"a":1,"o":{"l":[1]}})");
}

TEST_F(TakingBack, KeepsToTheRulesOfThoseWhoWriteTheUsersPart) {
  PutRow(switch_, R"({"name":"s1","mtu":9,"serial":"odd"})", R"({"name":"s1","mtu":7})", "",
         R"({"name":"s1","serial":"v"})", "", 0);
  // The vital part alone leaves the user's, unconfirmed and pending as it is.
  EXPECT_EQ(
      Unset({"/serial"}, ConfigPart::VITAL),
      R"(/serial:v(u) switch/s1 u={"name":"s1","mtu":9,"serial":"odd"} d={"name":"s1","mtu":7} a=- v=- c=- ok=0 rev=8)");
  EXPECT_EQ(Unset({"/serial"}),
            R"(/serial:u pending switch/s1 u={"name":"s1","mtu":9} d=- a=- v=- c=- ok=0 rev=9)");
  PutRow(switch_, R"({"name":"s1","mtu":9})", R"({"name":"s1","mtu":7,"rules":[]})", "", "", "", 0);
  SetUpgradeContext("1");  // where what is pending is the user's
  EXPECT_EQ(Unset({"/rules"}),
            R"(/rules:u switch/s1 u={"name":"s1","mtu":7} d=- a=- v=- c=- ok=1 rev=8)");
  SetUpgradeContext("0");
  PutSwitch();
  SetKeyValue("IS_BOOT", "true");
  ExpectRaised({{"VE 2000", [this] { UnsetMembers(switch_, {"/mtu"}); }},
                {"VE 2000", [this] { ResetObject(switch_, ResetTarget::DEFAULTS); }}});
  SetKeyValue("IS_BOOT", "false");
  const std::string staged = "VE 2000 Changes of this type take effect at the next boot";
  ExpectRaised({{staged, [this] { UnsetMembers(one_, {"/port"}); }},
                {staged, [this] { ResetObject(one_, ResetTarget::SHIPPED); }},
                {"IAE 2000", [this] { UnsetMembers(switch_, {"/mtu"}, ConfigPart::PENDING); }},
                {"IAE 2000", [this] { UnsetMembers(switch_, {"mtu"}); }},
                {"CSE 1037", [] { UnsetMembers(Id("no", "test", "tarn"), {"/a"}); }},
                {"VE 2000", [] { ResetObject(Switch(""), ResetTarget::DEFAULTS); }}});
  PutRow(switch_, "{", "", "", "", "", 1);
  ExpectRaised({{"IAE 1080", [this] { UnsetMembers(switch_, {"/mtu"}); }}});
}

TEST_F(TakingBack, ResetsAnObjectOrAPlaceOfIt) {
  TestSupport::InstallType(
      host_,
      TypeFile(
          "ships", "1", R"({"type":"object","required":["n"],"properties":{"n":{"type":"integer"},
    "id":{"type":"string","instanceId":true},"v":{"type":"integer","vital":true},"els":{"type":"array","items":{"type":"object","properties":{
    "id":{"type":"string","instanceId":true},"w":{"type":"integer"}}}}}})",
          R"({"instance":"x","value":{"id":"x","n":1,"v":2,"els":[{"id":"a","w":3},{"id":"b"}]}})"));
  const Id x("ships", "test", "tarn", "x");
  const std::string shipped =
      R"(ships/x u={"id":"x","n":1,"els":[{"id":"a","w":3},{"id":"b"}]} d=- a=- )";
  EXPECT_EQ(Reset(x, ResetTarget::DEFAULTS), "unchanged ");
  EXPECT_EQ(Reset(x, ResetTarget::SHIPPED), "changed " + shipped + "v=- c=- ok=1 rev=1");
  EXPECT_EQ(Reset(x, ResetTarget::SHIPPED), "unchanged " + shipped + "v=- c=- ok=1 rev=1");
  EXPECT_EQ(Reset(x, ResetTarget::SHIPPED, "/v", ConfigPart::VITAL),
            "changed " + shipped + R"(v={"id":"x","v":2} c=- ok=1 rev=2)");
  store_->Update(Object(x, R"({"id":"x","n":8,"els":[{"id":"b","w":9},{"id":"c"}]})"), EXTERNAL);
  EXPECT_EQ(
      Reset(x, ResetTarget::SHIPPED, "/els/b"),  // in its place
      R"(changed ships/x u={"id":"x","n":8,"els":[{"id":"a","w":3},{"id":"b"},{"id":"c"}]} d=- a=- v={"id":"x","v":2} c=- ok=1 rev=4)");
  EXPECT_EQ(Reset(x, ResetTarget::SHIPPED, "/els/c").substr(0, 75),
            R"(changed ships/x u={"id":"x","n":8,"els":[{"id":"a","w":3},{"id":"b"}]} d=- )");
  EXPECT_EQ(Reset(x, ResetTarget::DEFAULTS, "/els").substr(0, 40),
            R"(changed ships/x u={"id":"x","n":8} d=- a)");
  EXPECT_EQ(Reset(x, ResetTarget::SHIPPED, "/els/a/w").substr(0, 66),
            R"(changed ships/x u={"id":"x","n":8,"els":[{"id":"a","w":3}]} d=- a=)");
  EXPECT_EQ(Raised([&] { ResetObject(x, ResetTarget::DEFAULTS, "/n"); }, true),
            R"(VE 1090 The update does not fit its type. | /: member "n" is required)");
  EXPECT_EQ(Raised([&] { ResetObject(x, ResetTarget::SHIPPED, "/els/a/id"); }).substr(0, 7),
            "VE 1090");
  EXPECT_EQ(Reset(x, ResetTarget::DEFAULTS),
            R"(changed ships/x u=- d=- a=- v={"id":"x","v":2} c=- ok=1 rev=8)");
  EXPECT_EQ(Reset(x, ResetTarget::DEFAULTS, "", ConfigPart::VITAL), "removed ");
  EXPECT_EQ(Reset({"ships", "test", "tarn", "y"}, ResetTarget::SHIPPED), "not shipped ");
  PutRow(x, R"({"id":"x","n":8})", R"({"id":"x","n":9})", "", "", "", 0);
  EXPECT_EQ(Reset(x, ResetTarget::SHIPPED), "changed pending " + shipped + "v=- c=- ok=1 rev=8");
}

TEST_F(TakingBack, FailuresLeaveTheRowAsItWas) {
  const auto look = [this] { return Row(); };
  PutSwitch();
  EXPECT_GT(FailEachStep(
                "unset",
                [this] {
                  UnsetMembers(switch_, {"/mtu", "/serial"});
                },
                look),
            4);
  EXPECT_GT(FailEachStep(
                "reset", [this] { ResetObject(switch_, ResetTarget::DEFAULTS); }, look),
            4);
  // A transaction that this thread has open is never waited for in vain, nor joined.
  ConfigStoreTransaction open(store_);
  Set(plain_, R"({"name":"x"})");
  EXPECT_EQ(Raised([this] { UnsetMembers(switch_, {"/state"}); }).substr(0, 8), "CSE 2000");
}

}  // namespace
}  // namespace TarnConfigStore
