#include "platform/type_files.h"

#include <gmock/gmock.h>

#include <iterator>
#include <sstream>

namespace TypeFiles {
namespace {

using ::testing::UnorderedPointwise;

// "pointer: text" of everything that is found.
std::vector<std::string> FaultsOf(std::string_view text) {
  std::vector<std::string> faults;
  for (const Finding& finding : Check("type.json", text).findings) {
    faults.push_back(finding.field + ": " + finding.error);
  }
  return faults;
}

std::string File(const std::string& schema, const std::string& more = "") {
  return R"({"component":"tarn","group":"test","key":"sample","version":"1.0","schema":)" + schema +
         more + "}";
}

std::string Properties(const std::string& properties, const std::string& more = "") {
  return File(R"({"type":"object","properties":{)" + properties + "}" + more + "}");
}

std::string Shipped(const std::string& properties, const std::string& defaults) {
  return File(R"({"type":"object","properties":{)" + properties + R"(},"required":["a"]})",
              R"(,"defaults":[)" + defaults + "]");
}

MATCHER(Begins, "one begins with the other") {
  return std::get<0>(arg).starts_with(std::get<1>(arg));
}

// What is found, each by what it begins with.
void Expect(const std::string& file, const std::vector<std::string>& faults) {
  EXPECT_THAT(FaultsOf(file), UnorderedPointwise(Begins(), faults)) << file;
}

TEST(TypeFileCheck, GoodFilesAreGood) {
  Expect(File(R"({"type":"object"})"), {});
  Expect(File(R"({"type":"object","vital":true,"shared":true,"properties":{"a":{"vital":true}}})",
              R"(,"description":"all","$comment":"x")"),
         {});
  Expect(
      Properties(
          R"("id":{"type":"string","instanceId":true},"x~y":{"x-own":1,"readOnly":true,"secret":true},
                    "edited":{"vital":true,"properties":{"a":{"vital":false,"cached":false},
                              "b":{"markdownDescription":"*b*","enumDescriptions":[],"deprecated":true,
                                   "writeOnly":false,"examples":[1],"errorMessage":"no"}}},
                    "own":{"user":true,"solutionUser":false},
                    "list":{"items":{"type":"object","generatedInstanceId":true,
                            "properties":{"a":{"vital":true},"b":{}}}},
                    "plain":{"cached":true,"items":{"properties":{"a":{},"b":{}}}})"),
      {});
  Expect(
      Properties(R"("tree":{"$ref":"#/definitions/node","vital":true,"default":{"left":{"n":1}}})",
                 R"(,"definitions":{"node":{"type":"object","properties":{"n":{"type":"integer",
                    "default":3},"left":{"$ref":"#/definitions/node"}}}})"),
      {});
  Expect(
      Shipped(
          R"("a":{"type":"integer"},"id":{"type":"string","instanceId":true})",
          R"({"instance":"x","value":{"id":"x","a":1}},{"instance":"y","value":{"a":2,"id":"y"}})"),
      {});
}

TEST(TypeFileCheck, ResultHoldsTheTypeInTheOrderOfTheFile) {
  const TypeFile file = Check("p",
                              " {\"version\" : \"2.10\", \"schema\":{\"type\":\"object\"},\n"
                              "\"key\":\"k\",\"group\":\"g-1\",\"component\":\"c_C\"}");
  EXPECT_EQ(file.type.name, (TarnSchemaStore::TypeName{"c_C", "g-1", "k"}));
  EXPECT_EQ(file.type.text, R"({"version":"2.10","schema":{"type":"object"},"key":"k",)"
                            R"("group":"g-1","component":"c_C"})");
}

TEST(TypeFileCheck, TextThatIsNoJsonIsOneFaultWithItsPlace) {
  Expect("{\n  \"a\": 1,\n  \"b\": tru\n}", {"/: line 3, column "});
  Expect(R"({"a":1,"a":2})", {"/: line 1, column "});
  Expect("", {"/: line 1, column 1: "});
  Expect("[]", {"/: "});
}

