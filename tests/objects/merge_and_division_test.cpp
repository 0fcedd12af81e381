#include "platform/config_store_document.h"

#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "objects/division.h"
#include "objects/document.h"
#include "objects/merge.h"
#include "objects/schema_lookup.h"
#include "support/captured_log.h"
#include "support/test_types.h"

#include <gtest/gtest.h>

#include <random>

namespace TarnConfigStore {
namespace {

class MergeAndDivision : public ::testing::Test {
 protected:
  MergeAndDivision() {
    InstallType(host_, TestSupport::kSwitchType);
    InstallType(host_, TestSupport::kPlainType);
    schema_ = FindSchema(id_);
  }
  std::shared_ptr<ConfigStoreObject> Layer(const std::optional<std::string>& json) const {
    if (!json) {
      return nullptr;
    }
    auto object = std::make_shared<ConfigStoreObject>(id_);
    object->SetData(json->c_str());
    return object;
  }
  std::string Merged(const std::optional<std::string>& base, const std::optional<std::string>& a,
                     const std::optional<std::string>& b,
                     const std::optional<std::string>& c) const {
    const auto merged =
        MergeConfig(Layer(base), Layer(a), Layer(b), Layer(c), schema_->GetSchemaPlace());
    return merged ? Internal::Access::Of(*merged).GetSerializedData() : "none";
  }
  std::string Parts(const char* json, USERDATA_CONTEXT context = EXTERNAL) const {
    const auto document = CreateDocumentFromString(json);
    const ColumnValues values = DivideValue(*document->GetJsonValuePtr(), *schema_, context);
    return "u=" + values.user.value_or("-") + " a=" + values.automatic.value_or("-") +
           " v=" + values.vital.value_or("-") + " c=" + values.cached.value_or("-");
  }

  TestSupport::TemporaryHost host_;
  ConfigStoreObjectId id_{"switch", "test", "tarn", "s"};
  std::shared_ptr<TarnSchemaStore::SchemaObject> schema_;
};

TEST_F(MergeAndDivision, EveryCombinationOfLayersMergesInOrderOfPrecedence) {
  // Layer i sets "all" to its number and a member of its own.
  for (int filled = 0; filled < 16; ++filled) {
    std::optional<std::string> layers[4];
    std::string members;
    int last = -1;
    for (int i = 0; i < 4; ++i) {
      if ((filled & (1 << i)) != 0) {
        const std::string own = ",\"m" + std::to_string(i) + "\":1";
        layers[i] = "{\"all\":" + std::to_string(i) + own + "}";
        members += own;
        last = i;
      }
    }
    const std::string expected =
        last < 0 ? "none" : "{\"all\":" + std::to_string(last) + members + "}";
    EXPECT_EQ(Merged(layers[0], layers[1], layers[2], layers[3]), expected) << filled;
  }
}

TEST_F(MergeAndDivision, InstancesMergeByIdAndPlainListsAreReplaced) {
  EXPECT_EQ(
      Merged(R"({"ports":[{"id":"a","vlan":1,"policy":{"limit":1}},{"id":"b"}],"x":[1,2]})",
             R"({"ports":[{"id":"c"},{"id":"a","vlan":2,"policy":{"seen":3}}],"x":[3]})",
             std::nullopt, std::nullopt),
      R"({"ports":[{"id":"a","vlan":2,"policy":{"limit":1,"seen":3}},{"id":"b"},{"id":"c"}],"x":[3]})");
  EXPECT_EQ(Merged(R"({"rules":[{"cs_generated_id":"1","allow":"x"}]})",
                   R"({"rules":[{"cs_generated_id":"1","hits":4}]})", std::nullopt, std::nullopt),
            R"({"rules":[{"cs_generated_id":"1","allow":"x","hits":4}]})");
  EXPECT_EQ(
      Merged(R"({"a":1,"b":{"c":1}})", R"({"a":null,"b":7,"d":null})", std::nullopt, std::nullopt),
      R"({"a":1,"b":7})")
      << "nulls add nothing, other kinds replace";
}

TEST_F(MergeAndDivision, DividesByTagsAtAnyDepth) {
  EXPECT_EQ(
      Parts(R"({"name":"s","mtu":9,"serial":"x","state":{"up":true}})"),
      R"(u={"name":"s","mtu":9} a=- v={"name":"s","serial":"x"} c={"name":"s","state":{"up":true}})");
  EXPECT_EQ(Parts(R"({"name":"s","mtu":9,"serial":"x"})", AUTO_CONFIG),
            R"(u=- a={"name":"s","mtu":9} v={"name":"s","serial":"x"} c=-)");
  EXPECT_EQ(Parts(R"({"name":"s","ports":[{"id":"a","vlan":1},{"id":"b","speed":2}]})"),
            R"(u={"name":"s","ports":[{"id":"a","vlan":1},{"id":"b"}]} a=- v=- )"
            R"(c={"name":"s","ports":[{"id":"a"},{"id":"b","speed":2}]})");
  EXPECT_EQ(Parts(R"({"name":"s"})"), R"(u={"name":"s"} a=- v=- c=-)");
  EXPECT_EQ(Parts(R"({"name":"s","state":{"up":true}})"),
            R"(u=- a=- v=- c={"name":"s","state":{"up":true}})");
  EXPECT_EQ(Parts(R"({"name":"s","ports":[]})"), R"(u={"name":"s","ports":[]} a=- v=- c=-)");
}

// Objects that the switch type allows, made at random.
class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  std::string Switch() {
    std::string json = R"({"name":"s")";
    json += Maybe(R"(,"mtu":)", Number()) + Maybe(R"(,"serial":)", "\"x\"");
    json += Maybe(R"(,"state":)", R"({"up":true})");
    json += Maybe(R"(,"ports":)", List("id", [this] {
                    return Maybe(R"(,"vlan":)", Number()) + Maybe(R"(,"mac":)", "\"m\"") +
                           Maybe(R"(,"speed":)", Number()) +
                           Maybe(R"(,"policy":)",
                                 "{\"limit\":" + Number() + Maybe(",\"seen\":", Number()) + "}");
                  }));
    json += Maybe(R"(,"rules":)", List("cs_generated_id", [this] {
                    return Maybe(R"(,"allow":)", "\"y\"") + Maybe(R"(,"hits":)", Number());
                  }));
    return json + "}";
  }

