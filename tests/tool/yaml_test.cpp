// YAML as the tool reads and writes it.
#include "json/equality.h"
#include "json/pointer.h"
#include "json/print.h"
#include "support/random_objects.h"
#include "yaml/yaml_reader.h"
#include "yaml/yaml_stream.h"
#include "yaml/yaml_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace tarnctl {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// A type's schema, and what is read by it.
class Type {
 public:
  explicit Type(std::string_view schema) {
    EXPECT_TRUE(Json::Parse(schema, schema_)) << schema;
    references_.emplace(schema_);
    places_.emplace(*references_, schema_);
  }
  ValuePlace Root() { return places_->Root(); }

 private:
  Json::Document schema_;
  std::optional<Json::SchemaReferences> references_;
  std::optional<Json::ValuePlaces> places_;
};

std::string Compact(const Json::Value& value) {
  std::string text;
  EXPECT_TRUE(Json::Serialize(value, text));
  return text;
}

std::string Read(std::string_view text, const FindPlace& findPlace,
                 YamlNull null = YamlNull::OF_TYPE) {
  Json::Allocator pool;
  try {
    return Compact(ReadYaml(text, findPlace, pool, null).value);
  } catch (const YamlError& error) {
    return error.what();
  }
}

std::string Read(std::string_view text) {
  return Read(text, PlaceOfData({}));
}

TEST(YamlReader, TakesAPlainScalarForWhatItsPlaceTakes) {
  Type type(R"({
    "definitions": {"name": {"type": "string"}},
    "properties": {
      "text": {"$ref": "#/definitions/name"}, "whole": {"type": "integer"}, "real": {"type": "number"},
      "flag": {"type": "boolean"}, "port": {"type": ["integer", "string"]},
      "maybe": {"type": ["string", "null"]}, "level": {"enum": ["1", "2"]},
      "list": {"items": {"type": "string"}},
      "lists": {"items": {"items": {"type": "string"}}},
      "tuple": {"items": [{"type": "string"}, {}], "additionalItems": {"type": "string"}},
      "map": {"additionalProperties": {"type": "string"}},
      "patterns": {"patternProperties": {"^a": {"type": "string"}}, "additionalProperties": false},
      "open": {"patternProperties": {"^a": {"type": "string"}}},
      "branch": {"oneOf": [{"properties": {"a": {"type": "string"}}}, {"properties": {"b": {}}}]},
      "both": {"allOf": [{"type": "string"}, {"minLength": 1}]},
      "self": {"$ref": "#"}}})");
  const std::pair<const char*, const char*> cases[] = {
      {"text: NO", R"({"text":"NO"})"},
      {"text: 1.0", R"({"text":"1.0"})"},
      {"text: ~", R"({"text":"~"})"},
      {"text:", R"({"text":""})"},
      {"text: 99999999999999999999", R"({"text":"99999999999999999999"})"},
      {"text: a\n  b", R"({"text":"a b"})"},
      {"text: |\n  a\n  b\n", R"({"text":"a\nb\n"})"},
      {"whole: '5'", R"({"whole":"5"})"},
      {"whole: 0x1F", R"({"whole":31})"},
      {"whole: 5.0", R"({"whole":5.0})"},
      {"real: 1.10", R"({"real":1.1})"},
      {"flag: True", R"({"flag":true})"},
      {"flag: ~", R"({"flag":null})"},
      {"port: 443", R"({"port":443})"},
      {"port: 8000-8099", R"({"port":"8000-8099"})"},
      {"port: 1.5", R"({"port":"1.5"})"},
      {"maybe: null", R"({"maybe":null})"},
      {"level: 1", R"({"level":"1"})"},
      {"list: [1, NO, 1.0]", R"({"list":["1","NO","1.0"]})"},
      {"lists: [[1], [2]]", R"({"lists":[["1"],["2"]]})"},
      {"tuple: [1, 1, 1]", R"({"tuple":["1",1,"1"]})"},
      {"map: {country: 47}", R"({"map":{"country":"47"}})"},
      {"patterns: {ab: 1}", R"({"patterns":{"ab":"1"}})"},
      {"open: {b: 1}", R"({"open":{"b":1}})"},
      {"branch: {a: 1, b: 1}", R"({"branch":{"a":"1","b":1}})"},
      {"both: 1", R"({"both":"1"})"},
      {"self: {self: {text: 1, other: 1}}", R"({"self":{"self":{"text":"1","other":1}}})"},
  };
  for (const auto& [text, json] : cases) {
    EXPECT_EQ(Read(text, PlaceOfData(type.Root())), json) << text;
  }
  EXPECT_EQ(Read("[{text: 1}]", PlaceOfInstances(type.Root())), R"([{"text":"1"}])");
  // A removal is one whatever the member takes.
  EXPECT_EQ(
      Read("{text: ~, whole: null, maybe: 'null'}", PlaceOfData(type.Root()), YamlNull::ALWAYS),
      R"({"text":null,"whole":null,"maybe":"null"})");
}

