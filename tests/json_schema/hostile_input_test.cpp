// Values and schemas that nobody means well with.
#include "json_schema/findings_text.h"
#include "json_schema/registration.h"

#include <chrono>
#include <limits>

namespace ValidatorTest {
namespace {

/// So many arrays around a null, built in memory as no parser would.
Json::Value Nested(int levels, Json::Allocator& allocator) {
  Json::Value value;
  for (int i = 0; i < levels; ++i) {
    Json::Value outer(rapidjson::kArrayType);
    outer.PushBack(value, allocator);
    value = outer;
  }
  return value;
}

TEST(HostileValues, NestingBeyondTheLimitIsOneFinding) {
  const Json::Document schema = Parsed(R"({"items": {"$ref": "#"}, "type": ["array", "null"]})");
  Json::Document memory;
  constexpr int kMost = static_cast<int>(Json::kMaxDepth);
  EXPECT_EQ(FindingsOf(schema, Nested(kMost, memory.GetAllocator())), "");
  for (const int levels : {kMost + 1, 10000}) {
    const std::string lines = FindingsOf(schema, Nested(levels, memory.GetAllocator()));
    EXPECT_EQ(lines.find('\n'), std::string::npos);
    EXPECT_EQ(lines.substr(kMost * 2),
              ": is nested too deeply: 128 levels are the most that are allowed");
  }
  // What the parser lets in is what the validator can walk.
  EXPECT_EQ(FindingsOf("true", std::string(kMost, '[') + std::string(kMost, ']')), "");
}

TEST(HostileValues, TextsAndNumbersHaveToBeSoundWhateverTheRules) {
  const Json::Document schema =
      Parsed(R"({"additionalProperties": {"pattern": "^a", "format": "ipv4", "minimum": 5},
                 "patternProperties": {"^x": {}}})");
  Json::Document value(rapidjson::kObjectType);
  auto& allocator = value.GetAllocator();
  value.AddMember("text", Json::Value("a\xFF\x80"), allocator);
  value.AddMember(Json::Value("n\xC0me"), Json::Value("\xED\xA0\x80"), allocator);
  value.AddMember("infinite", Json::Value(std::numeric_limits<double>::infinity()), allocator);
  value.AddMember("nan", Json::Value(std::numeric_limits<double>::quiet_NaN()), allocator);
  for (const Rules& rules : {kSetRules, Rules{}}) {
    EXPECT_EQ(FindingsOf(schema, value, rules),
              "/: the member name \"n\uFFFDme\" is not valid UTF-8\n"
              "/text: the text \"a\uFFFD\uFFFD\" is not valid UTF-8\n"
              "/n\uFFFDme: the text \"\uFFFD\uFFFD\uFFFD\" is not valid UTF-8\n"
              "/infinite: expected a finite number, found an infinite number\n"
              "/nan: expected a finite number, found something that is not a number");
  }
}

TEST(HostileValues, PatternsEndInTimeAndWhatTheyLeaveOpenIsAFinding) {
  const std::string text = "\"" + std::string(28, 'a') + "!\"";
  const auto begin = std::chrono::steady_clock::now();
  // Not even where a failure would make the value valid.
  for (const char* schema : {R"({"pattern": "(a+)+$"})", R"({"not": {"pattern": "(a+)+$"}})",
                             R"({"if": {"pattern": "(a+)+$"}, "then": false})"}) {
    EXPECT_EQ(FindingsOf(schema, text),
              "/: the text " + text + " could not be checked against the pattern (a+)+$");
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
  EXPECT_EQ(FindingsOf(R"({"pattern": "^[a-z]*$"})", "\"" + std::string(30000, 'a') + "\""), "");
}

TEST(HostileValues, ManyElementsAndMembersTakeTimeInProportion) {
  std::string array = "[{}";
  std::string object = R"({"m":0)";
  for (int i = 0; i < 100000; ++i) {
    array += ",{\"id\":\"" + std::to_string(i) + "\"}";
    object += ",\"m" + std::to_string(i) + "\":" + std::to_string(i);
  }
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(FindingsOf(R"({"uniqueItems": true, "items": {"properties": {
                            "id": {"type": "string", "instanceId": true}}}})",
                       array + "]"),
            "");
  EXPECT_EQ(FindingsOf("true", object + "}"), "");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST(HostileSchemas, AreOneFindingOnTheRoot) {
  EXPECT_EQ(FindingsOf(R"({"$ref": "#"})", "1"),
            "/: the schema of this type cannot be used: at /$ref: the reference leads back to "
            "where it stands");
  const Json::Document schema =
      Parsed(R"({"properties": {"a": {"pattern": "("}, "b": {"type": "text"}}})");
  const Json::TypeSchemaView view(schema);
  const JsonValidator::Registration kept(view);
  for (int use = 0; use < 2; ++use) {
    EXPECT_EQ(FindingsOf(schema, Json::Value(1)),
              "/: the schema of this type cannot be used: at /properties/a/pattern: \"(\" is not a "
              "valid pattern: missing closing parenthesis (at byte 1) (and 1 more)");
  }
}

TEST(HostileSchemas, LongChainsOfReferencesAreRefusedBeforeTheyOverflow) {
  std::string schema = R"({"$ref": "#/definitions/d0", "definitions": {"d3000": true)";
  for (int i = 0; i < 3000; ++i) {
    schema += ",\"d" + std::to_string(i) + R"(":{"allOf":[{"$ref":"#/definitions/d)" +
              std::to_string(i + 1) + "\"}]}";
  }
  const std::string lines = FindingsOf(schema + "}}", "1");
  EXPECT_NE(lines.find("too many schemas are nested in one another"), std::string::npos) << lines;
}

}  // namespace
}  // namespace ValidatorTest
