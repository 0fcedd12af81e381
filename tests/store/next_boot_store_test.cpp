#include "tarnconfigstore/diagnostics.h"

#include "support/child_process.h"
#include "support/next_boot_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class NextBoot : public TestSupport::NextBootFixture {
 protected:
  // Every operation that writes, each on something that is there for it.
  std::vector<std::pair<const char*, std::function<void()>>> Writes() {
    return {
        {"Set", [&] { nextBoot_->Set(ManyObject("s1", R"("mtu":5)")); }},
        {"Delete", [&] { nextBoot_->Delete(Many("s1")); }},
        {"Reset", [&] { nextBoot_->Reset(Many("")); }},
        {"SetInstances",
         [&] {
           nextBoot_->SetInstances(
               {ManyObject("s1", R"("mtu":6)"), ManyObject("s2", R"("mtu":6)")});
         }},
        {"DeleteInstances",
         [&] { nextBoot_->DeleteInstances(std::make_shared<FilterSpecObject>(Many(""))); }},
    };
  }
  void PutSome() {
    PutRow("s1", R"("mtu":1)", "", "", "", 1);
    PutRow("s2", R"("mtu":2)", "", "", "", 1);
    nextBoot_->SetInstances({ManyObject("s1", R"("mtu":9)"), ManyObject("s3", R"("mtu":9)")});
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

  nextBoot_->SetInstances(
      {ManyObject("s2", R"("mtu":2)"), ManyObject("s3", R"("rules":[{"allow":"x"}])")});
  nextBoot_->SetInstances({ManyObject("s3", R"("rules":[{"allow":"x"}])"), nullptr});
  EXPECT_NE(database_.Staged().find(R"("cs_generated_id":")"), std::string::npos);
  nextBoot_->Reset(one_);
  const auto changes = ListStaged({"", "", "tarn"});
  ASSERT_EQ(changes.size(), 1U) << "the call on instances takes back what was staged before";
  EXPECT_EQ(changes[0].id, Many("s3"));
  EXPECT_TRUE(changes[0].action == NextBootAction::SET && changes[0].hasUser &&
              !changes[0].hasVital && !changes[0].hasCached && changes[0].version == "2.1");
  EXPECT_TRUE(ListStaged({"", "other", "tarn"}).empty() && ListStaged(Many("s1")).empty());
}

TEST_F(NextBoot, FiltersChooseAmongStagedContentAndDeleteWhatIsCurrent) {
  PutSome();
  const auto ids = [&](const std::shared_ptr<FilterSpecObject>& filter) {
    std::string text;
    for (const auto& object : nextBoot_->GetInstances(filter)) {
      text += object->GetConfigStoreObjectId().instanceId + " ";
    }
    return text;
  };
  const auto all = std::make_shared<FilterSpecObject>(Many(""));
  const auto mtu = std::make_shared<FilterSpecObject>(Many(""));
  mtu->SetValue("mtu", 1);
  const auto named = std::make_shared<FilterSpecObject>(Many("s3"));
  EXPECT_EQ(ids(all) + "| " + ids(mtu) + "| " + ids(named) + "| " + ids(nullptr),
            "s1 s3 | | s3 | ");
  named->SetValue("mtu", 1);
  EXPECT_EQ(ids(named), "");
  nextBoot_->DeleteInstances(mtu);
  EXPECT_EQ(ids(all), "s3 ") << "s1 is the one whose current value is 1";
  nextBoot_->DeleteInstances(all);
  EXPECT_EQ(database_.Run("SELECT Identifier, BootAction FROM DesiredUserConfig"),
            (std::vector<std::string>{"s1 DELETE_INSTANCE", "s2 DELETE_INSTANCE", "s3 SET"}));
}

TEST_F(NextBoot, RefusesBeforeTheDatabaseIsTouched) {
  const std::string before = State();
  const std::string untagged =
      "VE 2000 API should only be invoked for configurations tagged @rebootRequiredConfigStore.";
  const auto filter = [](const ConfigStoreObjectId& id) {
    return std::make_shared<FilterSpecObject>(id);
  };
  DBStore::testing::SetHook([](DBStore::testing::Operation, std::string_view) { return 1; });
  EXPECT_EQ(Raised([&] { nextBoot_->Get(plain_); }), untagged);
  EXPECT_EQ(Raised([&] { nextBoot_->Set(Object(plain_, "{}")); }), untagged);
  EXPECT_EQ(Raised([&] { nextBoot_->Delete(plain_); }), untagged);
  EXPECT_EQ(Raised([&] { nextBoot_->Reset(plain_); }), untagged);
  EXPECT_EQ(Raised([&] { nextBoot_->SetInstances({SwitchObject("s1")}); }), untagged);
  EXPECT_EQ(Raised([&] { nextBoot_->GetInstances(filter(switch_)); }), untagged);
  EXPECT_EQ(Raised([&] { nextBoot_->DeleteInstances(filter(switch_)); }), untagged);

  const std::string empty =
      "VE 2000 Empty object cannot be set for configurations tagged @rebootRequiredConfigStore.";
  EXPECT_EQ(Raised([&] { nextBoot_->Set(Object(Many("s1"), R"({"name":"s1","ports":[]})")); }),
            empty);
  EXPECT_EQ(Raised([&] {
              nextBoot_->SetInstances({ManyObject("s2", R"("mtu":1)"), Object(Many("s1"), "{}")});
            }),
            empty);
  EXPECT_EQ(Raised([&] { nextBoot_->Set(Object(one_, R"({"port":0})")); }).substr(0, 7), "VE 1089");
  const auto good = ManyObject("s2", R"("mtu":1)");
  EXPECT_EQ(Raised([&] { nextBoot_->SetInstances({nullptr}); }).substr(0, 8), "IAE 1061");
  EXPECT_EQ(Raised([&] {
              nextBoot_->SetInstances({good, SwitchObject("s1")});
            }).substr(0, 8),
            "IAE 1062");
  EXPECT_EQ(Raised([&] {
              nextBoot_->SetInstances({good, good});
            }),
            "IAE 2000 The instance is listed twice: " + Many("s2").toString());
  EXPECT_EQ(Raised([&] { nextBoot_->Delete({"such", "no", "tarn"}); }).substr(0, 8), "CSE 1037");
  EXPECT_EQ(Raised([&] { nextBoot_->Delete(Many("")); }),
            "VE 2000 Non-Singleton object should contain instanceId");
  EXPECT_EQ(Raised([&] { nextBoot_->GetInstances(filter(one_)); }),
            "VE 2000 API called for singleton object, non-singleton expected");
  nextBoot_->Set(nullptr);
  nextBoot_->DeleteInstances(nullptr);
  DBStore::testing::SetHook({});
  EXPECT_EQ(log_.Count("1 [1041] Set: The argument is null."), 1);
  EXPECT_EQ(log_.Count("3 Get : comp tarn grp test key plain, context: 1"), 1);
  EXPECT_EQ(State(), before);
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
  }
}