 private:
  std::string Number() { return std::to_string(random_() % 100); }
  std::string Maybe(const std::string& name, const std::string& value) {
    return random_() % 2 == 0 ? "" : name + value;
  }
  template <class Members>
  std::string List(const std::string& idMember, Members members) {
    std::string json = "[";
    const unsigned count = static_cast<unsigned>(random_() % 4);
    for (unsigned i = 0; i < count; ++i) {
      json += (i == 0 ? "{\"" : ",{\"") + idMember + "\":\"" + std::to_string(i) + "\"" +
              members() + "}";
    }
    return json + "]";
  }

  std::mt19937 random_;
};

TEST_F(MergeAndDivision, MergingThePartsGivesBackTheObject) {
  const unsigned seed = std::random_device()();
  RecordProperty("seed", static_cast<int>(seed));
  Generator generator(seed);
  for (int round = 0; round < 2000; ++round) {
    const std::string json = generator.Switch();
    const auto document = CreateDocumentFromString(json);
    const Json::Value& value = *document->GetJsonValuePtr();
    const USERDATA_CONTEXT context = round % 2 == 0 ? EXTERNAL : AUTO_CONFIG;
    const ColumnValues parts = DivideValue(value, *schema_, context);
    const auto merged = MergeConfig(Layer(parts.automatic), Layer(parts.cached), Layer(parts.vital),
                                    Layer(parts.user), schema_->GetSchemaPlace());
    ASSERT_TRUE(merged) << json;
    ASSERT_TRUE(ConfigStoreDocument::ValuesEqual(Internal::Access::Of(*merged).GetRoot(), value))
        << "seed " << seed << "\n"
        << json << "\n"
        << Internal::Access::Of(*merged).GetSerializedData();
    for (const auto* untagged : {&parts.user, &parts.automatic}) {
      for (const char* tagged : {"serial", "state", "mac", "speed", "seen", "hits"}) {
        ASSERT_TRUE(!*untagged || (*untagged)->find(tagged) == std::string::npos) << **untagged;
      }
    }
  }
}

}  // namespace
}  // namespace TarnConfigStore
