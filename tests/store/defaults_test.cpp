#include "tarnconfigstore/default_instances.h"

#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/read_default.h"
#include "support/store_fixture.h"

namespace TarnConfigStore {
namespace {

constexpr const char* kSchema = R"({ "type": "object", "properties": {
    "id": { "type": "string", "instanceId": true },
    "level": { "type": "integer" }, "serial": { "type": "string", "vital": true },
    "rules": { "type": "array", "items": { "type": "object", "generatedInstanceId": true,
      "properties": { "allow": { "type": "string" } } } } } })";
constexpr const char* kShipped = R"(
    { "instance": "b", "value": { "id": "b", "level": 2, "serial": "x" } },
    { "instance": "a", "value": { "id": "a", "level": 1, "rules": [ { "allow": "all" } ] } },
    { "instance": "v", "value": { "id": "v", "serial": "only" } })";

class Defaults : public TestSupport::StoreFixture {
 protected:
  Defaults() { InstallType(host_, TestSupport::TypeFile("shipped", "1.0", kSchema, kShipped)); }
  static Id Shipped(const std::string& instance) { return {"shipped", "test", "tarn", instance}; }

  const std::string a_ = R"(a{"id":"a","level":1,"rules":[{"allow":"all"}]} )";
  const std::string v_ = R"(v{"id":"v","serial":"only"} )";
};

TEST_F(Defaults, AreReadMergedWithoutMetadata) {
  const std::string b = R"({"id":"b","serial":"x","level":2})";
  const auto object = store_->GetDefaultConfig(Shipped("b"));
  EXPECT_EQ(Data(object), b);
  EXPECT_EQ(object->GetRevision(), 0);
  EXPECT_EQ(object->GetCreationTime() + object->GetModifiedTime(), "");
  EXPECT_EQ(object->GetVersion(), "1.0");
  EXPECT_EQ(store_->GetDefaultConfig(Shipped("none")), nullptr);
  EXPECT_EQ(log_.Count("0 Object not found: " + Shipped("none").toString()), 1);
  EXPECT_EQ(store_->GetDefaultConfig(plain_), nullptr) << "a type without shipped objects";
  const auto all = [&](const Id& id, const char* conditions = "{}") {
    return Data(store_->GetDefaultConfigInstances(Filter(id, conditions)));
  };
  EXPECT_EQ(all(switch_), "");
  EXPECT_EQ(all(Shipped("")), a_ + "b" + b + " " + v_);
  EXPECT_EQ(all(Shipped(""), R"({"level":2})") + all(Shipped("v")), "b" + b + " " + v_);
}

TEST_F(Defaults, UserPartsAreReadAlone) {
  const SchemaHandle schema = FindSchema(Shipped(""));
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  EXPECT_EQ(Data(GetDefaultUserConfigInternal(Shipped("b"), connection, schema)),
            R"({"id":"b","level":2})");
  EXPECT_EQ(GetDefaultUserConfigInternal(Shipped("v"), connection, schema), nullptr)
      << "nothing but a vital part";
  EXPECT_EQ(Data(GetDefaultUserConfigInstancesInternal(Shipped(""), connection, schema)),
            a_ + R"(b{"id":"b","level":2} )");
  const RowMapList rows = GetDefaultUserConfigMapList(Shipped("v"), connection);
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0]->Find("Value"), std::nullopt);
  Fail(Operation::EXECUTE);
  ExpectRaised({{"CSE 2000 Get failed: " + Shipped("b").toString(),
                 [&] { store_->GetDefaultConfig(Shipped("b")); }},
                {"CSE 2000 Get store rows failed.",
                 [&] { store_->GetDefaultConfigInstances(Filter(Shipped(""))); }}});
}

TEST_F(Defaults, AreAddedWhereTheyLackAndLeftOutWhereNothingChanged) {
  const std::string b = R"(b{"id":"b","level":9} )";
  Objects objects = {Object(Shipped("b"), R"({"id":"b","level":9})"), nullptr};
  AddDefaultConfigInstances(Shipped("whatever"), objects);
  EXPECT_EQ(Data(objects), b + "none " + a_ + v_);
  EXPECT_EQ(log_.Count("4 AddDefaultConfigInstances invoked"), 1);
  objects.push_back(Object(Shipped("c"), R"({"id":"c"})"));
  objects[2] = Object(Shipped("a"), R"({"rules":[{"allow":"all"}],"level":1,"id":"a"})");
  FilterDefaultConfigInstances(Shipped(""), objects);
  EXPECT_EQ(Data(objects), b + R"(none c{"id":"c"} )");
  const Id unknown("no", "such", "type");
  ExpectRaised({{"IAE 1062", [&] { AddDefaultConfigInstances(switch_, objects); }},
                {"VE 2000 API called for singleton object, non-singleton expected",
                 [&] { FilterDefaultConfigInstances(plain_, objects); }},
                {"CSE 1037", [&] { AddDefaultConfigInstances(unknown, objects); }}});
  EXPECT_EQ(Data(objects), b + R"(none c{"id":"c"} )");
}

}  // namespace
}  // namespace TarnConfigStore
