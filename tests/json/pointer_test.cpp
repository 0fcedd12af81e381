#include "json/pointer.h"

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

}  // namespace
}  // namespace Json
