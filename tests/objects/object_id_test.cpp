#include "tarnconfigstore/object_id.h"

#include <gtest/gtest.h>

#include <unordered_set>

namespace TarnConfigStore {
namespace {

TEST(ObjectId, PrintsAsLogsAndMessagesKnowIt) {
  EXPECT_EQ(ConfigStoreObjectId("k1", "g1", "tarn").toString(), "comp tarn grp g1 key k1");
  EXPECT_EQ(ConfigStoreObjectId("k1", "g1", "tarn", "a1").toString(),
            "comp tarn grp g1 key k1 id a1");
  EXPECT_EQ(ConfigStoreObjectId("", "", "").toString(), "comp  grp  key ");
  EXPECT_EQ(SubObjectId("k1").toString(), "key k1");
  EXPECT_EQ(SubObjectId("k1", "3").toString(), "key k1 id 3");
  EXPECT_THROW(ConfigStoreObjectId("k", nullptr, "c"), std::logic_error);
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

TEST(ObjectId, FreshInstanceIdsAreRandomUuids) {
  const std::string id = GenerateInstanceId();
  ASSERT_EQ(id.size(), 36U);
  EXPECT_EQ(id[14], '4');
  EXPECT_NE(id, GenerateInstanceId());
}

}  // namespace
}  // namespace TarnConfigStore
