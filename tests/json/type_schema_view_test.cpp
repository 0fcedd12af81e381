#include "json/type_schema_view.h"

#include "json/pointer.h"

#include <gtest/gtest.h>

namespace Json {
namespace {

std::string Kinds(unsigned kinds) {
  std::string text;
  for (const auto& [kind, letter] :
       {std::pair(Kind::USER, 'u'), std::pair(Kind::VITAL, 'v'), std::pair(Kind::CACHED, 'c')}) {
    text += (kinds & static_cast<unsigned>(kind)) != 0 ? std::string(1, letter) : "";
  }
  return text;
}

// The place at a path of property names, "*" standing for a list's elements: its own kind, the
// kinds below it, and the member that holds its id.
void Expect(std::string_view path, const std::string& expected, const std::string& schema) {
  Document document;
  EXPECT_TRUE(Parse(schema, document, Origin::OUTSIDE)) << schema;
  const TypeSchemaView view(document);
  SchemaPlace place = view.Root();
  const auto names = ParsePointer(path);
  for (const std::string& name : *names) {
    place = name == "*" ? place.Items() : place.Property(name);
  }
  const std::string id(place.InstanceIdMember());
  EXPECT_EQ(Kinds(static_cast<unsigned>(place.OwnKind())) + ":" + Kinds(place.Kinds()) +
                (id.empty() ? "" : " " + id),
            expected)
      << schema << " " << path;
}

// A schema with a vital property "a", and more.
std::string WithVital(const std::string& more, const std::string& properties = "") {
  return "{" + more + R"("properties":{"a":{"vital":true})" + properties + "}}";
}

TEST(TypeSchemaView, TellsTheKindsOfEachPlace) {
  Expect("", "u:u", "{}");
  Expect("", "v:v", R"({"vital":true})");
  Expect("", "u:v", WithVital(""));
  // What is said not to be vital is what it would be without the word.
  Expect("/b", "u:u", WithVital("", R"(,"b":{"vital":false,"cached":false})"));
  Expect("/a/b", "v:v",
         R"({"properties":{"a":{"vital":true,"properties":{"b":{"vital":false}}}}})");
  Expect("/unknown", "u:u", WithVital(""));
  Expect("/beyond", "v:v", R"({"vital":true,"additionalProperties":true})");
  Expect("", "u:vc", WithVital("", R"(,"b":{"cached":true})"));
  // What an object admits beside its properties is the user's.
  Expect("", "u:uv", WithVital(R"("additionalProperties":{},)"));
  Expect("", "u:v", WithVital(R"("additionalProperties":false,)"));
  Expect("", "u:uv", WithVital(R"("patternProperties":{"^x":{}},)"));
  Expect("", "u:uv", WithVital(R"("anyOf":[{"properties":{"b":{}}}],)"));
  Expect("", "u:v", WithVital(R"("anyOf":[{"required":["a"]}],)"));
  Expect("", "u:uv", WithVital(R"("if":{"properties":{"b":{}}},)"));
  Expect("", "u:uv", WithVital(R"("dependencies":{"a":{"additionalProperties":true}},)"));
  Expect("", "u:v", WithVital(R"("not":{"properties":{"b":{}}},)"));
  Expect("", "u:uv", WithVital(R"("allOf":[{"$ref":"#/definitions/d"}],
           "definitions":{"d":{"allOf":[{"properties":{"b":{}}}]}},)"));
  Expect("/x", "u:uv",
         R"({"allOf":[{"properties":{"x":{"properties":{"b":{}}}}}],"properties":{"x":)" +
             WithVital("") + "}}");
  // Ids belong to every part; where nothing else is known, the place has its own kind.
  Expect("", "u:u id", R"({"properties":{"id":{"instanceId":true}}})");
  Expect("", "v:v id", R"({"vital":true,"properties":{"id":{"instanceId":true}}})");
  Expect("", "u:uv", WithVital("", R"(,"l":{"items":{"properties":{"id":{"instanceId":true}}}})"));
  Expect(
      "/l", "c:c",
      R"({"properties":{"l":{"cached":true,"items":{"properties":{"id":{"instanceId":true}}}}}})");
  Expect("/l/*", "u:v cs_generated_id",
         R"({"properties":{"l":{"items":)" + WithVital(R"("generatedInstanceId":true,)") + "}}}");
  Expect("/l/*", "u:u", R"({"properties":{"l":{"items":[{},{}]}}})");
  Expect("/l", "u:v", R"({"properties":{"l":{"items":{"items":)" + WithVital("") + "}}}}");
  // References, by pointer and by name, with tags beside them or where they lead.
  Expect("/l/*", "u:uc id",
         R"({"properties":{"l":{"items":{"$ref":"#p"}}},"definitions":{"p":{"$id":"#p",
           "properties":{"id":{"$ref":"#i"},"s":{"cached":true},"n":{}}},
           "i":{"$id":"#i","instanceId":true}}})");
  Expect("/x", "v:v",
         R"({"properties":{"x":{"vital":true,"$ref":"#/definitions/d"}},"definitions":{"d":{}}})");
  Expect("/y", "v:v", R"({"properties":{"y":{"$ref":"#/properties/x"},"x":{"vital":true}}})");
  Expect("/lost", "u:u", R"({"properties":{"lost":{"$ref":"#/definitions/no"}}})");
  // A tree of trees.
  Expect("/t/of/*/of", "u:c",
         R"({"properties":{"t":{"$ref":"#/definitions/t"}},"definitions":{"t":{"properties":{
           "seen":{"cached":true},"of":{"items":{"$ref":"#/definitions/t"}}}}}})");
}

}  // namespace
}  // namespace Json