TEST(YamlReader, FindsTheTypesInAWholeDocument) {
  Type text(R"({"properties": {"v": {"type": "string"}}})");
  const FindPlace places = PlacesOfDocument(
      [&](const std::string& component, const std::string& group, const std::string& key) {
        return component == "c" && group == "g" && key == "k" ? std::optional(text.Root())
                                                              : std::nullopt;
      });
  EXPECT_EQ(Read("{format: 1, config: {c: {g: {k: {v: 1}, l: {v: 1}}, h: {k: {v: 1}}}}, "
                 "metadata: {c: {g: {k: {v: 1}}}}}",
                 places),
            R"({"format":1,"config":{"c":{"g":{"k":{"v":"1"},"l":{"v":1}},"h":{"k":{"v":1}}}},)"
            R"("metadata":{"c":{"g":{"k":{"v":1}}}}})");
  EXPECT_EQ(
      Read("config:\n  c:\n    g:\n      k:\n      - v: 1\n      - {v: NO}\n      x: 1\n", places),
      R"({"config":{"c":{"g":{"k":[{"v":"1"},{"v":"NO"}],"x":1}}}})");
  EXPECT_EQ(Read("{vital: {c: {g: {k: {v: 1}}}}, pending: {c: {g: {k: [{v: 1}]}}}, "
                 "staged: {c: {g: {k: [{v: 1, user: {v: 1}}]}}}}",
                 places),
            R"({"vital":{"c":{"g":{"k":{"v":"1"}}}},"pending":{"c":{"g":{"k":[{"v":"1"}]}}},)"
            R"("staged":{"c":{"g":{"k":[{"v":1,"user":{"v":"1"}}]}}}})");
}

TEST(YamlReader, ResolvesByTheCoreSchemaWhereNothingIsSaid) {
  const std::pair<const char*, const char*> cases[] = {
      {"- null\n- Null\n- ~\n-\n- ''", R"([null,null,null,null,""])"},
      {"[true, FALSE, yes, NO, on]", R"([true,false,"yes","NO","on"])"},
      {"[12, -12, +12, 012, 0o17, 0x1f, 0xg, 1_000]", R"([12,-12,12,12,15,31,"0xg","1_000"])"},
      {"[1., .5, -.5e1, 1E3, +1.5, 1e, ., 1.2.3]", R"([1.0,0.5,-5.0,1000.0,1.5,"1e",".","1.2.3"])"},
      {"[18446744073709551615, 0xffffffffffffffff]", "[18446744073709551615,18446744073709551615]"},
      {"[1:30, 2001-01-01, =, <]", R"(["1:30","2001-01-01","=","<"])"},
      {R"({"a": "\u00e9\/\x41", "b": [1]})", "{\"a\":\"\xC3\xA9/A\",\"b\":[1]}"},
      {"\xEF\xBB\xBF# all\na: 1", R"({"a":1})"},
      {"", "null"},
  };
  for (const auto& [text, json] : cases) {
    EXPECT_EQ(Read(text), json) << text;
  }
}

