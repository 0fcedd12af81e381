#include "schema/keep_type.h"
#include "schema/loaded_type.h"

#include <gmock/gmock.h>

namespace TarnSchemaStore {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::ThrowsMessage;
using Handle = std::shared_ptr<SchemaObject>;

Handle Load(const std::string& schema) {
  return LoadedType::FromText({"tarn", "test", "sample"}, TestSupport::TypeText("sample", schema));
}

Handle LoadProperties(const std::string& properties) {
  return Load(R"({"type":"object","properties":{)" + properties + "}}");
}

std::string Text(const std::shared_ptr<TarnConfigStore::JsonDoc>& document) {
  std::string text = "none";
  if (document) {
    Json::Serialize(*document->GetJsonValuePtr(), text);
  }
  return text;
}

TEST(SchemaObject, KindOfATypeComesFromItsLeaves) {
  const std::pair<int, const char*> types[] = {
      {CONFIG_USER, R"({"properties":{"a":{},"b":{"properties":{"c":{}}}}})"},
      // References that go round in a circle or lead nowhere.
      {CONFIG_USER, R"({"properties":{"a":{"$ref":"#/properties/b"},"b":{"$ref":"#/properties/a"},
                                      "c":{"$ref":"#/definitions/none"}}})"},
      {CONFIG_VITAL, R"({"properties":{"id":{"instanceId":true},"a":{"vital":true}}})"},
      {CONFIG_CACHED, R"({"cached":true,"properties":{"a":{},"id":{"instanceId":true}}})"},
      {CONFIG_VITAL_AND_CACHED, R"({"properties":{"a":{"vital":true},"b":{"cached":true}}})"},
      {CONFIG_MIXED,
       R"({"properties":{"a":{"items":{"properties":{"b":{"cached":true},"c":{}}}}}})"}};
  for (const auto& [expected, schema] : types) {
    EXPECT_EQ(Load(schema)->GetConfigType(), expected) << schema;
  }
}

TEST(SchemaObject, IdMapNamesTheMemberOfTheTypeAndOfEachArrayOfInstances) {
  const Handle type = LoadProperties(R"(
      "name":{"type":"string","instanceId":true},
      "plain":{"items":{"properties":{"x":{}}}},
      "nics":{"items":{"properties":{"mac":{"instanceId":true},
                                     "routes":{"items":{"properties":{"to":{"instanceId":true}}}}}}},
      "logs":{"items":{"generatedInstanceId":true,"properties":{"text":{}}}})");
  EXPECT_TRUE(type->IsNonSingleton());
  EXPECT_EQ(Text(type->GetIdMap()),
            R"({"sample":"name","nics":"mac","logs":"cs_generated_id","routes":"to"})");
  // An object of a type without instances would otherwise be given an instance id.
  const Handle likeTheType =
      LoadProperties(R"("sample":{"items":{"properties":{"id":{"instanceId":true}}}})");
  EXPECT_EQ(Text(likeTheType->GetIdMap()), "none");
}

TEST(SchemaObject, PropertiesAreTypesOfTheirOwnThatOutliveTheHandleToTheWhole) {
  Handle type = LoadProperties(R"(
      "count":{"type":"integer","default":3},
      "lease":{"$ref":"#/properties/old"},
      "old":{"type":"object","cached":true,"default":{},
             "properties":{"ttl":{"default":60},"from":{"default":"pool"}}},
      "nics":{"items":{"$ref":"#/properties/nic"}},
      "nic":{"properties":{"mac":{"instanceId":true},"mtu":{"default":1500},
                           "peers":{"items":{"$ref":"#/properties/nic"}}}})");
  EXPECT_EQ(Text(type->GetDefaults()), R"({"count":3,"lease":{},"old":{}})");
  EXPECT_EQ(type->GetPropertySchema("count"), nullptr);
  EXPECT_EQ(type->GetPropertySchema("missing"), nullptr);
  EXPECT_TRUE(Json::FindMember(*type->GetPropertyValueSchema("lease"), "cached")->IsTrue());
  EXPECT_EQ(type->GetPropertyValueSchema("missing"), nullptr);

  EXPECT_EQ(Text(type->GetPropertySchema("lease")->GetDefaults()), R"({"ttl":60,"from":"pool"})");
  EXPECT_EQ(type->GetPropertySchema("old")->GetConfigType(), CONFIG_CACHED);
  EXPECT_TRUE(type->GetPropertySchema("old")->IsCached());

  const Handle nic = type->GetPropertySchema("nics");
  EXPECT_EQ(nic, type->GetPropertySchema("nics"));
  type.reset();
  EXPECT_TRUE(nic->IsNonSingleton());
  EXPECT_EQ(nic->GetKey(), "nics");
  EXPECT_EQ(Text(nic->GetIdMap()), R"({"nics":"mac","peers":"mac"})");
  EXPECT_EQ(Text(nic->GetPropertySchema("peers")->GetPropertySchema("peers")->GetDefaults()),
            R"({"mtu":1500})");
}

TEST(SchemaObject, DamagedDocumentIsRefusedByName) {
  for (const char* text : {"{", "[]", R"({"version":"1"})", R"({"schema":{}})"}) {
    const auto load = [text] { LoadedType::FromText({"tarn", "test", "sample"}, text); };
    EXPECT_THAT(load, ThrowsMessage<std::runtime_error>(HasSubstr("tarn/test/sample"))) << text;
  }
}

}  // namespace
}  // namespace TarnSchemaStore
