#include "tarnconfigstore/pending.h"

#include "documents/documents_fixture.h"

namespace TarnConfigStore {
namespace {

class Pending : public Documents {
 protected:
  // A line for each: "s1 SET u | /mtu 1>9 user | !/serial "a" - "b" vital" and so on.
  static std::string Listed(const PendingOptions& options = {}) {
    std::string text;
    for (const PendingChange& change : ListPendingChanges(options)) {
      constexpr const char* kActions[] = {" SET", " DELETE", " DELETE_INSTANCE"};
      text += change.id.key + "/" + change.id.instanceId;
      text += change.staged ? kActions[static_cast<int>(change.action)] : "";
      text += change.staged && !change.hasBase ? " no base" : "";
      text += std::string(change.pendingValue ? " pending" : "") +
              (change.unconfirmed ? " unconfirmed" : "");
      for (const DriftObject& object : change.difference) {
        text += " | " + object.GetConfigStoreObjectId().instanceId;
        for (const DriftMember& member : object.GetMembers()) {
          text += " " + member.pointer + " " + member.found.value_or("-") + ">" +
                  member.expected.value_or("-") + " " + member.part;
        }
      }
      for (const MemberChange& member : change.meanwhile) {
        text += std::string(" | ") + (member.conflicts ? "!" : "") + member.pointer + " " +
                member.base.value_or("-") + " " + member.staged.value_or("-") + " " +
                member.current.value_or("-") + " " + member.part;
      }
      for (const ErrorInfo& finding : change.findings) {
        text += " | unfit " + finding.field;
      }
      for (const ErrorInfo& finding : change.mergedFindings) {
        text += " | merged unfit " + finding.field;
      }
      text += "\n";
    }
    return text;
  }
};

TEST_F(Pending, TellsWhatWillChangeAndWhatWasChangedMeanwhile) {
  PutRow("s1", R"("mtu":1)", "", R"("mtu":3)", R"("serial":"a")", 1);
  PutRow("s2", R"("mtu":1)", R"("mtu":2)", "", "", 1);
  PutRow("s3", R"("mtu":1)", "", "", "", 0);
  PutRow("s4", R"("mtu":1)", "", "", "", 1);
  nextBoot_->Set(ManyObject("s1", R"("mtu":9,"serial":"a")"));
  nextBoot_->Delete(Many("s4"));
  store_->Update(ManyObject("s1", R"("mtu":2,"state":{"up":true})"), EXTERNAL);
  store_->SetUserData(ManyObject("s1", R"("mtu":4,"ports":[{"id":"p"}])"), AUTO_CONFIG);
  database_.Run(
      "INSERT INTO DesiredUserConfig VALUES ('tarn','test','many-switch','s5','1','{',NULL,NULL,"
      "'SET'); UPDATE Config SET UserValue='{\"name\":\"s4\",\"mtu\":6}' WHERE Identifier='s4'");
  const std::string before = State();
  const std::string s1 =
      R"(many-switch/s1 SET | s1 /mtu 2>9 user /state {"up":true}>- cached | !/mtu 1 9 2 user | /state - - {"up":true} cached | /mtu 3 9 4 automatic
)";
  EXPECT_EQ(Listed(), s1 + R"(many-switch/s2 pending | s2 /mtu 1>2 user /mtu 2>- pending
many-switch/s3 unconfirmed | s3 /mtu ->1 user
many-switch/s4 DELETE_INSTANCE | s4 /mtu 6>- user | ! {"name":"s4","mtu":1} - {"name":"s4","mtu":6} user
many-switch/s5 SET | s5  ->- user | unfit /
)");
  EXPECT_EQ(Listed({.prefix = Many("s1")}), s1);
  EXPECT_EQ(Listed({.prefix = {"", "other", "tarn"}}), "");
  EXPECT_EQ(State(), before);
  database_.Run("DELETE FROM StagedBase");
  EXPECT_EQ(Listed({.prefix = Many("s1")}),
            "many-switch/s1 SET no base | s1 /mtu 2>9 user /state {\"up\":true}>- cached\n");
}

TEST_F(Pending, SecretsAreMaskedAndWhatHasNoTypeIsNotTold) {
  InstallType(host_, TestSupport::Staged(kSecretType, "kept"));
  const Id id("kept-secrets", "test", "tarn");
  store_->Set(Object(id, R"({"password":"one","users":[{"id":"a","token":{"t":1}}]})"), EXTERNAL);
  nextBoot_->Set(Object(id, R"({"password":"two","users":[{"id":"a","token":{"t":1}}]})"));
  store_->Update(Object(id, R"({"password":"three","users":[{"id":"a","token":{"t":2}}]})"),
                 EXTERNAL);
  EXPECT_EQ(Listed().find("two"), std::string::npos);
  EXPECT_NE(
      Listed().find(R"(!/password "***" "***" "***" user | /users/a/token "***" "***" "***")"),
      std::string::npos)
      << Listed();
  EXPECT_NE(Listed({.reveal = true}).find(R"(!/password "one" "two" "three" user)"),
            std::string::npos);
  database_.Run("UPDATE DesiredUserConfig SET Name='gone'");
  EXPECT_EQ(Listed({.reveal = true}), "gone/ SET no base | unfit /\n");
}

TEST_F(Pending, ADeletionOfAllTellsOfEachAndMergingIsJudged) {
  PutRow("s1", R"("mtu":1)", "", "", "", 1);
  PutRow("s2", R"("mtu":1)", "", "", "", 1);
  database_.Run(
      "INSERT INTO DesiredUserConfig VALUES ('tarn','test','many-switch','','1',NULL,NULL,NULL,"
      "'DELETE')");
  nextBoot_->Set(Mtu("s2", 5));
  EXPECT_EQ(
      Listed(),
      R"(many-switch/ DELETE | s1 /mtu 1>- user | !/s1 - - {"name":"s1","mtu":1} user | !/s2 - - {"name":"s2","mtu":1} user
many-switch/s2 SET | s2 /mtu 1>5 user
)");
  database_.Run("DELETE FROM DesiredUserConfig");
  store_->Set(Object(one_, R"({"name":"a","port":1,"tags":["x"]})"), EXTERNAL);
  nextBoot_->Set(Object(one_, R"({"name":"a","port":1,"tags":["y"]})"));
  database_.Run(
      R"(UPDATE Config SET UserValue='{"name":"a","port":0,"tags":["x"]}' WHERE Name='one-plain')");
  EXPECT_EQ(
      Listed(),
      R"(one-plain/ SET |  /port 0>1 user /tags ["x"]>["y"] user | /port 1 1 0 user | merged unfit /port
)");
}

}  // namespace
}  // namespace TarnConfigStore
