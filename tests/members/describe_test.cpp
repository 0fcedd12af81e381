// What is told of types.
#include "tarnconfigstore/explain.h"

#include "support/store_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::TypeFile;

class Describe : public TestSupport::StoreFixture {
 protected:
  /// Installs a schema, and tells of each member in a line: "/n integer|minimum 1? user".
  std::string Told(const std::string& schema, const std::string& place = "", bool reveal = false) {
    TestSupport::InstallType(host_, TypeFile("told", std::to_string(++version_), schema));
    return Lines(DescribeType(Id("told", "test", "tarn"), place, reveal));
  }
  static std::string Lines(const TypeDescription& type) {
    std::string lines;
    for (const MemberDescription& member : type.members) {
      lines += lines.empty() ? "" : "\n";
      lines +=
          member.pointer + " " + std::to_string(static_cast<int>(member.token)) + " " + member.type;
      for (const MemberLimit& limit : member.limits) {
        lines += "|" + limit.keyword + limit.value + (limit.always ? "" : "?");
      }
      lines += member.defaultValue ? " =" + *member.defaultValue : "";
      for (const ConfigPart part : member.parts) {
        lines += part == ConfigPart::USER ? "" : std::string(" ") + NameOf(part);
      }
      lines += std::string(member.isRequired ? " required" : "") +
               (member.isSecret ? " secret" : "") + (member.isReadOnly ? " readOnly" : "") +
               (member.isInstanceId ? " id" : "") +
               (member.description.empty() ? "" : " " + member.description);
    }
    return lines;
  }

  int version_ = 0;
};

TEST_F(Describe, FollowsTheSchemaAndSaysWhatHoldsSometimes) {
  EXPECT_EQ(Told(R"({"type":"object","required":["n","late"],"definitions":{
      "num":{"type":"integer","minimum":1,"description":"there","default":4}},
    "allOf":[{"properties":{"n":{"maximum":9},"late":{"type":"boolean"}},"additionalProperties":true}],
    "properties":{"n":{"$ref":"#/definitions/num","description":"here"},
      "either":{"type":"object","properties":{"is":{"enum":["x","y"]}},"oneOf":[
        {"properties":{"l":{"type":"integer","minimum":2}},"required":["l"]},{"required":["is"]}],
        "if":{"properties":{"is":{"const":"x"}}},"then":{"properties":{"is":{"minLength":1}}}},
      "t":{"type":"array","items":[{"type":"null"},{"type":"object","properties":{"d":{}}}],
        "additionalItems":{"type":"string"}},
      "p":{"type":"object","patternProperties":{"^a/":{"type":"integer","multipleOf":2}},
        "additionalProperties":{"type":"object","properties":{"z":{"readOnly":true},"never":false}}}},
    "additionalProperties":{"format":"ipv4"}})"),
            R"(/n 0 integer|minimum1|maximum9 =4 required here
/either 0 object
/either/is 0 string|enum["x","y"]|minLength1?
/either/l 0 integer|minimum2?
/t 0 array
/t/0 2 null
/t/1 2 object
/t/1/d 0 any value
/t/* 1 string
/p 0 object
/p/^a~1 3 integer|multipleOf2
/p/* 4 object
/p/*/z 0 any value readOnly
/p/*/never 0 no value
/late 0 boolean required
/* 4 any value|format"ipv4")");
}

TEST_F(Describe, TellsPartsIdsAndSecretsAndFindsPlaces) {
  const std::string schema = R"({"type":"object","vital":true,"properties":{
    "id":{"type":"string","instanceId":true},"v":{"type":["integer","null"]},
    "key":{"type":"object","secret":true,"properties":{"k":{"enum":["x"],"default":"x"}}},
    "els":{"type":"array","items":{"type":"object","properties":{"e":{"type":"integer"}}}}}})";
  EXPECT_EQ(Told(schema), R"(/id 0 string vital id
/v 0 integer or null vital
/key 0 object vital secret
/key/k 0 string|enum"***" ="***" vital secret
/els 0 array vital
/els/* 1 object vital
/els/*/e 0 integer vital)");
  EXPECT_EQ(Told(schema, "/key/k", true), R"(/key/k 0 string|enum["x"] ="x" vital secret)");
  EXPECT_EQ(Told(schema, "/els/anything/e"), "/els/*/e 0 integer vital");
  EXPECT_EQ(Told(schema, "/els/*/none") + Told(schema, "/none"), "");
  const TypeDescription type = DescribeType(Id("switch", "test", "tarn"));
  EXPECT_TRUE(type.hasInstances && !type.needsReboot);
  EXPECT_NE(
      Lines(type).find(
          "/ports 0 array vital cached\n/ports/* 1 object vital cached\n/ports/*/id 0 string id"),
      std::string::npos)
      << Lines(type);
}

// References that lead back, or that double what they lead to again and again.
TEST_F(Describe, EndsWhereASchemaHoldsItself) {
  EXPECT_EQ(
      Told(R"({"type":"object","properties":{"tree":{"$ref":"#/definitions/t"}},"definitions":{
    "t":{"type":"object","properties":{"l":{"type":"integer"},"below":{"type":"array","items":{"$ref":"#/definitions/t"}}}}}})"),
      "/tree 0 object\n/tree/l 0 integer\n/tree/below 0 array\n/tree/below/* 1 object");
  std::string definitions;
  for (int i = 0; i < 40; ++i) {
    const std::string next = R"({"$ref":"#/definitions/d)" + std::to_string(i + 1) + "\"}";
    definitions.append("\"d").append(std::to_string(i));
    definitions.append(R"(":{"type":"object","properties":{"a":)").append(next);
    definitions.append(R"(,"b":)").append(next).append("}},");
  }
  const std::string doubling =
      R"({"type":"object","properties":{"m":{"$ref":"#/definitions/d0"}},"definitions":{)" +
      definitions + R"("d40":{"type":"integer","default":1}}})";
  const std::string tooMany = "CSE 2000 There are more than 100000 members";
  ExpectRaised({{tooMany, [&] { Told(doubling); }},
                {tooMany, [] { ExplainObject(Id("told", "test", "tarn")); }},
                {tooMany, [] { GetEffectiveConfig(Id("told", "test", "tarn")); }}});
}

TEST_F(Describe, ATypeFileNeedsNoHost) {
  const std::string path = host_.Root() + "/file.json";
  TestSupport::WriteFile(
      path,
      TypeFile("file", "3", R"({"type":"object","rebootRequired":true,"properties":{"a":{}}})"));
  TarnConfigStore::TypeDescription type;
  Fail(Operation::GET_CONNECTION, 14);
  type = DescribeTypeFile(path);
  EXPECT_EQ(type.component + type.group + type.key + type.version + Lines(type),
            "tarntestfile3/a 0 any value");
  EXPECT_TRUE(type.needsReboot);
  TestSupport::WriteFile(path, TypeFile("file", "x", R"({"type":"objekt"})"));
  ExpectRaised({{"VE 2000 The type file is not valid. | /schema/type | /version",
                 [&] { DescribeTypeFile(path); }},
                {"IAE 1081", [&] { DescribeTypeFile(path + "x"); }},
                {"IAE 2000", [&] { DescribeTypeFile(host_.Root() + "/etc"); }},
                {"CSE 1037", [] { DescribeType(Id("file", "test", "tarn")); }},
                {"IAE 2000", [] { DescribeType(Id("plain", "test", "tarn"), "~"); }}});
}

}  // namespace
}  // namespace TarnConfigStore
