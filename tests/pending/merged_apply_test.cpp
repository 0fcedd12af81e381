#include "support/next_boot_fixture.h"

namespace TarnConfigStore {
namespace {

// "/mtu 1 9 2": the place, and what there was, is staged and is current.
std::string Text(const std::vector<ChangeConflict>& conflicts) {
  std::string text;
  for (const ChangeConflict& conflict : conflicts) {
    text += " " + conflict.pointer + " " + conflict.base.value_or("-") + " " +
            conflict.staged.value_or("-") + " " + conflict.current.value_or("-");
  }
  return text;
}

// "s1 merged; staged s2 /mtu 1 9 2 | /mtu": what became of each, with its conflicts and findings.
std::string Text(const ApplyResult& result) {
  std::string text;
  for (const AppliedChange& change : result.applied) {
    text += change.id.instanceId + (change.merged ? " merged" : " as staged") +
            Text(change.decided) + (change.takenBack ? " taken back" : "") + "; ";
  }
  for (const UnappliedChange& change : result.staged) {
    text += "staged " + change.id.instanceId + Text(change.conflicts);
    for (const ErrorInfo& finding : change.findings) {
      text += " | " + finding.field;
    }
    text += "; ";
  }
  return text;
}

class MergedApply : public TestSupport::NextBootFixture {
 protected:
  static std::string Apply(ConflictDecision conflicts = ConflictDecision::NONE, bool rest = false) {
    return Text(ApplyNextBootConfig({.applyRest = rest,
                                     .bootModeWhenDone = "0",
                                     .merge = ApplyMerge::MERGE,
                                     .conflicts = conflicts}));
  }
  // What a person's tool changes while something is staged.
  void Change(const std::string& instance, const std::string& members) {
    store_->Update(ManyObject(instance, members), EXTERNAL);
  }
};

TEST_F(MergedApply, KeepsWhatWasWrittenToOtherMembers) {
  PutRow("s1", R"("mtu":1,"ports":[{"id":"p","vlan":1},{"id":"q","vlan":1}])", "",
         R"("mtu":3,"rules":[])", R"("serial":"a")", 1);
  nextBoot_->Set(ManyObject("s1", R"("mtu":9,"serial":"a","ports":[{"id":"p","vlan":2}])"));
  Change("s1", R"("serial":"b","state":{"up":true},"ports":[{"id":"p","mac":"m"},{"id":"r"}])");
  EXPECT_EQ(Apply(), "s1 merged; ");
  EXPECT_EQ(
      State(),
      R"(many-switch/s1 u={"name":"s1","mtu":9,"ports":[{"id":"p","vlan":2},{"id":"r"}]} d=- a={"name":"s1","mtu":3,"rules":[]} v={"name":"s1","serial":"b","ports":[{"id":"p","mac":"m"},{"id":"r"}]} c={"name":"s1","state":{"up":true}} ok=1 rev=9
| 
| 0)");
}

TEST_F(MergedApply, WhatWaitedInTheRowCountsAsWritten) {
  PutRow("s1", R"("mtu":1)", "", "", "", 1);
  PutRow("s2", R"("mtu":1)", "", "", "", 1);
  nextBoot_->Set(ManyObject("s1", R"("mtu":1,"serial":"s")"));
  nextBoot_->Set(ManyObject("s2", R"("mtu":1,"serial":"s")"));
  PutRow("s1", R"("mtu":1)", R"("mtu":5)", "", "", 1);
  PutRow("s2", R"("mtu":6)", "", "", "", 0);
  EXPECT_EQ(Apply(), "s1 merged; s2 merged; ");
  EXPECT_EQ(database_.Lines("SELECT UserValue, DesiredValue, Success FROM Config"),
            "{\"name\":\"s1\",\"mtu\":5} - 1\n{\"name\":\"s2\",\"mtu\":6} - 1");
}

TEST_F(MergedApply, AConflictStaysStagedUntilSomebodyDecides) {
  const auto stage = [&] {
    database_.Run("DELETE FROM DesiredUserConfig; DELETE FROM Config");
    for (const char* instance : {"s1", "s2"}) {
      PutRow(instance, R"("mtu":1)", "", "", R"("serial":"a")", 1);
      nextBoot_->Set(Mtu(instance, 9));
    }
    Change("s2", R"("mtu":2,"state":{"up":true})");
  };
  stage();
  const std::string before = State();
  EXPECT_EQ(Apply(), "staged s1; staged s2 /mtu 1 9 2; ");
  EXPECT_EQ(State(), before) << "all or nothing";
  EXPECT_EQ(Apply({}, true), "s1 merged; staged s2 /mtu 1 9 2; ");
  EXPECT_EQ(Apply({}, true), "staged s2 /mtu 1 9 2; ") << "it keeps what there was";
  const auto s2 = [&] { return Data(store_->Get(Many("s2"))); };
  EXPECT_EQ(Apply(ConflictDecision::STAGED), "s2 merged /mtu 1 9 2; ");
  EXPECT_EQ(s2(), R"({"name":"s2","state":{"up":true},"mtu":9})");
  stage();
  EXPECT_EQ(Apply(ConflictDecision::CURRENT), "s1 merged; s2 merged /mtu 1 9 2; ");
  EXPECT_EQ(s2(), R"({"name":"s2","state":{"up":true},"mtu":2})");
  stage();
  EXPECT_EQ(Text(ApplyNextBootConfig({.conflicts = ConflictDecision::CURRENT})),
            "s1 as staged; s2 as staged; ")
      << "who does not merge has no conflicts";
  EXPECT_EQ(s2(), R"({"name":"s2","mtu":9})");
}

TEST_F(MergedApply, DeletionsAndChangesOfTheSameObjectConflict) {
  const auto stage = [&] {
    database_.Run("DELETE FROM DesiredUserConfig; DELETE FROM Config");
    for (const char* instance : {"changed", "gone", "new", "same", "set"}) {
      if (instance != std::string("new")) {
        PutRow(instance, R"("mtu":1)", "", "", "", 1);
      }
      if (instance != std::string("set")) {
        nextBoot_->Delete(Many(instance));
      }
    }
    nextBoot_->Set(Mtu("set", 1));
    PutRow("changed", R"("mtu":1)", "", R"("mtu":7)", "", 1);
    PutRow("new", R"("mtu":2)", "", "", "", 1);
    store_->Delete(Many("gone"));
    store_->Delete(Many("set"));
  };
  stage();
  const std::string conflicts[] = {R"(changed%  - - {"name":"changed","mtu":7}%; )",
                                   R"(new%  - - {"name":"new","mtu":2}%; )",
                                   R"(set%  {"name":"set","mtu":1} {"name":"set","mtu":1} -%; )"};
  const auto all = [&](const std::string& before, const std::string& after) {
    std::string text =
        conflicts[0] + "gone merged; " + conflicts[1] + "same merged; " + conflicts[2];
    for (bool first = true; text.find('%') != std::string::npos; first = !first) {
      text.replace(text.find('%'), 1, first ? before : after);
    }
    return text;
  };
  EXPECT_EQ(Apply(ConflictDecision::STAGED), all(" merged", ""));
  EXPECT_EQ(Data(store_->GetInstances(Filter(Many("")))), R"(set{"name":"set","mtu":1} )");
  stage();
  EXPECT_EQ(Apply(ConflictDecision::CURRENT), all(" merged", " taken back"));
  EXPECT_EQ(Data(store_->GetInstances(Filter(Many("")))),
            R"(changed{"name":"changed","mtu":1} new{"name":"new","mtu":2} )");
  EXPECT_TRUE(ListStaged({"", "", ""}).empty());
}

TEST_F(MergedApply, ADeletionOfAllInstancesConflictsWithEachAndComesFirst) {
  const auto stage = [&] {
    database_.Run("DELETE FROM DesiredUserConfig; DELETE FROM Config");
    PutRow("s1", R"("mtu":1)", "", "", "", 1);
    PutRow("s2", R"("mtu":1)", "", "", "", 1);
    database_.Run(
        "INSERT INTO DesiredUserConfig VALUES ('tarn','test','many-switch','','1',NULL,NULL,NULL,"
        "'DELETE'); INSERT INTO DesiredUserConfig SELECT Component, ConfigGroup, 'gone', '', "
        "'1', NULL, NULL, NULL, 'DELETE' FROM DesiredUserConfig");
    nextBoot_->Set(Mtu("s1", 9));
    Change("s1", R"("serial":"new")");
    database_.Run(
        "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, "
        "UserValue) VALUES ('tarn','test','gone','x','1','{\"secret\":1}')");
  };
  stage();
  const std::string told =
      R"( /s1 - - {"name":"s1","serial":"new","mtu":1} /s2 - - {"name":"s2","mtu":1})";
  EXPECT_EQ(Apply({}, true), R"(staged  /x - - "***"; staged )" + told + "; staged s1 | /; ");
  EXPECT_EQ(Apply(ConflictDecision::STAGED),
            R"( merged /x - - "***";  merged)" + told + "; s1 as staged; ");
  EXPECT_EQ(Data(store_->GetInstances(Filter(Many("")))), R"(s1{"name":"s1","mtu":9} )");
}

TEST_F(MergedApply, WhatComesOutIsCheckedLikeWhatIsStaged) {
  InstallType(host_, R"({"component":"tarn","group":"test","key":"apart","version":"1.0",
    "schema":{"type":"object","rebootRequired":true,"not":{"required":["x","y"]},"properties":{
      "x":{"type":"integer"},"y":{"type":"integer"},"in":{"type":"object","properties":{
        "a":{"type":"integer"},"b":{"type":"integer"}}}}}})");
  const Id apart("apart", "test", "tarn");
  store_->Set(Object(apart, R"({"in":{"a":1,"b":1}})"), EXTERNAL);
  nextBoot_->Set(Object(apart, R"({"x":1,"in":{"a":1}})"));
  store_->Set(Object(apart, R"({"y":1,"in":{"b":1}})"), EXTERNAL);
  const std::string before = State();
  EXPECT_EQ(Apply(), "staged  | /; ");
  EXPECT_EQ(State(), before);
  store_->Set(Object(apart, R"({"in":{"b":1}})"), EXTERNAL);
  EXPECT_EQ(Apply(), " merged; ");
  EXPECT_EQ(Data(store_->Get(apart)), R"({"x":1})") << "cleaned of what is empty";
  nextBoot_->Set(Object(apart, R"({"y":1})"));
  database_.Run("UPDATE Config SET UserValue='{'");
  EXPECT_EQ(Apply(), "staged  | /; ") << "nobody knows what would be lost";
  database_.Run("DELETE FROM Config; UPDATE DesiredUserConfig SET Value='{\"y\":\"text\"}'");
  EXPECT_EQ(Apply(ConflictDecision::STAGED), R"(staged   {"x":1} {"y":"text"} - | /y; )");
  EXPECT_EQ(Apply(ConflictDecision::CURRENT), R"( merged  {"x":1} {"y":"text"} - taken back; )")
      << "what nobody applies need not fit";
}

TEST_F(MergedApply, NothingIsMergedWhereNobodyKnowsWhatThereWas) {
  PutRow("s1", R"("mtu":1)", "", "", "", 1);
  nextBoot_->Set(Mtu("s1", 9));
  nextBoot_->Delete(Many("s2"));
  Change("s1", R"("mtu":2,"serial":"b")");
  database_.Run("DELETE FROM StagedBase");
  EXPECT_EQ(Apply(), "s1 as staged; s2 as staged; ");
  EXPECT_EQ(Data(store_->Get(Many("s1"))), R"({"name":"s1","mtu":9})");
}

}  // namespace
}  // namespace TarnConfigStore
