#include "tarnconfigstore/config_store_object.h"

#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "objects/document.h"
#include "objects/schema_lookup.h"
#include "support/captured_log.h"
#include "support/raised.h"
#include "support/test_types.h"

#include <gtest/gtest.h>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class ConfigStoreObjectTest : public ::testing::Test {
 protected:
  ConfigStoreObjectTest() {
    InstallType(host_, TestSupport::kPlainType);
    InstallType(host_, TestSupport::kSwitchType);
  }
  TestSupport::TemporaryHost host_;
  TestSupport::CapturedLog log_;
  ConfigStoreObjectId plain_{"plain", "test", "tarn"};
  ConfigStoreObjectId switch_{"switch", "test", "tarn", "vs0"};
};

TEST_F(ConfigStoreObjectTest, StartsWithItsInstanceIdAndNothingElse) {
  const ConfigStoreObject plain(plain_);
  EXPECT_EQ(plain.GetData(), "{}");
  EXPECT_EQ(Internal::Access::Of(plain).GetIdMapStr(), "{}");
  EXPECT_EQ(plain.GetRevision(), kDefaultRevision);
  EXPECT_EQ(plain.GetVersion() + plain.GetCreationTime() + plain.GetModifiedTime(), "");
  const ConfigStoreObject instance(switch_);
  EXPECT_EQ(instance.GetData(), R"({"name":"vs0"})");
  EXPECT_NE(Internal::Access::Of(instance).GetIdMapStr().find(R"("switch":"name")"),
            std::string::npos);
  EXPECT_EQ(Raised([] { ConfigStoreObject(ConfigStoreObjectId("such", "no", "tarn", "x")); }),
            "CSE 1037 No schema is installed for comp tarn grp no key such id x.");
}

TEST_F(ConfigStoreObjectTest, ReadsFallBackToTheTypesDefaults) {
  ConfigStoreObject object(plain_);
  int port = 0;
  EXPECT_EQ(object.GetValue("port", &port), 2);
  EXPECT_EQ(port, 22);
  object.SetData(R"({"port":null})");
  EXPECT_EQ(object.GetValue("port", &port), 2) << "a null member counts as absent";
  object.SetData(R"({"port":8080})");
  EXPECT_EQ(object.GetValue("port", &port), 1);
  EXPECT_EQ(port, 8080);
  std::string name;
  EXPECT_EQ(object.GetValue("name", &name), 0);
}

TEST_F(ConfigStoreObjectTest, HidesGeneratedInstanceIdsFromCallersOnly) {
  ConfigStoreObject object(plain_);
  const std::string stored =
      R"({"cs_generated_id":"1","a":{"cs_generated_id":"2"},"b":[{"cs_generated_id":"3","c":[]}]})";
  object.SetData(stored.c_str());
  EXPECT_EQ(object.GetData(), R"({"a":{},"b":[{"c":[]}]})");
  EXPECT_EQ(Internal::Access::Of(object).GetSerializedData(), stored);
}

TEST_F(ConfigStoreObjectTest, SetsMembersFromValuesThatMayBeItsOwn) {
  ConfigStoreObject object(plain_);
  object.SetData(R"({"a":{"b":[1,2]}})");
  ConfigStoreObjectImpl& data = Internal::Access::Of(object);
  data.SetValueEx("a", &data.GetRoot()["a"]);
  EXPECT_EQ(object.GetData(), R"({"a":{"b":[1,2]}})");
  data.SetValueEx("a", &data.GetRoot()["a"]["b"]);
  EXPECT_EQ(object.GetData(), R"({"a":[1,2]})");
  data.SetValueEx("whole", &data.GetRoot());
  EXPECT_EQ(object.GetData(), R"({"a":[1,2],"whole":{"a":[1,2]}})");
}

TEST_F(ConfigStoreObjectTest, TellsInstanceIdsInValues) {
  const auto schema = FindSchema(switch_);
  const auto value = CreateDocumentFromString(R"({"name":"x"})");
  EXPECT_EQ(GetInstanceIdFromValue(*value->GetJsonValuePtr(), *schema), "x");
  const auto wrong = CreateDocumentFromString(R"({"name":1})");
  EXPECT_EQ(Raised([&] { GetInstanceIdFromValue(*wrong->GetJsonValuePtr(), *schema); }),
            "CSE 1032 Member name does not hold an instance id.");
}

TEST_F(ConfigStoreObjectTest, RefusesToSayWhatJsonCannot) {
  ConfigStoreObject object(plain_);
  object.SetValue("name", "\xff");
  EXPECT_EQ(Raised([&] { Internal::Access::Of(object).GetSerializedData(); }).substr(0, 8),
            "CSE 2000");
}

}  // namespace
}  // namespace TarnConfigStore
