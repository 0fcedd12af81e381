#include "tarnconfigstore/default_instances.h"

#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/read_default.h"
#include "support/store_fixture.h"

namespace TarnConfigStore {
namespace {

using DBStore::testing::Operation;
using TestSupport::Raised;
using Objects = std::vector<std::shared_ptr<ConfigStoreObject>>;

constexpr const char* kShippedType = R"({
  "component": "tarn", "group": "test", "key": "shipped", "version": "1.0",
  "schema": {
    "type": "object",
    "properties": {
      "id": { "type": "string", "instanceId": true },
      "level": { "type": "integer" },
      "serial": { "type": "string", "vital": true },
      "rules": { "type": "array", "items": { "type": "object", "generatedInstanceId": true,
        "properties": { "allow": { "type": "string" } } } }
    }
  },
  "defaults": [
    { "instance": "b", "value": { "id": "b", "level": 2, "serial": "x" } },
    { "instance": "a", "value": { "id": "a", "level": 1, "rules": [ { "allow": "all" } ] } },
    { "instance": "v", "value": { "id": "v", "serial": "only" } }
  ]
})";

class Defaults : public TestSupport::StoreFixture {
 protected:
  Defaults() {
    InstallType(host_, kShippedType);
    all_ = std::make_shared<FilterSpecObject>(Id(""));
  }
  static ConfigStoreObjectId Id(const std::string& instance) {
    return {"shipped", "test", "tarn", instance};
  }
  static std::string Data(const Objects& objects) {
    std::string text;
    for (const auto& object : objects) {
      text +=
          object ? object->GetConfigStoreObjectId().instanceId + object->GetData() + " " : "null ";
    }
    return text;
  }
  std::shared_ptr<FilterSpecObject> all_;
};

TEST_F(Defaults, AreReadMergedWithoutMetadata) {
  const auto b = store_->GetDefaultConfig(Id("b"));
  EXPECT_EQ(b->GetData(), R"({"id":"b","serial":"x","level":2})");
  EXPECT_EQ(b->GetRevision(), 0);
  EXPECT_EQ(b->GetCreationTime() + b->GetModifiedTime(), "");
  EXPECT_EQ(b->GetVersion(), "1.0");
  EXPECT_EQ(store_->GetDefaultConfig(Id("none")), nullptr);
  EXPECT_EQ(log_.Count("0 Object not found: " + Id("none").toString()), 1);
  EXPECT_EQ(store_->GetDefaultConfig(plain_), nullptr) << "a type without shipped objects";
  EXPECT_TRUE(
      store_->GetDefaultConfigInstances(std::make_shared<FilterSpecObject>(switch_)).empty());
  EXPECT_TRUE(store_->GetDefaultConfigInstances(nullptr).empty());
  EXPECT_EQ(Data(store_->GetDefaultConfigInstances(all_)),
            R"(a{"id":"a","level":1,"rules":[{"allow":"all"}]} b{"id":"b","serial":"x","level":2} )"
            R"(v{"id":"v","serial":"only"} )");
  all_->SetValue("level", 2);
  EXPECT_EQ(Data(store_->GetDefaultConfigInstances(all_)),
            R"(b{"id":"b","serial":"x","level":2} )");
}

TEST_F(Defaults, UserPartsAreReadAlone) {
  const SchemaHandle schema = FindSchema(Id(""));
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  EXPECT_EQ(GetDefaultUserConfigInternal(Id("b"), connection, schema)->GetData(),
            R"({"id":"b","level":2})");
  EXPECT_EQ(GetDefaultUserConfigInternal(Id("v"), connection, schema), nullptr)
      << "nothing but a vital part";
  EXPECT_EQ(Data(GetDefaultUserConfigInstancesInternal(Id(""), connection, schema)),
            R"(a{"id":"a","level":1,"rules":[{"allow":"all"}]} b{"id":"b","level":2} )");
  const RowMapList rows = GetDefaultUserConfigMapList(Id("v"), connection);
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0]->Find("Value"), std::nullopt);
  DBStore::testing::SetHook([](Operation operation, std::string_view) {
    return operation == Operation::EXECUTE ? 1 : 0;
  });
  EXPECT_EQ(Raised([&] { (void)store_->GetDefaultConfig(Id("b")); }),
            "CSE 2000 Get failed: " + Id("b").toString());
  EXPECT_EQ(Raised([&] { (void)store_->GetDefaultConfigInstances(all_); }),
            "CSE 2000 Get store rows failed.");
}

TEST_F(Defaults, AreAddedWhereTheyLackAndLeftOutWhereNothingChanged) {
  Objects objects = {Object(Id("b"), R"({"id":"b","level":9})"), nullptr};
  AddDefaultConfigInstances(Id("whatever"), objects);
  EXPECT_EQ(Data(objects),
            R"(b{"id":"b","level":9} null a{"id":"a","level":1,"rules":[{"allow":"all"}]} )"
            R"(v{"id":"v","serial":"only"} )");
  EXPECT_EQ(log_.Count("4 AddDefaultConfigInstances invoked"), 1);
  objects.push_back(Object(Id("c"), R"({"id":"c"})"));
  objects[2] = Object(Id("a"), R"({"rules":[{"allow":"all"}],"level":1,"id":"a"})");
  FilterDefaultConfigInstances(Id(""), objects);
  EXPECT_EQ(Data(objects), R"(b{"id":"b","level":9} null c{"id":"c"} )");
  const std::string before = Data(objects);
  EXPECT_EQ(Raised([&] { AddDefaultConfigInstances(switch_, objects); }).substr(0, 8), "IAE 1062");
  EXPECT_EQ(Raised([&] { FilterDefaultConfigInstances(plain_, objects); }),
            "VE 2000 API called for singleton object, non-singleton expected");
  EXPECT_EQ(Raised([&] {
              AddDefaultConfigInstances({"no", "such", "type"}, objects);
            }).substr(0, 8),
            "CSE 1037");
  EXPECT_EQ(Data(objects), before);
}

}  // namespace
}  // namespace TarnConfigStore
