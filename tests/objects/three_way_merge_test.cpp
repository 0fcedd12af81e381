#include "objects/three_way_merge.h"

#include "json/type_schema_view.h"
#include "support/random_objects.h"
#include "support/sanitized.h"
#include "support/test_types.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace TarnConfigStore {
namespace {

using TestSupport::Canonical;
using TestSupport::Parsed;
using TestSupport::Random;

// A type, told from its file.
class Type {
 public:
  explicit Type(const char* file) : file_(Parsed(file)), view_(file_["schema"]) {}
  Json::SchemaPlace Root() const { return view_.Root(); }

 private:
  Json::Document file_;
  Json::TypeSchemaView view_;
};

std::string TextOf(const Json::Value* value) {
  std::string text = "-";
  if (value != nullptr) {
    Json::Serialize(*value, text);
  }
  return text;
}

// What comes out, and each place that changed meanwhile: "/mtu 1 2 3!" with "!" for a conflict.
struct Outcome {
  std::string merged;
  std::string told;
  std::set<std::string> conflicts;
};

Outcome Merge(const Type& type, const std::string& base, const std::string& staged,
              const std::string& current, bool currentWins = false) {
  const Json::Document sides[] = {Parsed(base), Parsed(staged), Parsed(current)};
  const auto side = [&](int i) { return sides[i].IsNull() ? nullptr : &sides[i]; };
  Json::Document holder;
  Outcome outcome;
  const auto merged = MergeThreeWay(
      {side(0), side(1), side(2)}, type.Root(), currentWins, holder.GetAllocator(),
      [&outcome](const ChangedMeanwhile& changed) {
        outcome.told += changed.pointer + " " + TextOf(changed.values.base) + " " +
                        TextOf(changed.values.staged) + " " + TextOf(changed.values.current) +
                        (changed.conflicts ? "!" : "") + "\n";
        if (changed.conflicts) {
          outcome.conflicts.insert(changed.pointer);
        }
      });
  outcome.merged = TextOf(merged ? &*merged : nullptr);
  return outcome;
}

struct Case {
  const char* base;
  const char* staged;
  const char* current;
  const char* merged;
  const char* told;
};

TEST(ThreeWayMerge, KeepsWhatEitherSideChanged) {
  const Type type(TestSupport::kSwitchType);
  const Case cases[] = {
      {R"({"name":"s","mtu":1,"serial":"a"})", R"({"name":"s","mtu":2,"serial":"a"})",
       R"({"name":"s","mtu":1,"serial":"b"})", R"({"name":"s","mtu":2,"serial":"b"})",
       "/serial \"a\" \"a\" \"b\"\n"},
      {R"({"mtu":1,"serial":"a"})", R"({"mtu":1})", R"({"serial":"a"})", "{}", "/mtu 1 1 -\n"},
      {R"({"mtu":1})", R"({"mtu":2})", R"({"mtu":2.0})", R"({"mtu":2})", "/mtu 1 2 2.0\n"},
      {R"({"mtu":1})", R"({"mtu":2})", R"({"mtu":3})", R"({"mtu":2})", "/mtu 1 2 3!\n"},
      {R"({"mtu":1})", "{}", R"({"mtu":3})", "{}", "/mtu 1 - 3!\n"},
      {R"({"mtu":1})", R"({"mtu":2})", "{}", R"({"mtu":2})", "/mtu 1 2 -!\n"},
      {R"({"mtu":1})", "{}", "{}", "{}", "/mtu 1 - -\n"},
      // Null says nothing, but stays where it is required.
      {R"({"mtu":null})", R"({"mtu":null})", R"({"serial":"a"})", R"({"mtu":null,"serial":"a"})",
       "/serial - - \"a\"\n"},
      // Both made an object, or one took it away.
      {"{}", R"({"state":{"up":true}})", R"({"state":{"down":1}})",
       R"({"state":{"up":true,"down":1}})", "/state/down - - 1\n"},
      {R"({"state":{"up":true}})", R"({"mtu":1})", R"({"state":{"up":false}})", R"({"mtu":1})",
       "/state {\"up\":true} - {\"up\":false}!\n"},
      {R"({"state":{"up":null}})", R"({"mtu":1})", R"({"state":{}})", R"({"mtu":1})", ""},
      {R"({"state":1})", R"({"state":{"up":true}})", R"({"state":{"up":false}})",
       R"({"state":{"up":true}})", "/state 1 {\"up\":true} {\"up\":false}!\n"},
  };
  for (const Case& one : cases) {
    const Outcome outcome = Merge(type, one.base, one.staged, one.current);
    EXPECT_EQ(outcome.merged + "\n" + outcome.told, std::string(one.merged) + "\n" + one.told)
        << one.base << one.staged << one.current;
  }
  EXPECT_EQ(Merge(type, cases[3].base, cases[3].staged, cases[3].current, true).merged,
            R"({"mtu":3})");
}

// Elements as "b:1": the id and the vlan, or the id alone.
std::string Ports(const std::string& elements) {
  std::string json;
  for (std::size_t i = 0; i < elements.size(); i += elements.find(' ', i) == std::string::npos
                                                        ? elements.size()
                                                        : elements.find(' ', i) - i + 1) {
    const std::string element = elements.substr(i, elements.find(' ', i) - i);
    json += (json.empty() ? "" : ",") + std::string("{\"id\":\"") + element[0] + "\"" +
            (element.size() > 1 ? ",\"vlan\":" + element.substr(2) : "") + "}";
  }
  return R"({"ports":[)" + json + "]}";
}

TEST(ThreeWayMerge, MergesInstancesByIdAndInOrder) {
  const Type type(TestSupport::kSwitchType);
  const Case cases[] = {
      {"a:1 b:1", "a:2 b:1", "a:1 b:3", "a:2 b:3", "/ports/b/vlan"},
      {"a:1 b:1", "b:1", "a:1 b:1 c:1", "b:1 c:1", "/ports/c"},
      {"a:1 b:1", "b:1", "a:2 b:1", "b:1", "/ports/a!"},
      {"a:1 b:1", "a:1 b:2", "a:1", "a:1 b:2", "/ports/b!"},
      {"a:1", "a:1 x:1", "a:1 y:1", "a:1 y:1 x:1", "/ports/y"},
      {"a b c", "a b c", "c b a", "c b a", "/ports"},
      {"a b c", "c b a", "a x b c", "c b a x", "/ports/x"},
      {"a b c", "a b x c y", "z c b a", "z c y b x a", "/ports /ports/z"},
      {"a b c", "c b a", "b a c", "c b a", "/ports!"},
      {"a b c", "c a", "c b a", "c a", "/ports"},
  };
  for (const Case& one : cases) {
    const Outcome outcome = Merge(type, Ports(one.base), Ports(one.staged), Ports(one.current));
    std::string places;
    for (std::size_t at = 0; at < outcome.told.size(); at = outcome.told.find('\n', at) + 1) {
      const std::string line = outcome.told.substr(at, outcome.told.find('\n', at) - at);
      places += (places.empty() ? "" : " ") + line.substr(0, line.find(' ')) +
                (line.back() == '!' ? "!" : "");
    }
    EXPECT_EQ(outcome.merged + places, Ports(one.merged) + one.told)
        << one.base << " | " << one.staged << " | " << one.current;
  }
  // Ids that do not tell the elements apart make the list one value, as having none does.
  const std::string twice = R"({"ports":[{"id":"a"},{"id":"a"}]})";
  EXPECT_EQ(Merge(type, Ports("a"), twice, Ports("a b")).conflicts,
            std::set<std::string>{"/ports"});
  EXPECT_EQ(Merge(type, "{}", Ports("a"), Ports("b")).merged, Ports("b a"));
}

TEST(ThreeWayMerge, GeneratedIdsTellOnlyWhereBothSidesKeptSome) {
  const Type type(TestSupport::kSwitchType);
  const auto rules = [](const char* ids, const char* allows) {
    std::string json;
    for (std::size_t i = 0; ids[i] != '\0'; ++i) {
      json += (i == 0 ? "" : ",") + std::string(R"({"cs_generated_id":")") + ids[i] +
              R"(","allow":")" + allows[i] + "\"}";
    }
    return R"({"rules":[)" + json + "]}";
  };
  Outcome outcome = Merge(type, rules("12", "ab"), rules("12", "xb"), rules("12", "ay"));
  EXPECT_EQ(outcome.merged + outcome.told,
            rules("12", "xy") + "/rules/1/allow \"b\" \"b\" \"y\"\n");
  outcome = Merge(type, rules("12", "ab"), rules("34", "ab"), rules("12", "ay"));
  EXPECT_EQ(outcome.merged, rules("12", "ay")) << "made anew, and the same";
  EXPECT_TRUE(outcome.conflicts.empty());
  outcome = Merge(type, rules("12", "ab"), rules("34", "xb"), rules("12", "ay"));
  EXPECT_EQ(outcome.conflicts, std::set<std::string>{"/rules"});
  outcome = Merge(type, "{}", rules("3", "a"), rules("4", "a"));
  EXPECT_EQ(outcome.merged, rules("3", "a")) << "both made the same";
}

TEST(ThreeWayMerge, ASecretIsOneValue) {
  const Type type(R"({"schema":{"type":"object","properties":{
    "key":{"type":"object","secret":true,"properties":{"a":{},"b":{}}},
    "keys":{"type":"array","items":{"type":"object","secret":true,"properties":{
      "id":{"type":"string","instanceId":true},"a":{}}}}}}})");
  const auto conflicts = [&](const char* base, const char* staged, const char* current) {
    return Merge(type, base, staged, current).conflicts;
  };
  EXPECT_EQ(
      conflicts(R"({"key":{"a":1,"b":1}})", R"({"key":{"a":2,"b":1}})", R"({"key":{"a":1,"b":2}})"),
      std::set<std::string>{"/key"});
  EXPECT_EQ(conflicts(R"({"keys":[{"id":"x"}]})", R"({"keys":[{"id":"x"},{"id":"y"}]})",
                      R"({"keys":[{"id":"x","a":1}]})"),
            std::set<std::string>{"/keys"});
}