TEST(TypeFileCheck, EachRuleIsReportedAtItsPlace) {
  const std::string id = R"({"type":"string","instanceId":true})";
  // The shape of the file and of the schema.
  Expect(
      R"({"component":"","group":"a.b","key":"k/","version":"1..0","schema":{"type":"object"},"x":1})",
      {"/x: ", "/component: a name is made of", "/group: a name", "/key: a name",
       "/version: a version is made of"});
  Expect(R"({"component":"tarn"})", {"/: ", "/: ", "/: ", "/: "});
  Expect(File("[]"), {"/schema: "});
  Expect(File("{}"), {"/schema: objects of a type are JSON objects"});
  Expect(File(R"({"type":"array"})"), {"/schema/type: objects of a type are JSON objects"});
  Expect(
      File(R"({"type":"object","$ref":"#/definitions/a","definitions":{"a":{}}})"),
      {"/schema/$ref: the root of the schema has to", "/schema/type: is ignored beside \"$ref\""});
  const std::string invalid = ": Invalid field in schema: ";
  Expect(Properties(R"("a/b":{"vitl":true,"$defs":{},"mine":1})"),
         {"/schema/properties/a~1b/vitl" + invalid +
              "\"vitl\" is neither a keyword of JSON Schema "
              "draft-07 nor an annotation of types; did you mean \"vital\"?",
          "/schema/properties/a~1b/$defs" + invalid +
              "\"$defs\" is no keyword of JSON Schema "
              "draft-07; use \"definitions\"",
          "/schema/properties/a~1b/mine" + invalid});
  Expect(Properties(R"("a":{"format":"ipv5"},"b":{"format":"x-ours"},"c":{"format":"uuid"})"),
         {"/schema/properties/a/format: is no format that is checked; these are: date, time"});
  // Flags and tags.
  Expect(File(R"({"type":"object","shared":false,"vital":1})"),
         {"/schema/shared: can only be true", "/schema/vital: has to be true or false"});
  Expect(File(R"({"type":"object","cached":true,"properties":{
               "a":{"properties":{"b":{"vital":true}}}}})"),
         {"/schema/properties/a/properties/b/vital: stands inside of what is tagged \"cached\""});
  Expect(Properties(R"("a":{"rebootRequired":true},"b":{"vital":true,"cached":true},
                     "c":{"items":{"vital":true}},"e":{"cached":true,"items":{"user":true}},
                     "d":{"anyOf":[{"properties":{"b":{"cached":true}}}]})"),
         {"/schema/properties/a/rebootRequired: is a flag of the whole type",
          "/schema/properties/b/cached: cannot stand beside",
          "/schema/properties/c/items/vital: means something at the root",
          "/schema/properties/e/items/user: contradicts the tag",
          "/schema/properties/d/anyOf/0/properties/b/cached: means something"});
  // What references lead to has to agree with where they stand, and to be found by the library.
  Expect(Properties(R"("a":{"cached":true,"$ref":"#d"},"b":{"cached":true,"$ref":"#/properties/c"},
                      "c":{"properties":{"x":{"$ref":"#d"}}},"e":{"$ref":"#/definitions/x~2"})",
                    R"(,"definitions":{"d":{"$id":"#d","vital":true},"x~2":{}})"),
         {"/schema/properties/a/$ref: leads to data that is tagged otherwise",
          "/schema/properties/b/$ref: leads to data that is tagged otherwise",
          "/schema/properties/e/$ref: the reference \"#/definitions/x~2\" is no JSON Pointer"});
  Expect(
      Properties(
          R"("a":{"anyOf":[{"$ref":"#d"}],"additionalProperties":{"$ref":"#/definitions/e"}},
                      "b":{"$ref":"#/definitions/e"})",
          R"(,"definitions":{"d":{"$id":"#d","properties":{"v":{"vital":true}}},
                      "e":{"items":{"properties":{"id":)" +
              id + R"(}}}})"),
      {"/schema/properties/a/anyOf/0/$ref: leads to instance ids, secrets, or vital",
       "/schema/properties/a/additionalProperties/$ref: leads to instance ids, secrets, or vital"});
  Expect(Properties(R"("l":{"items":{"$ref":"#/definitions/e"}})",
                    R"(,"definitions":{"e":{"properties":{"id":)" + id +
                        R"(,"v":{"vital":true},"u":{}}}})"),
         {"/schema/properties/l/items: the elements have members of several kinds, and are told"});
  // Instance ids.
  Expect(Properties(R"("a":)" + id + R"(,"b":)" + id + R"(,"c":{"properties":{"b":)" + id + "}}"),
         {"/schema/properties/b/instanceId: an object has one instance id, and this one has \"a\"",
          "/schema/properties/c/properties/b/instanceId: means something only in"});
  Expect(Properties(R"("a":{"type":"integer","instanceId":true})"),
         {"/schema/properties/a/instanceId: belongs to a property of \"type\": \"string\""});
  Expect(Properties(R"("":{"type":"string","instanceId":true})"),
         {"/schema/properties//instanceId: belongs to a property with a name"});
  Expect(Properties(R"("a":{"type":"string","instanceId":true,"vital":true})"),
         {"/schema/properties/a/instanceId: cannot be vital or cached"});
  Expect(File(R"({"type":"object","instanceId":true})"),
         {"/schema/instanceId: means something only in"});
  Expect(
      Properties(R"("a":{"generatedInstanceId":true},"sample":{"items":{"properties":{"b":)" + id +
                 R"(}}},"c":{"items":{"type":"string","generatedInstanceId":true}},
                     "d":{"items":{"generatedInstanceId":true,"properties":{"b":)" +
                 id + R"(}}},
                     "e":{"items":{"properties":{"b":{"vital":true},"c":{}}}})"),
      {"/schema/properties/a/generatedInstanceId: means something only in",
       "/schema/properties/sample: an array of instances cannot have the name",
       "/schema/properties/c/items/generatedInstanceId: belongs to elements of",
       "/schema/properties/d/items/generatedInstanceId: cannot be had beside",
       "/schema/properties/e/items: the elements have no instance id"});
  // Defaults.
  Expect(Properties(R"("a":{"type":"integer","default":"1"},"e":{"$ref":"#/definitions/e"},
                     "b":{"default":{"c":1,"d":2},"additionalProperties":false,"properties":{"c":{
                          "$ref":"#/definitions/t","default":3}}})",
                    R"(,"definitions":{"t":{"type":"string"},"e":{"type":"null","default":1}})"),
         {"/schema/properties/a/default: ", "/schema/definitions/e/default: ",
          "/schema/properties/b/default/c: ", "/schema/properties/b/default/d: ",
          "/schema/properties/b/properties/c/default: "});
  Expect(
      Shipped(R"("a":{"type":"integer"})",
              R"({"instance":"x","value":{"a":"1","z":2}},{"instance":"","value":{}},{"value":{}},
                  {"instance":"x","value":{"a":1}})"),
      {"/defaults/2: ", "/defaults/0/instance: has to be empty",
       "/defaults/0/value/a: ", "/defaults/0/value/z: ", "/defaults/1/value: ",
       "/defaults/3/instance: the file brings this instance along twice",
       "/defaults/3/instance: has to be empty"});
  Expect(
      Shipped(R"("a":)" + id,
              R"({"instance":"","value":{"a":"x"}},{"instance":"y","value":{"a":"z"}},
                  {"instance":"a\u0000b","value":{"a":"a\u0000b"}},{"instance":")" +
                  std::string(256, 'x') + R"(","value":{"a":")" + std::string(256, 'x') + R"("}})"),
      {"/defaults/0/instance: an instance id is a text of 1 to 255 bytes",
       "/defaults/0/value/a: differs from \"instance\"", "/defaults/1/value/a: differs",
       "/defaults/2/instance: an instance id", "/defaults/3/instance: an instance id"});
  // What is wrong in several places is all reported.
  Expect(
      R"({"component":"t n","group":"g","key":"k","version":"1","schema":{"type":"object","vital":0,
          "properties":{"a":{"pattern":"("}}},"defaults":7})",
      {"/defaults: ", "/component: ", "/schema/vital: ", "/schema/properties/a/pattern: "});
}

