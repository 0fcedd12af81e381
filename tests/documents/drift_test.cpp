#include "tarnconfigstore/drift.h"

#include "documents/documents_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

TEST_F(Documents, DriftIsToldMemberByMember) {
  PutRow(switch_, Named("s1", R"("mtu":1,"ports":[{"id":"p/1","vlan":1},{"id":"q","vlan":2}])"), "",
         Named("s1", R"("mtu":7,"ports":[{"id":"new","vlan":8}])"), Named("s1", R"("serial":"s")"),
         "", 1);
  PutRow(Switch("s2"), Named("s2", R"("mtu":1)"), "", "", "", "", 1);
  Set({"secrets", "test", "tarn"}, R"({"password":"top"})");
  const std::string document = Config(
      R"("switch":[{"name":"s1","ports":[{"id":"q","vlan":3},{"id":"new","vlan":9}]},{"name":"s0","mtu":5}],)"
      R"("secrets":{"password":"bottom"})");
  const auto told = [&](const DriftOptions& options) {
    std::string text;
    for (const DriftObject& object : ComputeDrift(document, options)) {
      text += object.GetConfigStoreObjectId().instanceId + " " + object.ToJson() + "\n";
    }
    return text;
  };
  const std::string s1 =
      R"(s1 {"kind":"changed","members":[{"pointer":"/ports/q/vlan","expected":3,"found":2,"part":"user"},)"
      R"({"pointer":"/ports/new","expected":{"id":"new","vlan":9},"found":{"id":"new","vlan":8},"part":"automatic"},)"
      R"({"pointer":"/ports/p~11","found":{"id":"p/1","vlan":1},"part":"user"},)"
      R"({"pointer":"/mtu","found":1,"part":"user"}]})"
      "\n";
  const std::string s0 =
      R"(s0 {"kind":"missing","members":[{"pointer":"/mtu","expected":5,"part":"user"}]})"
      "\n";
  const std::string secrets =
      R"( {"kind":"changed","members":[{"pointer":"/password","expected":"***","found":"***","part":"user"}]})"
      "\n";
  EXPECT_EQ(told({}), s1 + s0 + secrets);
  EXPECT_EQ(told({.prefix = switch_}), s1);
  EXPECT_EQ(told({.prefix = Switch(""), .complete = true}),
            s1 + s0 +
                R"(s2 {"kind":"extra","members":[{"pointer":"/mtu","found":1,"part":"user"}]})"
                "\n");
  EXPECT_NE(told({.reveal = true}).find(R"("expected":"bottom","found":"top")"), std::string::npos);

  const DriftObject object = ComputeDrift(document, {.prefix = switch_}).front();
  EXPECT_EQ(
      object.GetSubObject(SubObjectId("ports", "q")).ToJson(),
      R"({"kind":"changed","members":[{"pointer":"/vlan","expected":3,"found":2,"part":"user"}]})");
  std::string ids;
  for (const DriftObject& instance : object.GetSubObjectInstances("ports")) {
    ids += instance.GetConfigStoreObjectId().instanceId + " ";
  }
  EXPECT_EQ(ids, "new p/1 q ");
  ExpectRaised({{"CSE 1046", [&] { object.GetSubObjectInstances("mtu"); }},
                {"CSE 1048", [&] { object.GetSubObject(SubObjectId("serial")); }},
                {"CSE 1049", [&] { object.GetSubObject(SubObjectId("ports", "none")); }},
                {"IAE 1080", [&] { DriftObject(switch_, "{"); }},
                {"IAE 1080", [&] { DriftObject(switch_, R"({"kind":"changed"})"); }}});
}

