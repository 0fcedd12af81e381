#include "tarnconfigstore/next_boot_update.h"

#include "support/next_boot_fixture.h"
#include "support/threads.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class NextBootUpdate : public TestSupport::NextBootFixture {
 protected:
  static bool Update(const std::string& instance, const std::string& members) {
    return UpdateNextBoot(ManyObject(instance, members));
  }
  std::string Staged(const std::string& instance) const {
    return Data(nextBoot_->Get(Many(instance)));
  }
};

TEST_F(NextBootUpdate, ChangesWhatIsStagedOrElseWhatIsCurrent) {
  PutRow("s1", R"("mtu":1,"ports":[{"id":"p","vlan":1}])",
         R"("mtu":2,"ports":[{"id":"p","vlan":1}])", R"("rules":[{"allow":"automatic"}])",
         R"("serial":"a")", 1);
  EXPECT_TRUE(Update("s1", R"("ports":[{"id":"p","mac":"m"}],"state":{"up":true})"));
  EXPECT_EQ(
      State().substr(State().find("| many")),
      R"(| many-switch/s1 SET u={"name":"s1","ports":[{"id":"p","vlan":1}],"mtu":2} v={"name":"s1","serial":"a","ports":[{"id":"p","mac":"m"}]} c={"name":"s1","state":{"up":true}} 2.1
| 4)") << "of the user's values the newest, and no automatic ones";
  store_->Update(ManyObject("s1", R"("mtu":7)"), EXTERNAL);
  EXPECT_TRUE(Update("s1", R"("serial":null,"state":null,"ports":[])"));
  EXPECT_EQ(Staged("s1"), R"({"name":"s1","mtu":2})") << "what is staged, not what is current";
  EXPECT_FALSE(Update("s1", R"("mtu":2,"serial":null)"));
  EXPECT_TRUE(Update("s2", R"("mtu":5)")) << "of what is not there";
  EXPECT_FALSE(Update("s3", R"("mtu":null)"));
  EXPECT_FALSE(Update("s3", R"("ports":[])"));
  EXPECT_FALSE(UpdateNextBoot(nullptr));
  EXPECT_EQ(Staged("s2") + Staged("s3"), R"({"name":"s2","mtu":5}none)");
  EXPECT_EQ(
      Data(store_->Get(Many("s1"))),
      R"({"name":"s1","rules":[{"allow":"automatic"}],"serial":"a","mtu":7,"ports":[{"id":"p","vlan":1}]})");
}

TEST_F(NextBootUpdate, RefusesWhatCannotBe) {
  PutRow("s1", R"("mtu":1)", "", "", "", 1);
  nextBoot_->Set(Object(one_, R"({"name":"a"})"));
  nextBoot_->Delete(Many("gone"));
  const std::string before = State();
  const auto update = [this](const Id& id, const char* json) {
    return [this, id, json] { UpdateNextBoot(Object(id, json)); };
  };
  const std::string refused = "VE 1090 ";
  EXPECT_EQ(Raised(update(one_, R"({"port":0,"unknown":null})"), true).substr(0, 8), refused);
  EXPECT_NE(Raised(update(one_, R"({"name":null})"), true).find("/"), std::string::npos);
  EXPECT_NE(Raised(update(Many("s1"), R"({"name":"s1","mtu":null})"), true)
                .find("nothing would be left of the object"),
            std::string::npos);
  EXPECT_NE(Raised(update(Many("gone"), R"({"name":"gone","mtu":1})"), true)
                .find("/: the object is staged to be deleted"),
            std::string::npos);
  database_.Run(
      "INSERT INTO DesiredUserConfig VALUES ('tarn','test','many-switch','','1',NULL,NULL,NULL,"
      "'DELETE')");
  EXPECT_EQ(Raised(update(Many("s1"), R"({"name":"s1","mtu":3})")).substr(0, 8), refused);
  database_.Run("DELETE FROM DesiredUserConfig WHERE Identifier='' AND Name='many-switch'");
  ExpectRaised({{"VE 2000 API should only be invoked", update(plain_, R"({"name":"a"})")},
                {"VE 2000 ", update(Many(""), R"({"mtu":1})")},
                {"CSE 1037", update({"no", "test", "tarn"}, "{}")}});
  {
    const ConfigStoreTransaction transaction(store_);
    EXPECT_EQ(Raised(update(one_, R"({"port":1})")),
              "CSE 2000 Begin Transaction failed for: UpdateNextBoot");
  }
  SetKeyValue("IS_BOOT", "true");
  EXPECT_EQ(Raised(update(one_, R"({"port":1})")),
            "VE 2000 NextBootStore is not supported during the upgrade or boot phase");
  SetKeyValue("IS_BOOT", "");
  EXPECT_EQ(State(), before);
  EXPECT_GE(FailEachStep("update", update(one_, R"({"port":1})"), [this] { return State(); }), 6);
  SetKeyValue("BOOT_MODE", "1");
  EXPECT_EQ(Raised(update(one_, R"({"port":2})")).substr(0, 38),
            "CSE 2000 Tarn host is being remediated");
}

TEST_F(NextBootUpdate, LosesNothingThatOthersStageMeanwhile) {
  const std::vector<std::string> members = {"mtu", "serial", "state", "ports"};
  const std::vector<std::string> values = {"1", "\"s\"", R"({"up":true})", R"([{"id":"p"}])"};
  for (int round = 0; round < 10; ++round) {
    nextBoot_->Reset(Many(""));
    TestSupport::InThreads(static_cast<int>(members.size()), [&](int thread) {
      const auto i = static_cast<std::size_t>(thread);
      Update("s1", "\"" + members[i] + "\":" + values[i]);
    });
    const std::string staged = Staged("s1");
    for (std::size_t i = 0; i < members.size(); ++i) {
      ASSERT_NE(staged.find("\"" + members[i] + "\":" + values[i]), std::string::npos) << staged;
    }
  }
}

}  // namespace
}  // namespace TarnConfigStore
