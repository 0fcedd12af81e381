#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "objects/division.h"
#include "objects/merge.h"
#include "objects/schema_lookup.h"
#include "support/random_objects.h"
#include "support/sanitized.h"
#include "support/store_fixture.h"
#include "validation/object_validation.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Canonical;
using TestSupport::Parsed;

class MergeAndDivision : public TestSupport::StoreFixture {
 protected:
  MergeAndDivision() { InstallType(host_, TestSupport::kManyWaysType); }
  // A layer, where there is one.
  static ObjectHandle Layer(const Id& id, const std::optional<std::string>& json) {
    return json ? Object(id, *json) : nullptr;
  }
  std::string Merged(const std::vector<std::optional<std::string>>& layers) const {
    const auto merged =
        MergeConfig(Layer(switch_, layers[0]), Layer(switch_, layers[1]), Layer(switch_, layers[2]),
                    Layer(switch_, layers[3]), schema_->GetSchemaPlace());
    return merged ? Internal::Access::Of(*merged).GetSerializedData() : "none";
  }

  std::shared_ptr<TarnSchemaStore::SchemaObject> schema_ = FindSchema(switch_);
};

TEST_F(MergeAndDivision, EveryCombinationOfLayersMergesInOrderOfPrecedence) {
  // Layer i sets "all" to its number and a member of its own.
  for (unsigned filled = 0; filled < 16; ++filled) {
    std::vector<std::optional<std::string>> layers(4);
    std::string expected = "none";
    std::string members;
    for (unsigned i = 0; i < 4; ++i) {
      if ((filled >> i & 1U) != 0) {
        const std::string all = "{\"all\":" + std::to_string(i);
        const std::string own = ",\"m" + std::to_string(i) + "\":1";
        layers[i] = all + own + "}";
        members += own;
        expected = all + members + "}";
      }
    }
    EXPECT_EQ(Merged(layers), expected) << filled;
  }
}

TEST_F(MergeAndDivision, ManyMembersMergeAsFewDo) {
  const auto members = [](int first, int last, int value) {
    std::string text;
    for (int i = first; i < last; ++i) {
      text += ",\"m" + std::to_string(i) + "\":" + std::to_string(value);
    }
    return text;
  };
  const std::string over = "{\"x\":0" + members(100, 300, 2) + ",\"m0\":null}";
  EXPECT_EQ(Merged({"{\"x\":0" + members(0, 200, 1) + "}", over, std::nullopt, std::nullopt}),
            "{\"x\":0" + members(0, 100, 1) + members(100, 200, 2) + members(200, 300, 2) + "}");
}

TEST_F(MergeAndDivision, InstancesMergeByIdAndPlainListsAreReplaced) {
  const auto merged = [&](const char* base, const char* over) {
    return Merged({base, over, std::nullopt, std::nullopt});
  };
  EXPECT_EQ(
      merged(R"({"ports":[{"id":"a","vlan":1,"policy":{"limit":1}},{"id":"b"}],"x":[1,2]})",
             R"({"ports":[{"id":"c"},{"id":"a","vlan":2,"policy":{"seen":3}}],"x":[3]})"),
      R"({"ports":[{"id":"a","vlan":2,"policy":{"limit":1,"seen":3}},{"id":"b"},{"id":"c"}],"x":[3]})");
  EXPECT_EQ(merged(R"({"rules":[{"cs_generated_id":"1","allow":"x"}]})",
                   R"({"rules":[{"cs_generated_id":"1","hits":4}]})"),
            R"({"rules":[{"cs_generated_id":"1","allow":"x","hits":4}]})");
  EXPECT_EQ(
      merged(R"({"ports":[{"id":7}]})", R"({"ports":[{"id":7},{"id":"a"},{"id":"a","vlan":1}]})"),
      R"({"ports":[{"id":7},{"id":7},{"id":"a","vlan":1}]})")
      << "a number is no id";
  EXPECT_EQ(merged(R"({"a":1,"b":{"c":1}})", R"({"a":null,"b":7,"d":null})"),
            R"({"a":1,"b":7,"d":null})")
      << "a null says nothing beside a value; other kinds replace";
}

TEST_F(MergeAndDivision, MergingThePartsGivesBackTheObjectAndValidationKnowsEachPart) {
  TestSupport::Random random;
  TestSupport::RandomObjects objects(random);
  const Id id("ways", "test", "tarn", "s");
  const auto type = FindSchema(id);
  const auto takes = [&](const RuleSet& rules, const std::string& json) {
    std::vector<ErrorInfo> errors;
    ValidateObjectData(type, Object(id, json), rules, errors, true);
    return errors.empty();
  };
  int wholes = 0;
  for (int round = 0; round < TestSupport::Rounds(5000); ++round) {
    const std::string json = objects.Make(type->GetSchemaPlace(), "s");
    SCOPED_TRACE("seed " + std::to_string(random.Seed()) + "\n" + json);
    ASSERT_TRUE(takes(SetRules(), json));
    const bool external = round % 2 == 0;
    const ColumnValues parts = DivideValue(Parsed(json), *type, external ? EXTERNAL : AUTO_CONFIG);
    const auto merged =
        MergeConfig(Layer(id, parts.automatic), Layer(id, parts.cached), Layer(id, parts.vital),
                    Layer(id, parts.user), type->GetSchemaPlace());
    ASSERT_EQ(Canonical(Internal::Access::Of(*merged).GetRoot()), Canonical(Parsed(json)));
    const std::pair<const std::optional<std::string>&, const RuleSet&> kinds[] = {
        {external ? parts.user : parts.automatic, UserRules()},
        {parts.vital, VitalRules()},
        {parts.cached, CachedRules()}};
    for (const auto& [part, rules] : kinds) {
      EXPECT_TRUE(!part || takes(rules, *part)) << *part;
      // An object of nothing but its id is one in every part, and is divided as the user's.
      if (json != R"({"id":"s"})" && takes(rules, json)) {
        ++wholes;
        ASSERT_EQ(part, json);
      }
    }
  }
  EXPECT_GT(wholes, TestSupport::Rounds(100)) << "objects of one part only";
}

}  // namespace
}  // namespace TarnConfigStore