// An object without a user's value is one, to a document that speaks of the other parts.
TEST_F(Documents, DriftOfAllPartsTellsMissingFromChanged) {
  PutRow(Switch("gone"), "", "", Named("gone", R"("mtu":1)"), "", "", 1);
  PutRow(Switch("other"), "", "", Named("other", R"("mtu":1)"), "", "", 1);
  const std::string all = Export({.allParts = true});
  database_.Run("DELETE FROM Config");
  PutRow(Switch("other"), "", "", Named("other", R"("mtu":2)"), "", "", 1);
  PutRow(Switch("new"), "", "", Named("new", R"("mtu":1)"), "", "", 1);
  std::string kinds;
  for (const DriftObject& object : ComputeDrift(all, {.complete = true})) {
    kinds += object.GetConfigStoreObjectId().instanceId +
             std::to_string(static_cast<int>(object.GetKind())) + " ";
  }
  const auto kind = [](DriftKind of) { return std::to_string(static_cast<int>(of)); };
  EXPECT_EQ(kinds, "gone" + kind(DriftKind::MISSING) + " other" + kind(DriftKind::CHANGED) +
                       " new" + kind(DriftKind::EXTRA) + " ");
}

TEST_F(Documents, TheStoreIsComparedWithWhatItCouldBe) {
  TestSupport::InstallType(host_,
                           R"({"component":"tarn","group":"test","key":"shipped","version":"1.0",
      "schema":{"type":"object","properties":{"id":{"type":"string","instanceId":true},
        "n":{"type":"integer","default":5},"v":{"type":"integer","vital":true}}},
      "defaults":[{"instance":"a","value":{"id":"a","n":1}},{"instance":"b","value":{"id":"b","n":2,"v":3}}]})");
  const Id all("shipped", "test", "tarn");
  Set({"shipped", "test", "tarn", "a"}, R"({"id":"a","n":5})");
  Set({"shipped", "test", "tarn", "c"}, R"({"id":"c","n":6,"v":7})");
  const auto told = [](ReferenceState state, const Id& prefix) {
    std::string text;
    for (const DriftObject& object : ComputeDriftFrom(state, {.prefix = prefix})) {
      text += object.GetConfigStoreObjectId().instanceId + object.ToJson() + "\n";
    }
    return text;
  };
  EXPECT_EQ(
      told(ReferenceState::SHIPPED, all),
      R"(a{"kind":"changed","members":[{"pointer":"/n","expected":1,"found":5,"part":"user"}]})"
      "\n"
      R"(b{"kind":"missing","members":[{"pointer":"/n","expected":2,"part":"user"}]})"
      "\n"
      R"(c{"kind":"extra","members":[{"pointer":"/n","found":6,"part":"user"}]})"
      "\n");
  EXPECT_EQ(
      told(ReferenceState::DEFAULTS, all),
      R"(c{"kind":"changed","members":[{"pointer":"/n","expected":5,"found":6,"part":"user"}]})"
      "\n");
  PutRow("p", R"("mtu":1)", R"("mtu":2)", "", "", 1);
  PutRow("q", R"("mtu":1)", "", "", "", 1);
  PutRow("r", R"("mtu":1)", "", "", R"("serial":"s")", 1);
  nextBoot_->Delete(Many("q"));
  nextBoot_->Set(Mtu("r", 1));
  // Of a type that is not there nobody knows what is secret.
  database_.Run(
      "INSERT INTO DesiredUserConfig(Component, ConfigGroup, Name, Identifier, Version, Value, "
      "BootAction) VALUES('tarn', 'test', 'gone', '', '1', '{\"password\":\"top\"}', 'SET')");
  EXPECT_EQ(
      told(ReferenceState::NEXT_BOOT, {"", "", "tarn"}),
      R"(p{"kind":"changed","members":[{"pointer":"/mtu","expected":2,"found":1,"part":"user"},)"
      R"({"pointer":"/mtu","found":2,"part":"pending"}]})"
      "\n"
      R"(q{"kind":"extra","members":[{"pointer":"/mtu","found":1,"part":"user"}]})"
      "\n"
      R"(r{"kind":"changed","members":[{"pointer":"/serial","found":"s","part":"vital"}]})"
      "\n");
}

}  // namespace
}  // namespace TarnConfigStore
