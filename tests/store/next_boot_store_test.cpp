#include "support/next_boot_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class NextBoot : public TestSupport::NextBootFixture {
 protected:
  // Every operation that writes, each on something that is there for it.
  std::vector<std::pair<const char*, std::function<void()>>> Writes() {
    return {
        {"Set", [&] { nextBoot_->Set(Mtu("s1", 5)); }},
        {"Delete", [&] { nextBoot_->Delete(Many("s1")); }},
        {"Reset", [&] { nextBoot_->Reset(Many("")); }},
        {"SetInstances", [&] { nextBoot_->SetInstances(List(Mtu("s1", 6), Mtu("s2", 6))); }},
        {"DeleteInstances", [&] { nextBoot_->DeleteInstances(Filter(Many(""))); }},
    };
  }
  void PutSome() {
    PutRow("s1", R"("mtu":1)", "", "", "", 1);
    PutRow("s2", R"("mtu":2)", "", "", "", 1);
    nextBoot_->SetInstances(List(Mtu("s1", 9), Mtu("s3", 9)));
    SetKeyValue("BOOT_MODE", "0");
  }
};

TEST_F(NextBoot, KeepsTheLastChangeOfAnInstance) {
  nextBoot_->Set(ManyObject("s1", R"("mtu":1,"serial":"x","state":{"up":true},"ports":[])"));
  nextBoot_->Set(Object(one_, R"({"name":"a"})"));
  EXPECT_EQ(State(), R"(
| many-switch/s1 SET u={"name":"s1","mtu":1} v={"name":"s1","serial":"x"} c={"name":"s1","state":{"up":true}} 2.1
one-plain/ SET u={"name":"a"} v=- c=- 1.0
| 4)");
  const auto staged = nextBoot_->Get(Many("s1"));
  EXPECT_EQ(Data(staged), R"({"name":"s1","state":{"up":true},"serial":"x","mtu":1})");
  EXPECT_EQ(staged->GetVersion() + staged->GetCreationTime() + staged->GetModifiedTime(), "2.1");
  EXPECT_EQ(staged->GetRevision(), 0);
  EXPECT_EQ(Data(store_->Get(Many("s1"))), "none") << "nothing is current yet";

  nextBoot_->Delete(Many("s1"));
  nextBoot_->Delete(one_);
  EXPECT_EQ(database_.Staged(),
            "tarn/test/many-switch/s1 DELETE_INSTANCE u=- v=- c=- 2.1\n"
            "tarn/test/one-plain/ DELETE u=- v=- c=- 1.0");
  EXPECT_EQ(Data(nextBoot_->Get(Many("s1"))) + Data(nextBoot_->Get(one_)), "nonenone");

  nextBoot_->SetInstances(List(Mtu("s2", 2), Mtu("s3", 3)));
  nextBoot_->SetInstances(List(ManyObject("s3", R"("rules":[{"allow":"x"}])"), ObjectHandle()));
  EXPECT_NE(database_.Staged().find(R"("cs_generated_id":")"), std::string::npos);
  nextBoot_->Reset(one_);
  const auto changes = ListStaged({"", "", "tarn"});
  ASSERT_EQ(changes.size(), 1U) << "the call on instances takes back what was staged before";
  EXPECT_TRUE(changes[0].id == Many("s3") && changes[0].action == NextBootAction::SET &&
              changes[0].hasUser && !changes[0].hasVital && !changes[0].hasCached);
  EXPECT_TRUE(ListStaged({"", "other", "tarn"}).empty() && ListStaged(Many("s1")).empty());
}

TEST_F(NextBoot, FiltersChooseAmongStagedContentAndDeleteWhatIsCurrent) {
  PutSome();
  const auto staged = [&](const Id& id, const char* conditions = "{}") {
    return Data(nextBoot_->GetInstances(Filter(id, conditions)));
  };
  const std::string s3 = R"(s3{"name":"s3","mtu":9} )";
  EXPECT_EQ(staged(Many("")), R"(s1{"name":"s1","mtu":9} )" + s3);
  EXPECT_EQ(staged(Many("s3")), s3);
  EXPECT_EQ(staged(Many(""), R"({"mtu":1})") + staged(Many("s3"), R"({"mtu":1})"), "");
  nextBoot_->DeleteInstances(Filter(Many(""), R"({"mtu":1})"));
  EXPECT_EQ(staged(Many("")), s3) << "s1 is the one whose current value is 1";
  nextBoot_->DeleteInstances(Filter(Many("")));
  EXPECT_EQ(database_.Lines("SELECT Identifier, BootAction FROM DesiredUserConfig"),
            "s1 DELETE_INSTANCE\ns2 DELETE_INSTANCE\ns3 SET");
}

TEST_F(NextBoot, RefusesBeforeTheDatabaseIsTouched) {
  const auto good = Mtu("s2", 1);
  const auto empty = Object(Many("s1"), R"({"name":"s1","ports":[]})");
  const Id unknown("such", "no", "tarn");
  const std::string untagged =
      "VE 2000 API should only be invoked for configurations tagged @rebootRequiredConfigStore.";
  const std::string noContent =
      "VE 2000 Empty object cannot be set for configurations tagged @rebootRequiredConfigStore.";
  int asked = 0;
  DBStore::testing::SetHook([&](Operation, std::string_view) { return ++asked; });
  ExpectRaised({
      {untagged, [&] { nextBoot_->Get(plain_); }},
      {untagged, [&] { nextBoot_->Set(Object(plain_, "{}")); }},
      {untagged, [&] { nextBoot_->Delete(plain_); }},
      {untagged, [&] { nextBoot_->Reset(plain_); }},
      {untagged, [&] { nextBoot_->SetInstances(List(SwitchObject("s1"))); }},
      {untagged, [&] { nextBoot_->GetInstances(Filter(switch_)); }},
      {untagged, [&] { nextBoot_->DeleteInstances(Filter(switch_)); }},
      {noContent, [&] { nextBoot_->Set(empty); }},
      {noContent, [&] { nextBoot_->SetInstances(List(good, empty)); }},
      {"VE 1089", [&] { nextBoot_->Set(Object(one_, R"({"port":0})")); }},
      {"IAE 1061", [&] { nextBoot_->SetInstances(List(ObjectHandle())); }},
      {"IAE 1062", [&] { nextBoot_->SetInstances(List(good, SwitchObject("s1"))); }},
      {"CSE 1037", [&] { nextBoot_->Reset(unknown); }},
      {"VE 2000 Non-Singleton object should", [&] { nextBoot_->Delete(Many("")); }},
      {"VE 2000 API called for singleton", [&] { nextBoot_->GetInstances(Filter(one_)); }},
      {"nothing", [&] { nextBoot_->Set(nullptr); }},
      {"nothing", [&] { nextBoot_->DeleteInstances(nullptr); }},
      {"nothing", [&] { nextBoot_->GetInstances(nullptr); }},
  });
  EXPECT_EQ(asked, 0);
  EXPECT_EQ(log_.Count("3 Get : comp tarn grp test key plain, context: 1"), 1);
}

TEST_F(NextBoot, AHostThatIsRemediatedTakesNoChanges) {
  PutSome();
  SetKeyValue("BOOT_MODE", "1");
  const std::string before = State();
  const std::string refused =
      "CSE 2000 Tarn host is being remediated by ORC, cannot set next-boot configuration.";
  for (const auto& [name, write] : Writes()) {
    EXPECT_EQ(Raised(write), refused) << name;
  }
  EXPECT_EQ(Raised([] { ApplyNextBootConfig({}); }), refused);
  EXPECT_EQ(State(), before);
  EXPECT_EQ(Data(nextBoot_->Get(Many("s3"))), R"({"name":"s3","mtu":9})") << "reading goes on";
  SetKeyValue("BOOT_MODE", "10");
  nextBoot_->Reset(one_);
  EXPECT_EQ(GetKeyValue("BOOT_MODE"), "10") << "taking back stages nothing";
}

TEST_F(NextBoot, AFailureAnywhereLeavesTheStoreAsItWas) {
  for (const auto& [name, write] : Writes()) {
    PutSome();
    EXPECT_GE(FailEachStep(name, write, [&] { return State(); }), 5) << name;
    EXPECT_EQ(GetKeyValue("BOOT_MODE"), name == std::string("Reset") ? "0" : "4") << name;
  }
  PutSome();
  const std::string before = State();
  {
    ConfigStoreTransaction transaction(store_);
    for (const auto& [name, write] : Writes()) {
      EXPECT_EQ(Raised(write), "nothing") << name << ", without waiting for itself";
    }
    EXPECT_EQ(State(), before) << "others see it at commit";
  }
  EXPECT_EQ(State(), before);
}

TEST_F(NextBoot, IsNotGivenOutDuringBootOrUpgradeAndOutlivesTheStore) {
  const std::string refused =
      "VE 2000 NextBootStore is not supported during the upgrade or boot phase";
  SetUpgradeContext("1");
  EXPECT_EQ(Raised([&] { store_->GetNextBootStore(); }), refused);
  SetUpgradeContext("0");
  SetKeyValue("IS_BOOT", "true");
  EXPECT_EQ(Raised([&] { store_->GetNextBootStore(); }), refused);
  store_.reset();
  nextBoot_->Set(Object(one_, R"({"name":"a"})"));
  EXPECT_EQ(Data(nextBoot_->Get(one_)), R"({"name":"a"})") << "one that is there stays of use";
  SetKeyValue("IS_BOOT", "TRUE");
  EXPECT_NE(ConfigStore::GetStore("")->GetNextBootStore(), nullptr);
}

}  // namespace
}  // namespace TarnConfigStore
