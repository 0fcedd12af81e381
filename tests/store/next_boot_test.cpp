#include "tarnconfigstore/boot_state.h"

#include "platform/staged_base.h"

#include "support/next_boot_fixture.h"

#include <gmock/gmock.h>

namespace TarnConfigStore {
namespace {

using TestSupport::OnLayout1;
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
  const auto staged = nextBoot_->Get(Many("s1"));
  EXPECT_EQ(Data(staged), R"({"name":"s1","state":{"up":true},"serial":"x","mtu":1})");
  EXPECT_EQ(staged->GetVersion() + staged->GetCreationTime() + staged->GetModifiedTime(), "2.1");
  EXPECT_EQ(staged->GetRevision(), 0);
  nextBoot_->Delete(Many("s1"));
  nextBoot_->Delete(one_);
  EXPECT_EQ(ListStaged({"", "", ""}).size(), 2U);
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

TEST_F(NextBoot, WhatIsStagedAgainKeepsTheBaseItHad) {
  const auto bases = [&] {
    std::string text;
    for (const char* instance : {"s1", "s2"}) {
      DBStore::StagedBase base;
      EXPECT_EQ(DBStore::ReadStagedBase(Many(instance), &base,
                                        DBStore::GetConnection(DBStore::Type::CURRENT_STORE, true)),
                0);
      text +=
          base.kind == DBStore::StagedBase::Kind::NONE ? "none " : base.user.value_or("-") + " ";
    }
    return OnLayout1() && text == "none none " ? "not kept" : text;
  };
  const auto expect = [&](const std::string& expected) {
    EXPECT_EQ(bases(), OnLayout1() ? "not kept" : expected);
  };
  PutRow("s1", R"("mtu":1)", "", "", "", 1);
  nextBoot_->Set(Mtu("s1", 8));
  expect(R"({"name":"s1","mtu":1} none )");
  PutRow("s1", R"("mtu":2)", "", "", "", 1);
  nextBoot_->Delete(Many("s1"));
  nextBoot_->SetInstances(List(Mtu("s1", 9), Mtu("s2", 9)));
  expect(R"({"name":"s1","mtu":1} - )");
  nextBoot_->SetInstances(List(Mtu("s2", 7)));
  expect("none - ");
  EXPECT_EQ(ApplyNextBootConfig({}).applied.size(), 1U);
  expect("none none ");
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
  EXPECT_EQ(database_.Lines("SELECT Identifier, BootAction FROM DesiredUserConfig ORDER BY 1"),
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

// "applied s1 SET; staged s2 DELETE /mtu /serial": what became of each change, with where it fails.
std::string Text(const ApplyResult& result) {
  const auto change = [](const ConfigStoreObjectId& id, NextBootAction action) {
    constexpr const char* kNames[] = {"SET", "DELETE", "DELETE_INSTANCE"};
    return " " + (id.instanceId.empty() ? id.key : id.instanceId) + " " +
           kNames[static_cast<int>(action)];
  };
  std::string text = "applied";
  for (const AppliedChange& applied : result.applied) {
    text += change(applied.id, applied.action);
  }
  text += "; staged";
  for (const UnappliedChange& staged : result.staged) {
    text += change(staged.id, staged.action);
    for (const ErrorInfo& finding : staged.findings) {
      text += " " + finding.field;
    }
  }
  return text;
}

class Applying : public TestSupport::NextBootFixture {
 protected:
  // Three changes: s1 gets content, s2 goes, and so does the one.
  void StageThree() {
    PutRow("s1", R"("mtu":1)", R"("mtu":2)", R"("mtu":3)", R"("serial":"old")", 0);
    PutRow("s2", R"("mtu":1)", "", "", "", 1);
    Set(one_, R"({"name":"a"})");
    nextBoot_->Set(ManyObject("s1", R"("mtu":9,"state":{"up":true})"));
    nextBoot_->Delete(Many("s2"));
    nextBoot_->Delete(one_);
  }
  void Stage(const std::string& rows) {
    database_.Run("INSERT INTO DesiredUserConfig VALUES " + rows);
  }
};

TEST_F(Applying, TakesAChangeFromStagingToConfirmation) {
  StageThree();
  EXPECT_EQ(
      State(),
      R"(many-switch/s1 u={"name":"s1","mtu":1} d={"name":"s1","mtu":2} a={"name":"s1","mtu":3} v={"name":"s1","serial":"old"} c=- ok=0 rev=7
many-switch/s2 u={"name":"s2","mtu":1} d=- a=- v=- c=- ok=1 rev=7
one-plain/ u={"name":"a"} d=- a=- v=- c=- ok=1 rev=1
| many-switch/s1 SET u={"name":"s1","mtu":9} v=- c={"name":"s1","state":{"up":true}} 2.1
many-switch/s2 DELETE_INSTANCE u=- v=- c=- 2.1
one-plain/ DELETE u=- v=- c=- 1.0
| 4)");
  SetKeyValue("IS_BOOT", "true");
  EXPECT_EQ(Text(ApplyNextBootConfig({})),
            "applied s1 SET s2 DELETE_INSTANCE one-plain DELETE; staged");
  const std::string applied =
      R"(many-switch/s1 u={"name":"s1","mtu":9} d=- a={"name":"s1","mtu":3} v=- c={"name":"s1","state":{"up":true}} ok=1 rev=8
| 
| 4)";
  EXPECT_EQ(State(), applied);
  EXPECT_EQ(
      database_.Lines("SELECT CreationTime, Version, ModifiedTime > '2020-01-02' FROM Config"),
      "2020-01-01 00:00:00 2.1 1");
  EXPECT_EQ(Text(ApplyNextBootConfig({})), "applied; staged") << "nothing is applied twice";
  EXPECT_EQ(State(), applied);
}

TEST_F(Applying, KeepsStagedWhatNoLongerFits) {
  Stage(R"(('tarn','test','gone','','1','{"name":"a"}',NULL,NULL,'SET'),
    ('tarn','test','many-switch','bad','1','{"name":"bad","mtu":"x"}','{"other":1}',NULL,'SET'),
    ('tarn','test','many-switch','cut','1','{"name":"cut",',NULL,NULL,'SET'),
    ('tarn','test','many-switch','empty','1',NULL,NULL,NULL,'SET'),
    ('tarn','test','many-switch','list','1','[1]',NULL,NULL,'SET'),
    ('tarn','test','many-switch','s1','1','{"name":"s1","mtu":1}',NULL,NULL,'SET'),
    ('tarn','test','many-switch','','1','{"mtu":1}',NULL,NULL,'SET'),
    ('tarn','test','one-plain','x','1','{"name":"x"}',NULL,NULL,'SET'),
    ('tarn','test','removed','','1',NULL,NULL,NULL,'DELETE'))");
  database_.Run(
      "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue) "
      "VALUES ('tarn','test','removed','a','1','{}'), ('tarn','test','removed','b','1','{}')");
  const std::string before = State();
  const std::string misfits =
      "many-switch SET / bad SET /other /mtu cut SET / empty SET / list SET /";
  EXPECT_EQ(Text(ApplyNextBootConfig({})),
            "applied; staged gone SET / " + misfits + " s1 SET x SET / removed DELETE");
  EXPECT_EQ(State(), before) << "all or nothing";
  EXPECT_EQ(Text(ApplyNextBootConfig({.applyRest = true})),
            "applied s1 SET removed DELETE; staged gone SET / " + misfits + " x SET /");
  EXPECT_EQ(database_.Rows(),
            R"(tarn/test/many-switch/s1 u={"name":"s1","mtu":1} d=- a=- v=- c=- ok=1 rev=1)")
      << "a delete asks nothing of its type";
  EXPECT_EQ(ListStaged({"", "", ""}).size(), 7U);
  EXPECT_EQ(log_.Count("1 Cannot be applied, comp tarn grp test key many-switch id empty: /: The "
                       "change has no content."),
            2);
}

// Members moved, and elements without ids got generated ones, since the changes were staged.
TEST_F(Applying, DividesByTheTypeOfToday) {
  Stage(R"(('tarn','test','many-switch','s1','1',
        '{"name":"s1","serial":"x","state":{"up":true},"rules":[{"allow":"a","hits":1}]}',
        '{"name":"s1","mtu":9}','{"name":"s1","serial":"old"}','SET'))");
  const std::string staged = Data(nextBoot_->Get(Many("s1")));
  EXPECT_EQ(Text(ApplyNextBootConfig({})), "applied s1 SET; staged");
  const std::string row = database_.Lines(
      "SELECT UserValue, VitalValue, CachedValue FROM Config WHERE Identifier = 's1'");
  EXPECT_THAT(row,
              testing::MatchesRegex(
                  R"(\{"name":"s1","mtu":9,"rules":\[\{"cs_generated_id":".*","allow":"a"\}\]\} )"
                  R"(\{"name":"s1","serial":"x"\} \{"name":"s1","state":.*"hits":1\}\]\})"));
  EXPECT_EQ(Data(store_->Get(Many("s1"))).size(), staged.size());
}

TEST_F(Applying, AFailureAnywhereLeavesTheStoreAsItWas) {
  const auto apply = [] { ApplyNextBootConfig({.applyRest = true}); };
  StageThree();
  Stage("('tarn','test','unfit','','1',NULL,NULL,NULL,'SET')");
  EXPECT_GE(FailEachStep("apply", apply, [&] { return State(); }), 17);
  StageThree();
  const ConfigStoreTransaction transaction(store_);
  EXPECT_EQ(Raised(apply), "CSE 2000 Begin Transaction failed for: ApplyNextBootConfig")
      << "a thread with a transaction of its own would wait for itself";
}

}  // namespace
}  // namespace TarnConfigStore
