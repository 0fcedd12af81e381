#include "tarnconfigstore/boot_state.h"

#include "support/child_process.h"
#include "support/next_boot_fixture.h"

#include <gmock/gmock.h>

#include <csignal>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

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
  SetBootStatus(Many(""), true);
  SetBootStatus(one_, true);
  EXPECT_EQ(State(), applied) << "confirming finds nothing more to do";
  nextBoot_->Set(ManyObject("new", R"("serial":"x")"));
  ApplyNextBootConfig({});
  EXPECT_EQ(store_->GetRevision(Many("new")), 1);
  EXPECT_EQ(Data(store_->Get(Many("new"))), R"({"name":"new","serial":"x"})");
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
  store_->SetVitalData(ManyObject("s1", R"("serial":"new")"));
  EXPECT_EQ(*store_->Get(Many("s1"))->GetPath("/serial"), "\"new\"");
}

TEST_F(Applying, AFailureAnywhereLeavesTheStoreAsItWas) {
  const auto look = [&] { return State(); };
  StageThree();
  const auto apply = [](bool rest) { return [rest] { ApplyNextBootConfig({rest}); }; };
  EXPECT_GE(FailEachStep("all", apply(false), look), 13);
  StageThree();
  Stage("('tarn','test','unfit','','1',NULL,NULL,NULL,'SET')");
  EXPECT_GE(FailEachStep("the rest", apply(true), look), 17);
  StageThree();
  const ConfigStoreTransaction transaction(store_);
  EXPECT_EQ(Raised(apply(true)), "CSE 2000 Begin Transaction failed for: ApplyNextBootConfig")
      << "a thread with a transaction of its own would wait for itself";
}

// No connection is open when the child is forked: its parent's locks would not be its own.
TEST(ApplyingKilled, LeavesAllOrNothing) {
  const TestSupport::TemporaryHost host;
  const TestSupport::CapturedLog log;
  InstallType(host, TestSupport::Staged(TestSupport::kSwitchType, "many"));
  const auto look = [&] {
    TestSupport::Database database(host);
    return database.Rows() + "\n| " + database.Staged();
  };
  const auto stage = [&] {
    TestSupport::Database(host).Run(R"(DELETE FROM Config; DELETE FROM DesiredUserConfig;
        INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue)
          VALUES ('tarn','test','many-switch','s1','1','{"name":"s1","mtu":1}'),
                 ('tarn','test','many-switch','s2','1','{"name":"s2","mtu":1}'),
                 ('tarn','test','other','','1','{}');
        INSERT INTO DesiredUserConfig
          VALUES ('tarn','test','many-switch','s1','1','{"name":"s1","mtu":9}',NULL,NULL,'SET'),
                 ('tarn','test','many-switch','s2','1',NULL,NULL,NULL,'DELETE_INSTANCE'),
                 ('tarn','test','other','','1',NULL,NULL,NULL,'DELETE'),
                 ('tarn','test','unfit','','1',NULL,NULL,NULL,'SET'))");
    return look();
  };
  const std::string before = stage();
  const std::string after =
      "tarn/test/many-switch/s1 u={\"name\":\"s1\",\"mtu\":9} d=- a=- v=- c=- ok=1 rev=2\n| "
      "tarn/test/unfit/ SET "
      "u=- v=- c=- 1";
  const auto applied = [] { return ApplyNextBootConfig({.applyRest = true}).applied.size(); };
  constexpr int kKilled = 1000 + SIGKILL;
  int kills = 0;
  for (int status = kKilled; status == kKilled;) {
    ASSERT_EQ(stage(), before);
    status = TestSupport::InChild([&] {
      int countdown = kills;
      DBStore::testing::SetHook([&countdown](DBStore::testing::Operation, std::string_view) {
        return countdown-- == 0 ? kill(getpid(), SIGKILL) : 0;
      });
      return applied() == 3 ? 0 : 1;
    });
    if (status == kKilled) {
      ++kills;
      ASSERT_EQ(look(), before) << kills;
      EXPECT_EQ(applied(), 3U) << kills;
    } else {
      EXPECT_EQ(status, 0);
    }
    ASSERT_EQ(look(), after) << kills;
  }
  EXPECT_GE(kills, 18) << "connection, mode, statements and commit in turn";
}

}  // namespace
}  // namespace TarnConfigStore
