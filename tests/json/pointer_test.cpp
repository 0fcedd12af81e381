#include "json/pointer.h"

#include <gtest/gtest.h>

namespace Json {
namespace {

// What a pointer leads to in the document of RFC 6901 section 5, and some more, as text.
std::string At(std::string_view pointer) {
  static const Document& document = *[] {
    auto* made = new Document;
    Parse(
        R"({"foo":["bar","baz"],"":0,"a/b":1,"c%d":2,"k\"l":6," ":7,"m~n":8,"list":[[1],{"x":2}]})",
        *made);
    return made;
  }();
  const auto names = ParsePointer(pointer);
  const Value* found = names ? FindAt(document, *names) : nullptr;
  std::string text;
  return !names ? "no pointer" : found != nullptr && Serialize(*found, text) ? text : "nothing";
}

TEST(Pointer, LeadsWhereTheStandardSays) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"/foo", R"(["bar","baz"])"},
      {"/foo/0", R"("bar")"},
      {"/", "0"},
      {"/a~1b", "1"},
      {"/c%d", "2"},
      {"/k\"l", "6"},
      {"/ ", "7"},
      {"/m~0n", "8"},
      {"/list/1/x", "2"},
      {"/list/0/0", "1"},
      {"/foo/01", "nothing"},
      {"/foo/-", "nothing"},
      {"/foo/2", "nothing"},
      {"/foo/+0", "nothing"},
      {"/foo/", "nothing"},
      {"/foo/99999999999999999999", "nothing"},
      {"/foo/0/x", "nothing"},
      {"//", "nothing"},
      {"foo", "no pointer"},
      {"/m~n", "no pointer"},
      {"/a~2b", "no pointer"},
      {"/m~", "no pointer"}};
  for (const auto& [pointer, expected] : cases) {
    EXPECT_EQ(At(pointer), expected) << pointer;
  }
  std::string pointer;
  AppendToken(pointer, "a/b~1");
  AppendToken(pointer, "");
  EXPECT_EQ(pointer, "/a~1b~01/");
  EXPECT_EQ(*ParsePointer(pointer), (std::vector<std::string>{"a/b~1", ""}));
}

}  // namespace
}  // namespace Json
