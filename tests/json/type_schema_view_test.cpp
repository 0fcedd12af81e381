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
std::string At(const std::string& schema, std::string_view path) {
  Document document;
  EXPECT_TRUE(Parse(schema, document, Origin::OUTSIDE)) << schema;
  const TypeSchemaView view(document);
  SchemaPlace place = view.Root();
  const auto names = ParsePointer(path);
  for (const std::string& name : *names) {
    place = name == "*" ? place.Items() : place.Property(name);
  }
  const std::string id(place.InstanceIdMember());
  return Kinds(static_cast<unsigned>(place.OwnKind())) + ":" + Kinds(place.Kinds()) +
         (id.empty() ? "" : " " + id);
}

// A schema with a vital property "a", and more.
std::string WithVital(const std::string& more, const std::string& properties = "") {
  return "{" + more + R"("properties":{"a":{"vital":true})" + properties + "}}";
}

TEST(TypeSchemaView, TellsTheKindsOfEachPlace) {
  const struct {
    std::string schema;
    const char* path;
    const char* expected;
  } cases[] = {
      {"{}", "", "u:u"},
      {R"({"vital":true})", "", "v:v"},
      {R"({"vital":true,"properties":{"x":{"properties":{"y":{}}}}})", "/x/y", "v:v"},
      {WithVital(""), "", "u:v"},
      {WithVital(""), "/unknown", "u:u"},
      {WithVital("", R"(,"b":{"cached":true})"), "", "u:vc"},
      // What an object admits beside its properties is the user's.
      {WithVital(R"("additionalProperties":{},)"), "", "u:uv"},
      {WithVital(R"("additionalProperties":false,)"), "", "u:v"},
      {WithVital(R"("patternProperties":{"^x":{}},)"), "", "u:uv"},
      {WithVital(R"("anyOf":[{"properties":{"b":{}}}],)"), "", "u:uv"},
      {WithVital(R"("anyOf":[{"required":["a"]}],)"), "", "u:v"},
      {WithVital(R"("oneOf":[{"properties":{"a":{"const":1}}}],)"), "", "u:v"},
      {WithVital(R"("if":{"properties":{"b":{}}},)"), "", "u:uv"},
      {WithVital(R"("dependencies":{"a":{"additionalProperties":true}},)"), "", "u:uv"},
      {WithVital(R"("not":{"properties":{"b":{}}},)"), "", "u:v"},
      {WithVital(R"("allOf":[{"$ref":"#/definitions/d"}],
           "definitions":{"d":{"allOf":[{"properties":{"b":{}}}]}},)"),
       "", "u:uv"},
      {R"({"allOf":[{"properties":{"x":{"properties":{"b":{}}}}}],"properties":{"x":)" +
           WithVital("") + "}}",
       "/x", "u:uv"},
      // Ids belong to every part; where nothing else is known, the place has its own kind.
      {R"({"properties":{"id":{"instanceId":true}}})", "", "u:u id"},
      {R"({"vital":true,"properties":{"id":{"instanceId":true}}})", "", "v:v id"},
      {WithVital("", R"(,"l":{"items":{"properties":{"id":{"instanceId":true}}}})"), "", "u:uv"},
      {R"({"properties":{"l":{"cached":true,"items":{"properties":{"id":{"instanceId":true}}}}}})",
       "/l", "c:c"},
      {R"({"properties":{"l":{"items":)" + WithVital(R"("generatedInstanceId":true,)") + "}}}",
       "/l/*", "u:v cs_generated_id"},
      {R"({"properties":{"l":{"items":[{},{}]}}})", "/l/*", "u:u"},
      {R"({"properties":{"l":{"items":{"items":)" + WithVital("") + "}}}}", "/l", "u:v"},
      // References, by pointer and by name, with tags beside them or where they lead.
      {R"({"properties":{"l":{"items":{"$ref":"#p"}}},"definitions":{"p":{"$id":"#p",
           "properties":{"id":{"$ref":"#i"},"s":{"cached":true},"n":{}}},
           "i":{"$id":"#i","instanceId":true}}})",
       "/l/*", "u:uc id"},
      {R"({"properties":{"x":{"vital":true,"$ref":"#/definitions/d"}},"definitions":{"d":{}}})",
       "/x", "v:v"},
      {R"({"properties":{"y":{"$ref":"#/properties/x"},"x":{"vital":true}}})", "/y", "v:v"},
      {R"({"properties":{"lost":{"$ref":"#/definitions/no"}}})", "/lost", "u:u"},
      // A tree of trees.
      {R"({"properties":{"t":{"$ref":"#/definitions/t"}},"definitions":{"t":{"properties":{
           "id":{"instanceId":true},"of":{"items":{"$ref":"#/definitions/t"}}}}}})",
       "/t/of/*/of", "u:u"},
      {R"({"properties":{"t":{"$ref":"#/definitions/t"}},"definitions":{"t":{"properties":{
           "seen":{"cached":true},"of":{"items":{"$ref":"#/definitions/t"}}}}}})",
       "/t/of/*/of", "u:c"},
  };
  for (const auto& [schema, path, expected] : cases) {
    EXPECT_EQ(At(schema, path), expected) << schema << " " << path;
  }
}

}  // namespace
}  // namespace Json
