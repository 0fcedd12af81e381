// Values and schemas that nobody means well with.
#include "json_schema/findings_text.h"
#include "json_schema/registration.h"
#include "support/sanitized.h"

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

/// A text of JSON: so many times the same, and an end.
std::string Repeated(int times, const std::string& part, const std::string& end) {
  std::string text = "\"";
  for (int i = 0; i < times; ++i) {
    text += part;
  }
  return text + end + "\"";
}

// Nor do "not" and "if" make anything else of it.
TEST(HostileValues, WhatTakesTooMuchWorkIsAFindingAndNeverAccepted) {
  const auto expect = [](const std::string& schema, const std::string& value,
                         const std::string& further, const Rules& rules = kSetRules) {
    const std::string found = FindingsOf(schema, value, rules);
    EXPECT_TRUE(found.ends_with(" could not be checked" + further + ": it takes too much work") &&
                found.find('\n') == std::string::npos)
        << schema << " " << found;
  };
  const std::string block = std::string(50000, 'a') + "b";
  for (const auto& [pattern, text] : {
           std::pair<std::string, std::string>("(a+)+$", Repeated(28, "a", "!")),
           {R"(\s+$)", Repeated(1000000, " ", "x")},
           {"a{60000}b", Repeated(200, block, "")},
           {"(?<=a{60000}).", Repeated(20, block, "")},
           {R"((a*)(\1c|c))", Repeated(20000, "a", "bc")},
           {"(?:(?=a+)a)*c", Repeated(20000, "a", "bc")},
       }) {
    // Each spends a whole budget, and the matcher is not what sanitizers look into.
    if (TestSupport::kSanitized && text.size() > 100) {
      continue;
    }
    Json::Document schema(rapidjson::kObjectType);
    schema.AddMember("pattern", Json::Copy(pattern, schema.GetAllocator()), schema.GetAllocator());
    std::string plain;
    Json::Serialize(schema, plain);
    const std::string further = " against the pattern " + pattern;
    expect(R"({"not": )" + plain + "}", text, further);
    if (text.size() < block.size()) {
      expect(plain, text, further);
      expect(R"({"if": )" + plain + R"(, "then": false})", text, further);
    }
  }
  for (const Rules& rules : {Rules{0}, Rules{8}}) {
    expect(R"({"if": {"pattern": "(a+)+$"}, "then": {"required": ["b"]}})", Repeated(28, "a", "!"),
           " against the pattern (a+)+$", rules);
  }
  std::string forth = R"({"0":0)";
  std::string back;
  for (int i = 1, last = 59999; i <= last; ++i) {
    forth += ",\"" + std::to_string(i) + "\":0";
    back += "\"" + std::to_string(last + 1 - i) + "\":0,";
  }
  back += R"("0":0})";
  expect(R"({"not": {"enum": [)" + forth + "}]}}", "{" + back, "");
  std::string nested = "1";
  for (int i = 0; i < 30; ++i) {
    nested = R"({"a":)" + nested + "}";
  }
  const std::string down = R"({"properties": {"a": {"$ref": "#/definitions/d"}}})";
  for (const char* keyword : {"anyOf", "oneOf"}) {
    if (TestSupport::kSanitized && keyword != std::string("anyOf")) {
      break;
    }
    const std::string definitions = R"("definitions": {"d": {")" + std::string(keyword) + "\": [" +
                                    down + "," + down + R"(], "type": "object"}})";
    expect("{" + definitions + R"(, "allOf": [{"$ref": "#/definitions/d"}]})", nested, "");
    expect("{" + definitions + R"(, "not": {"$ref": "#/definitions/d"}})", nested, "");
  }
}

TEST(HostileValues, WhatLargeObjectsTakeIsThere) {
  std::string array = "[{}";
  std::string integers = "[0.5";
  std::string object = R"({"m":0)";
  constexpr int kMany = TestSupport::Rounds(100000);
  for (int i = 0; i < kMany; ++i) {
    const std::string id = "\"" + std::to_string(i) + "\"";
    array += ",{\"id\":" + id + "," + id + ":" + id + "}";
    integers += "," + std::to_string(9000000000000000000 + i);  // many to one double
    object += ",\"m" + std::to_string(i) + "\":" + std::to_string(i);
  }
  for (const auto& [schema, value] : {
           std::pair<std::string, std::string>("true", object + "}"),
           {R"({"uniqueItems": true, "items": {"additionalProperties": {"type": "string"},
                "properties": {"id": {"type": "string", "instanceId": true}}}})",
            array + "]"},
           {R"({"uniqueItems": true})", integers + "]"},
           {R"({"pattern": "^[a-z]*$"})", Repeated(1000000, "a", "")},
           {R"({"pattern": "^([A-Za-z0-9+/]{4})*([A-Za-z0-9+/]{2}==)?$"})",
            Repeated(250000, "abc/", "")},
           {R"({"pattern": "^(?:[a-z]+ )+$"})", Repeated(100000, "text and ", "")},
       }) {
    EXPECT_EQ(FindingsOf(schema, value), "") << schema;
  }
  integers.replace(integers.rfind(','), 1, ",9000000000000000000.0,");
  EXPECT_EQ(
      FindingsOf(R"({"uniqueItems": true})", integers + "]"),
      "/: no two elements may be equal, but elements 1 and " + std::to_string(kMany) + " are");
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