TEST(YamlReader, RefusesWhatItWouldDropOrAlter) {
  const std::pair<std::string, const char*> cases[] = {
      {"a: &x 1", "line 1, column 4: anchors"},
      {"a: 1\nb: *x", "line 2, column 4: anchors"},
      {"a: !!str 1", "line 1, column 4: tags"},
      {"%TAG ! x:\n--- 1", "line 1, column 1: the text is to be read as YAML 1.2"},
      {"a: 1\n---\nb: 1", "line 2, column 1: a second document"},
      {"a: 1\nb: 2\n'a': 3", "line 3, column 1: member \"a\" is named twice"},
      {"a:\n  1: x", "line 2, column 3: the name \"1\" is no text to YAML"},
      {"true: 1", "line 1, column 1: the name"},
      {"<<: {a: 1}", "line 1, column 1: merge keys"},
      {"? [a]\n: 1", "line 1, column 3: the name of a member has to be a text"},
      {"a: .nan", "line 1, column 4: JSON has no such number"},
      {"a: 99999999999999999999", "line 1, column 4: an integer of more than 64 bits"},
      {"a: 0x10000000000000000", "line 1, column 4: an integer of more than 64 bits"},
      {"a: 1e999", "line 1, column 4: a number that is too large"},
      {"a: 1\nb: \xC3", "line 2, column 4: not UTF-8"},
      {std::string("a: 1\nb\0: 2", 10), "line 2, column 2: a NUL byte"},
      {"a: 'x \xE2\x80\xA8 y'", "line 1, column 7: a line end of Unicode"},
      {"a: \x01", "line 1, column 4: control characters are not allowed"},
      {"a: [1,\n 2",
       "line 3, column 1: did not find expected ',' or ']', while parsing a flow sequence that "
       "begins in line 1"},
      {"a: 1\n b: 2", "line 2, column 3: mapping values are not allowed"},
      {R"(a: "\ud800")", "line 1"},
      {std::string(129, '['), "line 1, column 129: nested deeper than 128 levels"},
  };
  for (const auto& [text, error] : cases) {
    EXPECT_THAT(Read(text), StartsWith(error)) << text;
  }
  EXPECT_EQ(Read(std::string(128, '[') + std::string(128, ']')),
            std::string(128, '[') + std::string(128, ']'));
  // A number that cannot be kept passes for a text only where no number is taken.
  Type port(R"({"type": ["integer", "string"]})");
  EXPECT_THAT(Read("1e999", PlaceOfData(port.Root())), HasSubstr("too large"));
}

TEST(YamlReader, KnowsTheLineOfEachPlace) {
  Json::Allocator pool;
  const auto [value, lines] = ReadYaml(
      "# what it is\na: 1\nb:\n  - x\n  - c:\n      d: |\n        1\n        2\n    e: 5\n\n"
      "f/g: {h: 1,\n  i: 2}\n? long\n:\n  1\n",
      PlaceOfData({}), pool);
  const std::pair<const char*, std::size_t> cases[] = {
      {"/", 2},      {"", 2},         {"/a", 2},        {"/a/x", 2},   {"/b", 3},
      {"/b/0", 4},   {"/b/1", 5},     {"/b/1/c/d", 6},  {"/b/1/e", 9}, {"/b/7", 3},
      {"/f~1g", 11}, {"/f~1g/i", 12}, {"/f~1g/no", 11}, {"/long", 13}, {"none", 0},
  };
  for (const auto& [pointer, line] : cases) {
    EXPECT_EQ(lines.Find(value, pointer), line) << pointer;
  }
}

TEST(YamlWriter, QuotesWhatSomeReaderWouldTakeForSomethingElse) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"a":{"b":[1,{"c":"x y"}],"e":[],"f":{}},"no":null,"1":true})",
       "a:\n  b:\n  - 1\n  - c: x y\n  e: []\n  f: {}\n\"no\": null\n\"1\": true\n"},
      {R"(["NO","y","Null","~","","1e3","0x1","012","1_0","1:30","2001-01-01","<<","=","-","nan"])",
       "- \"NO\"\n- \"y\"\n- \"Null\"\n- \"~\"\n- \"\"\n- \"1e3\"\n- \"0x1\"\n- \"012\"\n- "
       "\"1_0\"\n"
       "- \"1:30\"\n- \"2001-01-01\"\n- \"<<\"\n- \"=\"\n- \"-\"\n- \"nan\"\n"},
      {R"([" a","a ","a: b","a #b","a\nb","\u0001\u0085\u2028","é"])",
       "- \" a\"\n- \"a \"\n- \"a: b\"\n- \"a #b\"\n- \"a\\nb\"\n- \"\\x01\\N\\L\"\n- \"é\"\n"},
      {"[1e20,1e-7,1.5,18446744073709551615,-0.0]",
       "- 1.0e+20\n- 1.0e-07\n- 1.5\n- 18446744073709551615\n- -0.0\n"},
      {R"("text")", "text\n"},
  };
  for (const auto& [json, yaml] : cases) {
    Json::Document value;
    ASSERT_TRUE(Json::Parse(json, value));
    std::string text;
    EXPECT_TRUE(WriteYaml(value, text));
    EXPECT_EQ(text, yaml);
  }
  std::string text;
  EXPECT_FALSE(WriteYaml(Json::Reference("\xFF"), text));
  EXPECT_EQ(text, "");
}