// What can never hold or is ignored is refused; what is only odd is a warning.
TEST(TypeFileCheck, WhatIsSaidInVainIsNamedAtItsPlace) {
  struct Case {
    const char* schema;  ///< of the property "a"
    const char* refused;
    const char* warned;
  };
  const Case cases[] = {
      {R"({"$ref":"#/definitions/d","minLength":1})", "/minLength: is ignored beside \"$ref\"", ""},
      {R"({"$ref":"#/definitions/d","title":"t","default":"x","vital":true,"definitions":{}})", "",
       ""},
      {R"({"minimum":5,"maximum":4})", "/minimum: leaves no value beside \"maximum\": nothing", ""},
      {R"({"exclusiveMinimum":4,"maximum":4})", "/exclusiveMinimum: leaves no value", ""},
      {R"({"minimum":4,"maximum":4,"exclusiveMaximum":5})", "", ""},
      {R"({"minLength":9007199254740993,"maxLength":9007199254740992})", "/minLength: leaves", ""},
      {R"({"maxProperties":1,"properties":{"b":{},"c":{}},"required":["b","c"]})",
       "/maxProperties: leaves no room", ""},
      {R"({"then":{"type":"null"}})", "/then: is ignored without \"if\"", ""},
      {R"({"if":{"type":"null"}})", "", "/if: changes nothing without"},
      {R"({"items":{},"additionalItems":false})", "/additionalItems: is ignored unless", ""},
      {R"({"type":"integer","minLength":1,"format":"port"})", "",
       "/minLength: changes nothing: it is about a text, and the type is an integer"},
      {R"({"type":"integer","format":"ipv4"})", "", "/format: changes nothing: it is about a text"},
      {R"({"type":"string","const":1})",
       "/const: this value can never be given: expected a text, found 1", ""},
      {R"({"type":["string","null"],"enum":["a",1,null]})", "",
       "/enum/1: this value can never be given: expected a text or null, found 1"},
      {R"({"pattern":"^b","enum":["a"]})", "/enum/0: this value can never be given: the text", ""},
      {R"({"allOf":[{"type":"string"},{"$ref":"#/definitions/n"}]})", ": no value is of all the",
       ""},
      {R"({"properties":{"bee":{}},"required":["bea"]})",
       "/required/0: member \"bea\" is required and can never be given: nothing declares it, and "
       "the "
       "object is closed to other members; did you mean \"bee\"?",
       ""},
      {R"({"properties":{"b":false},"required":["b"],"additionalProperties":true})",
       "/required/0: member \"b\" is required and can never", ""},
      {R"({"additionalProperties":{},"properties":{"b":{}},"required":["c"]})", "",
       "/required/0: member \"c\" is required and declared nowhere"},
      {R"({"properties":{"b":{}},"anyOf":[{"required":["b"]},{"required":["c"]}]})", "",
       "/anyOf/1/required/0: member \"c\" is required and can never be given"},
      {R"({"properties":{"b":{}},"not":{"required":["c"]},"patternProperties":{"^d":{}},
           "allOf":[{"properties":{"e":{}},"required":["b","d1","e"]}]})",
       "", ""},
  };
  const std::string around = R"(,"definitions":{"d":{"type":"string"},"n":{"type":"null"}})";
  for (const Case& one : cases) {
    const TypeFile file = Check("p", Properties(std::string(R"("a":)") + one.schema, around));
    const auto expect = [&](const std::vector<Finding>& findings, std::string_view text) {
      ASSERT_EQ(findings.size(), text.empty() ? 0U : 1U) << one.schema;
      for (const Finding& finding : findings) {
        EXPECT_THAT(finding.field + ": " + finding.error,
                    testing::StartsWith("/schema/properties/a" + std::string(text)));
      }
    };
    expect(file.findings, one.refused);
    expect(file.warnings, one.warned);
  }
}

TEST(TypeFileCheck, VersionsAreComparedNumberByNumber) {
  std::istringstream list(
      "0.9 1 1.0.1 1.2 1.10 2.0 2.1.0.5 99999999999999999999.1 100000000000000000000");
  const std::vector<std::string> ascending(std::istream_iterator<std::string>(list), {});
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    for (std::size_t j = 0; j < ascending.size(); ++j) {
      const int order = CompareVersions(ascending[i], ascending[j]);
      EXPECT_EQ(order < 0, i < j) << ascending[i] << " " << ascending[j];
      EXPECT_EQ(order > 0, i > j) << ascending[i] << " " << ascending[j];
    }
  }
  EXPECT_EQ(CompareVersions("1", "1.0.0"), 0);
  EXPECT_EQ(CompareVersions("1.02", "1.2"), 0);
}

}  // namespace
}  // namespace TypeFiles
