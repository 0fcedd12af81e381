// Where pointers and references lead.
#include "json/pointer.h"
#include "json/schema_references.h"
#include "json/uri_resolution.h"

#include <gtest/gtest.h>

namespace Json {
namespace {

// What a pointer leads to in the document of RFC 6901 section 5, and some more, as text.
std::string At(std::string_view pointer) {
  Document document;
  Parse(R"({"foo":["bar","baz"],"":0,"a/b":1,"c%d":2,"k\"l":6," ":7,"m~n":8,"list":[[1],{"x":2}]})",
        document);
  const auto names = ParsePointer(pointer);
  const Value* found = names ? FindAt(document, *names) : nullptr;
  std::string text;
  return !names ? "no pointer" : found != nullptr && Serialize(*found, text) ? text : "nothing";
}

TEST(Pointer, LeadsWhereTheStandardSays) {
  const std::pair<std::string_view, std::string_view> cases[] = {{"/foo", R"(["bar","baz"])"},
                                                                 {"/foo/0", R"("bar")"},
                                                                 {"/", "0"},
                                                                 {"/a~1b", "1"},
                                                                 {"/c%d", "2"},
                                                                 {"/k\"l", "6"},
                                                                 {"/ ", "7"},
                                                                 {"/m~0n", "8"},
                                                                 {"/list/1/x", "2"},
                                                                 {"/list/0/0", "1"}};
  for (const auto& [pointer, expected] : cases) {
    EXPECT_EQ(At(pointer), expected) << pointer;
  }
  for (const char* pointer : {"/foo/01", "/foo/-", "/foo/2", "/foo/+0", "/foo/",
                              "/foo/99999999999999999999", "/foo/0/x", "//"}) {
    EXPECT_EQ(At(pointer), "nothing") << pointer;
  }
  for (const char* pointer : {"foo", "/m~n", "/a~2b", "/m~"}) {
    EXPECT_EQ(At(pointer), "no pointer") << pointer;
  }
  std::string pointer;
  AppendToken(pointer, "a/b~1");
  AppendToken(pointer, "");
  EXPECT_EQ(pointer, "/a~1b~01/");
  EXPECT_EQ(*ParsePointer(pointer), (std::vector<std::string>{"a/b~1", ""}));
}

TEST(References, AreMadeAbsolute) {
  constexpr std::string_view kBase = "http://a/b/c/d;p?q";
  const std::pair<std::string_view, std::string_view> cases[] = {{"g:h", "g:h"},
                                                                 {"g", "http://a/b/c/g"},
                                                                 {"./g/", "http://a/b/c/g/"},
                                                                 {"/g", "http://a/g"},
                                                                 {"//g", "http://g"},
                                                                 {"?y", "http://a/b/c/d;p?y"},
                                                                 {"#s", "http://a/b/c/d;p?q#s"},
                                                                 {"", "http://a/b/c/d;p?q"},
                                                                 {"..", "http://a/b/"},
                                                                 {"../../../g", "http://a/g"},
                                                                 {"g;x=1/../y", "http://a/b/c/y"}};
  for (const auto& [reference, expected] : cases) {
    EXPECT_EQ(ResolveUri(kBase, reference), expected) << reference;
  }
  EXPECT_EQ(ResolveUri("urn:x:y", "#s"), "urn:x:y#s");
  EXPECT_EQ(ResolveUri("item.json", "other.json#/a"), "other.json#/a");
}

// The title of what the property "at" of a schema refers to, or what is wrong.
std::string Target(const std::string& reference, const std::string& more) {
  Document schema;
  EXPECT_TRUE(
      Parse(R"({"title":"root","properties":{"at":{"$ref":")" + reference + "\"}}" + more + "}",
            schema, Origin::OUTSIDE));
  const SchemaReferences references(schema);
  const Value& holder = *FindAt(schema, *ParsePointer("/properties/at"));
  const SchemaReferences::Target& target = *references.Find(holder);
  if (target.schema == nullptr) {
    return target.fault;
  }
  const Value* title = FindMember(*references.Chain(holder).back(), "title");
  return title != nullptr ? title->GetString() : "untitled";
}

TEST(References, LeadByPointerAndByName) {
  const std::string parts = R"(,"definitions":{
      "a":{"$id":"#port","title":"a"}, "b/c":{"title":"b"}, "d%e":{"title":"d"},
      "far":{"$id":"http://x/y/z","definitions":{"f":{"$id":"w","title":"f"}},
             "properties":{"g":{"title":"g"}}},
      "const":{"$id":"#named","title":"a property called const"},
      "value":{"const":{"$id":"#value","title":"no schema"}}, "list":{"allOf":[{"title":"l"}]},
      "text":{"default":"t"}, "again":{"$ref":"#port"}, "ring":{"$ref":"#/definitions/ring2"},
      "ring2":{"$ref":"#/definitions/ring","title":"ring"}})";
  const std::pair<const char*, const char*> cases[] = {
      {"#", "root"},
      {"", "root"},
      {"#port", "a"},
      {"#/definitions/b~1c", "b"},
      {"#/definitions/d%25e", "d"},
      {"#/definitions/b%7E1c", "b"},
      {"http://x/y/w", "f"},
      {"http://x/y/z#/properties/g", "g"},
      {"#named", "a property called const"},
      {"#/definitions/list/allOf/0", "l"},
      {"#/definitions/again", "a"},
      {"#/definitions/ring", "ring"},
      {"#value", "leads nowhere"},
      {"#/definitions/list/allOf/00", "leads nowhere"},
      {"#/definitions/a~2b", "is no JSON Pointer: after \"~\" comes \"0\" or \"1\""},
      {"http://x/other", "leads outside the schema"},
      {"#/definitions/text/default", "leads to something that is no schema"}};
  for (const auto& [reference, expected] : cases) {
    EXPECT_EQ(Target(reference, parts), expected) << reference;
  }
}

}  // namespace
}  // namespace Json
