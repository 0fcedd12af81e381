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
  EXPECT_EQ(At("/foo"), R"(["bar","baz"])");
  EXPECT_EQ(At("/foo/0"), R"("bar")");
  EXPECT_EQ(At("/"), "0");
  EXPECT_EQ(At("/a~1b"), "1");
  EXPECT_EQ(At("/c%d"), "2");
  EXPECT_EQ(At("/k\"l"), "6");
  EXPECT_EQ(At("/ "), "7");
  EXPECT_EQ(At("/m~0n"), "8");
  EXPECT_EQ(At("/list/1/x"), "2");
  EXPECT_EQ(At("/list/0/0"), "1");
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
  EXPECT_EQ(ResolveUri(kBase, "g:h"), "g:h");
  EXPECT_EQ(ResolveUri(kBase, "g"), "http://a/b/c/g");
  EXPECT_EQ(ResolveUri(kBase, "./g/"), "http://a/b/c/g/");
  EXPECT_EQ(ResolveUri(kBase, "/g"), "http://a/g");
  EXPECT_EQ(ResolveUri(kBase, "//g"), "http://g");
  EXPECT_EQ(ResolveUri(kBase, "?y"), "http://a/b/c/d;p?y");
  EXPECT_EQ(ResolveUri(kBase, "#s"), "http://a/b/c/d;p?q#s");
  EXPECT_EQ(ResolveUri(kBase, ""), "http://a/b/c/d;p?q");
  EXPECT_EQ(ResolveUri(kBase, ".."), "http://a/b/");
  EXPECT_EQ(ResolveUri(kBase, "../../../g"), "http://a/g");
  EXPECT_EQ(ResolveUri(kBase, "g;x=1/../y"), "http://a/b/c/y");
  EXPECT_EQ(ResolveUri("urn:x:y", "#s"), "urn:x:y#s");
  EXPECT_EQ(ResolveUri("item.json", "other.json#/a"), "other.json#/a");
}

// The title of what the property "at" of a schema refers to, or what is wrong.
std::string Target(const std::string& reference) {
  constexpr const char* kParts = R"(,"definitions":{
      "a":{"$id":"#port","title":"a"}, "b/c":{"title":"b"}, "d%e":{"title":"d"},
      "far":{"$id":"http://x/y/z","definitions":{"f":{"$id":"w","title":"f"}},
             "properties":{"g":{"title":"g"}}},
      "const":{"$id":"#named","title":"a property called const"},
      "value":{"const":{"$id":"#value"},"enum":[{"$id":"#one"}]}, "list":{"allOf":[{"title":"l"}]},
      "text":{"default":"t"}, "again":{"$ref":"#port"}, "ring":{"$ref":"#/definitions/ring2"},
      "ring2":{"$ref":"#/definitions/ring","title":"ring"}})";
  Document schema;
  EXPECT_TRUE(
      Parse(R"({"title":"root","properties":{"at":{"$ref":")" + reference + "\"}}" + kParts + "}",
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
  EXPECT_EQ(Target("#"), "root");
  EXPECT_EQ(Target(""), "root");
  EXPECT_EQ(Target("#port"), "a");
  EXPECT_EQ(Target(R"(#port","$id":"http://hidden/by/the/reference)"), "a");
  EXPECT_EQ(Target("#/definitions/b~1c"), "b");
  EXPECT_EQ(Target("#/definitions/d%25e"), "d");
  EXPECT_EQ(Target("#/definitions/b%7E1c"), "b");
  EXPECT_EQ(Target("http://x/y/w"), "f");
  EXPECT_EQ(Target("http://x/y/z#/properties/g"), "g");
  EXPECT_EQ(Target("#named"), "a property called const");
  EXPECT_EQ(Target("#/definitions/list/allOf/0"), "l");
  EXPECT_EQ(Target("#/definitions/again"), "a");
  EXPECT_EQ(Target("#/definitions/ring"), "ring");
  EXPECT_EQ(Target("#value"), "leads nowhere");
  EXPECT_EQ(Target("#one"), "leads nowhere");
  EXPECT_EQ(Target("#/definitions/list/allOf/00"), "leads nowhere");
  EXPECT_EQ(Target("#/definitions/a~2b"), "is no JSON Pointer: after \"~\" comes \"0\" or \"1\"");
  EXPECT_EQ(Target("http://x/other"), "leads outside the schema");
  EXPECT_EQ(Target("#/definitions/text/default"), "leads to something that is no schema");
}

}  // namespace
}  // namespace Json
