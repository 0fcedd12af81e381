#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "support/store_fixture.h"

#include <unordered_set>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

using ConfigStoreObjectTest = TestSupport::StoreFixture;

TEST_F(ConfigStoreObjectTest, StartsWithItsInstanceIdAndNothingElse) {
  const ConfigStoreObject plain(plain_);
  EXPECT_EQ(plain.GetData(), "{}");
  EXPECT_EQ(Internal::Access::Of(plain).GetIdMapStr(), "{}");
  EXPECT_EQ(plain.GetRevision(), kDefaultRevision);
  EXPECT_EQ(plain.GetVersion() + plain.GetCreationTime() + plain.GetModifiedTime(), "");
  const ConfigStoreObject instance(switch_);
  EXPECT_EQ(instance.GetData(), R"({"name":"s1"})");
  EXPECT_NE(Internal::Access::Of(instance).GetIdMapStr().find(R"("switch":"name")"),
            std::string::npos);
  EXPECT_EQ(Raised([] { ConfigStoreObject(Id("such", "no", "tarn", "x")); }),
            "CSE 1037 No schema is installed for comp tarn grp no key such id x.");
}

TEST_F(ConfigStoreObjectTest, ReadsFallBackToTheTypesDefaults) {
  ConfigStoreObject object(plain_);
  const auto port = [&](const char* json) {
    int value = 0;
    object.SetData(json);
    const int origin = object.GetValue("port", &value);
    return std::pair(origin, value);
  };
  EXPECT_EQ(port("{}"), std::pair(2, 22));
  EXPECT_EQ(port(R"({"port":null})"), std::pair(2, 22)) << "a null member counts as absent";
  EXPECT_EQ(port(R"({"port":8080})"), std::pair(1, 8080));
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
  object.SetValue("name", "\xff");
  EXPECT_EQ(Raised([&] { data.GetSerializedData(); }).substr(0, 8), "CSE 2000") << "not UTF-8";
}

TEST(ObjectId, PrintsAsLogsAndMessagesKnowIt) {
  EXPECT_EQ(ConfigStoreObjectId("k1", "g1", "tarn").toString(), "comp tarn grp g1 key k1");
  EXPECT_EQ(ConfigStoreObjectId("k1", "g1", "tarn", "a1").toString(),
            "comp tarn grp g1 key k1 id a1");
  EXPECT_EQ(SubObjectId("k1").toString() + SubObjectId("k1", "3").toString(), "key k1key k1 id 3");
  EXPECT_THROW(ConfigStoreObjectId("k", nullptr, "c"), std::logic_error);
  const std::string id = GenerateInstanceId();
  ASSERT_EQ(id.size(), 36U);
  EXPECT_EQ(id[14], '4') << "a random UUID";
  EXPECT_NE(id, GenerateInstanceId());
}

TEST(ObjectId, IsToldApartByEveryFieldAlthoughHashesMayMeet) {
  const ConfigStoreObjectId left("ab", "c", "tarn");
  const ConfigStoreObjectId right("a", "bc", "tarn");
  EXPECT_EQ(hashCsoId(left), hashCsoId(right));
  // Other programs of the host compute the same number.
  EXPECT_EQ(hashCsoId(left), std::hash<std::string>()("abctarn"));
  const std::unordered_set<ConfigStoreObjectId> ids = {
      left, right, {"ab", "c", "tarn", "x"}, {"Ab", "c", "tarn"}, left};
  EXPECT_EQ(ids.size(), 4U);
  EXPECT_NE(SubObjectId("a"), SubObjectId("a", "1"));
}

}  // namespace
}  // namespace TarnConfigStore