// The same by way of the value's JSON, laid out and cut anyhow.
std::string Streamed(const Json::Value& value, TestSupport::Random& random) {
  std::string json;
  EXPECT_TRUE(Json::Print(value, random.OneIn(2) ? Json::Layout::ONE_LINE : Json::Layout::INDENTED,
                          Json::BadText::REFUSED, json));
  std::string yaml;
  YamlStream stream([&yaml](std::string_view piece) { yaml += piece; });
  for (std::string_view left = json; !left.empty();) {
    const std::size_t length = 1 + random.Below(left.size());
    stream.Take(left.substr(0, length));
    left.remove_prefix(length);
  }
  stream.End();
  return yaml;
}

// A value of any shape, with the characters and words that YAML has uses for.
class AnyValue {
 public:
  AnyValue(TestSupport::Random& random, Json::Allocator& pool) : random_(random), pool_(pool) {}

  Json::Value Make(int depth) {
    switch (random_.Below(depth > 4 ? 6 : 8)) {
      case 0:
        return Json::Value(random_.OneIn(2));
      case 1:
        return {};
      case 2:
        return Json::Value(static_cast<std::int64_t>(random_.Below(~0UL)) >> random_.Below(63));
      case 3:
        return Json::Value(static_cast<double>(random_.Below(~0UL)) /
                           static_cast<double>(1UL << random_.Below(63)));
      case 6: {
        Json::Value list(rapidjson::kArrayType);
        for (unsigned long left = random_.Below(4); left > 0; --left) {
          list.PushBack(Make(depth + 1), pool_);
        }
        return list;
      }
      case 7: {
        Json::Value object(rapidjson::kObjectType);
        for (unsigned long left = random_.Below(4); left > 0; --left) {
          if (Json::Value name = Text(); Json::FindMember(object, Json::Text(name)) == nullptr) {
            object.AddMember(name, Make(depth + 1), pool_);
          }
        }
        return object;
      }
      default:
        return Text();
    }
  }

 private:
  Json::Value Text() {
    // One each, but for the blanks between them.
    static const std::vector<std::string> pieces = [] {
      std::vector<std::string> list = {" ", "  ", "\n", "\t", "\r", ": ", " #", "- ", "? "};
      std::istringstream words(
          ": # - ' \" \\ ~ ! &a *a % @ ` | > { } [ ] , NO y null true 0x 1 e . 1e3 _ 2001 -01 a b "
          "<< "
          "= --- ... é 😀 \x7F \x01 \xC2\x85 \xE2\x80\xA8 \xEF\xBB\xBF");
      for (std::string word; words >> word;) {
        list.push_back(word);
      }
      list.insert(list.end(),
                  {std::string(1, '\0'), std::string(140, 'k'), std::string(1100, 'l')});
      return list;
    }();
    std::string text;
    for (unsigned long left = random_.Below(5); left > 0; --left) {
      text += pieces[random_.Below(random_.OneIn(9) ? pieces.size() : pieces.size() - 2)];
    }
    return Json::Copy(text, pool_);
  }

  TestSupport::Random& random_;
  Json::Allocator& pool_;
};

TEST(Yaml, ReadsBackWhatItWrote) {
  TestSupport::Random random;
  for (int round = 0; round < 20000; ++round) {
    Json::Allocator pool;
    const Json::Value value = AnyValue(random, pool).Make(0);
    std::string text;
    ASSERT_TRUE(WriteYaml(value, text));
    ASSERT_EQ(Read(text), Compact(value)) << text;
    ASSERT_EQ(Streamed(value, random), text);
  }
}

}  // namespace
}  // namespace tarnctl
