// Where pointers and references lead.
#include "json/pointer.h"
#include "json/uri_resolution.h"

#include <gtest/gtest.h>

namespace Json {
namespace {

// What a pointer leads to, as text.
std::string At(std::string_view pointer) {
  Document document;
  Parse(R"({"foo":["bar","baz"],"":0,"a/b":1,"m~n":8,"list":[[1],{"x":2}]})", document);
  const auto names = ParsePointer(pointer);
  const Value* found = names ? FindAt(document, *names) : nullptr;
  std::string text;
  return !names ? "no pointer" : found != nullptr && Serialize(*found, text) ? text : "nothing";
}

TEST(Pointer, LeadsWhereTheStandardSays) {
  EXPECT_EQ(At("/foo/0"), R"("bar")");
  EXPECT_EQ(At("/"), "0");
  EXPECT_EQ(At("/a~1b"), "1");
  EXPECT_EQ(At("/m~0n"), "8");
  EXPECT_EQ(At("/list/1/x"), "2");
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
  for (const auto& [reference, absolute] : {std::pair("g:h", "g:h"),
                                            {"g", "http://a/b/c/g"},
                                            {"./g/", "http://a/b/c/g/"},
                                            {"/g", "http://a/g"},
                                            {"//g", "http://g"},
                                            {"?y", "http://a/b/c/d;p?y"},
                                            {"#s", "http://a/b/c/d;p?q#s"},
                                            {"", "http://a/b/c/d;p?q"},
                                            {"..", "http://a/b/"},
                                            {"../../../g", "http://a/g"}}) {
    EXPECT_EQ(ResolveUri("http://a/b/c/d;p?q", reference), absolute);
  }
  EXPECT_EQ(ResolveUri("urn:x:y", "#s"), "urn:x:y#s");
  EXPECT_EQ(ResolveUri("item.json", "other.json#/a"), "other.json#/a");
}

}  // namespace
}  // namespace Json