// What holds of any three objects; where each side of two changed other members, each keeps its own.
TEST(ThreeWayMerge, TakesAnySidesAndLosesNothingOfEither) {
  // Ids that are made anew with each object say nothing here.
  std::string file = TestSupport::kManyWaysType;
  const std::string_view generated = "\"generatedInstanceId\": true,";
  const Type type(file.erase(file.find(generated), generated.size()).c_str());
  Random random;
  TestSupport::RandomObjects objects(random, 4);
  int conflicting = 0;
  int merging = 0;
  for (int round = 0; round < TestSupport::Rounds(5000); ++round) {
    const std::string base = objects.Make(type.Root(), "s");
    const std::string one = objects.Make(type.Root(), "s");
    const std::string other = objects.Make(type.Root(), "s");
    SCOPED_TRACE("seed " + std::to_string(random.Seed()) + "\n" + base + "\n" + one + "\n" + other);
    const auto same = [](const Outcome& outcome, const std::string& expected) {
      return outcome.conflicts.empty() &&
             Canonical(Parsed(outcome.merged)) == Canonical(Parsed(expected));
    };
    ASSERT_TRUE(same(Merge(type, base, one, base), one));
    ASSERT_TRUE(same(Merge(type, base, base, other), other));
    ASSERT_TRUE(same(Merge(type, base, one, one), one));
    const Outcome wins[] = {Merge(type, base, one, other), Merge(type, base, one, other, true)};
    ASSERT_EQ(wins[0].told, wins[1].told);
    ASSERT_TRUE(!wins[0].conflicts.empty() || wins[0].merged == wins[1].merged);
    // Members that nobody else holds, merged as they are: each stands where its side put it.
    const Json::Document sides[] = {Parsed(base), Parsed(one), Parsed(other),
                                    Parsed(wins[0].merged), Parsed(wins[1].merged)};
    for (const char* name : {"u1", "u2", "v1", "v2", "c1", "c2", "null"}) {
      std::string values[5];
      for (std::size_t i = 0; i < 5; ++i) {
        const Json::Value* value = Json::FindMember(sides[i], name);
        values[i] = value == nullptr || value->IsNull() ? "-" : TextOf(value);
      }
      const bool changed = values[0] != values[1];
      const bool conflicts = changed && values[0] != values[2] && values[1] != values[2];
      ASSERT_EQ(wins[0].conflicts.contains(std::string("/") + name), conflicts) << name;
      ASSERT_EQ(values[3], changed ? values[1] : values[2]) << name;
      ASSERT_EQ(values[4], changed && !conflicts ? values[1] : values[2]) << name;
    }
    ++(wins[0].conflicts.empty() ? merging : conflicting);
  }
  EXPECT_GT(std::min(conflicting, merging), TestSupport::Rounds(100)) << "both happen";
}

}  // namespace
}  // namespace TarnConfigStore