TEST_F(NextBoot, NestsInTheCallersTransactionModeAndAll) {
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

TEST_F(NextBoot, AReadOnlyStoreIsReadAndRefusesAtOnce) {
  nextBoot_->Set(Object(one_, R"({"name":"a"})"));
  nextBoot_.reset();
  store_.reset();
  namespace fs = std::filesystem;
  const fs::path path = host_.Path(HostPaths::kStore);
  fs::permissions(host_.Root(), fs::perms(0755));
  for (const auto& file : fs::directory_iterator(path.parent_path())) {
    fs::permissions(file.path(), fs::perms(0444));
  }
  fs::permissions(path.parent_path(), fs::perms(0555));
  const int status = TestSupport::AsPlainUser([&] {
    const auto nextBoot = ConfigStore::GetStore("")->GetNextBootStore();
    const auto refused = [&](const std::string& text, const std::function<void()>& write) {
      const std::string raised = Raised(write);
      EXPECT_EQ(raised, "CSE 2000 " + text);
      EXPECT_EQ(GetLastStoreError().kind, StoreErrorKind::PERMISSION);
      ClearLastStoreError();
    };
    EXPECT_EQ(Data(nextBoot->Get(one_)), R"({"name":"a"})");
    EXPECT_EQ(ListStaged({"", "", ""}).size(), 1U);
    refused("Begin Transaction failed for: ExecuteUnderTransaction",
            [&] { nextBoot->Set(Object(one_, R"({"name":"b"})")); });
    refused("Begin Transaction failed for: ApplyNextBootConfig", [] { ApplyNextBootConfig({}); });
    return HasFailure() ? 1 : 0;
  });
  EXPECT_EQ(status, 0);
  fs::permissions(path.parent_path(), fs::perms(0755));
}

}  // namespace
}  // namespace TarnConfigStore
