#include "tarnconfigstore/stored_views.h"

#include "tarnconfigstore/key_values.h"

#include "support/store_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class StoredViews : public TestSupport::StoreFixture {
 protected:
  static std::string Names(const std::vector<ConfigStoreObjectId>& ids) {
    std::string text;
    for (const ConfigStoreObjectId& id : ids) {
      text += id.group + "/" + id.key + "/" + id.instanceId + " ";
    }
    return text;
  }
  static std::string Group(const std::string& component, const std::string& group = "") {
    const GroupConfig config = GetConfigOfGroup(component, group);
    return Data(config.objects) + "gone: " + Names(config.notInstalled) +
           "unconfirmed: " + Names(config.unconfirmed);
  }
};

TEST_F(StoredViews, AGroupIsWhatIsConfirmedInItAndTellsWhatIsMissing) {
  EXPECT_EQ(Group("tarn"), "gone: unconfirmed: ");
  PutRow(Switch("c"), R"({"mtu":1})", R"({"mtu":9})", "", "", "", 0);
  PutRow(Switch("b"), R"({"mtu":2})", R"({"mtu":9})", R"({"tags":["x"]})", "", "", 1);
  PutRow(Switch("a"), R"({"mtu":3})", "", R"({"mtu":4})", "", "", 0);
  PutRow(Switch("d"), "", R"({"mtu":9})", "", "", "", 1);
  PutRow(plain_, R"({"name":"x"})", "", "", "", "", 1);
  PutRow({"gone", "other", "tarn"}, "{}", "", "", "", "", 1);
  PutRow({"plain", "test", "tarnish"}, "{}", "", "", "", "", 1);
  const std::string group = R"({"name":"x"} a{"mtu":4} b{"tags":["x"],"mtu":2} )";
  for (const char* upgrade : {"0", "2"}) {
    SetUpgradeContext(upgrade);
    EXPECT_EQ(Group("tarn", "test"), group + "gone: unconfirmed: test/switch/c ");
    EXPECT_EQ(Group("tarn"), group + "gone: other/gone/ unconfirmed: test/switch/c ");
  }
  EXPECT_EQ(Group("tarn", "tes"), "gone: unconfirmed: ");
  PutRow(plain_, "{", "", "", "", "", 1);
  Fail(Operation::GET_CONNECTION, 14);
  ExpectRaised({{"IAE 2000 A component has to be named.", [] { GetConfigOfGroup(""); }},
                {"CSE 2000 Failed to connect", [] { GetConfigOfGroup("tarn"); }}});
  DBStore::testing::SetHook({});
  EXPECT_EQ(Raised([] { GetConfigOfGroup("tarn"); }), "IAE 1080 The text is not valid JSON.");
}

TEST_F(StoredViews, DuringBootAutomaticConfigurationSeesWhatItSet) {
  const auto seen = [&](USERDATA_CONTEXT context) {
    return Data(GetConfigDuringBoot(plain_, context));
  };
  EXPECT_EQ(seen(EXTERNAL) + seen(AUTO_CONFIG), "nonenone");
  PutRow(plain_, R"({"name":"user"})", R"({"name":"pending"})", R"({"name":"auto"})", "", "", 1);
  for (const char* upgrade : {"0", "1"}) {
    for (const char* boots : {"false", "true"}) {
      SetUpgradeContext(upgrade);
      SetKeyValue("IS_BOOT", boots);
      EXPECT_EQ(seen(AUTO_CONFIG), R"({"name":"auto"})");
      EXPECT_EQ(seen(EXTERNAL), Data(store_->Get(plain_))) << upgrade << boots;
    }
  }
  ExpectRaised({{"CSE 1037", [] { GetConfigDuringBoot(Id("no", "test", "tarn"), EXTERNAL); }},
                {"VE 2000", [] { GetConfigDuringBoot(Switch(""), EXTERNAL); }}});
}

}  // namespace
}  // namespace TarnConfigStore
