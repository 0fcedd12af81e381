#include "json/print.h"

#include <gtest/gtest.h>

namespace Json {
namespace {

std::string Printed(const Value& value, Layout layout = Layout::ONE_LINE,
                    BadText badText = BadText::REFUSED) {
  std::string text = "left over";
  return Print(value, layout, badText, text) ? text : "refused" + text;
}

TEST(Print, IndentsAndKeepsWhatWasRead) {
  constexpr std::string_view kText = R"({
  "b": {},
  "a": [
    [],
    -9223372036854775808,
    18446744073709551615,
    {
      "\u000b\u001f\n\"\\": "/\u007fä\u2028",
      "": null
    }
  ],
  "é": true
})";
  std::string text(kText);
  text.replace(text.find("\\u007f"), 6, "\x7F");
  text.replace(text.find("\\u2028"), 6, "\xE2\x80\xA8");
  Document document;
  ASSERT_TRUE(Parse(text, document, Origin::OUTSIDE));
  EXPECT_EQ(Printed(document, Layout::INDENTED), text);
}

TEST(Print, WritesNumbersAsPeopleDo) {
  const std::pair<const char*, const char*> cases[] = {{"1e5", "100000.0"},
                                                       {"-0.0", "-0.0"},
                                                       {"0.30000000000000004", nullptr},
                                                       {"123456789012345.6", nullptr},
                                                       {"1e15", "1e+15"},
                                                       {"0.0001", nullptr},
                                                       {"0.00001", "1e-05"},
                                                       {"1.7976931348623157e+308", nullptr}};
  for (const auto& [given, expected] : cases) {
    Document document;
    ASSERT_TRUE(Parse(given, document, Origin::OUTSIDE));
    EXPECT_EQ(Printed(document), expected != nullptr ? expected : given);
  }
}

TEST(Print, RefusesOrRepairsWhatIsNotUtf8) {
  Document document(rapidjson::kObjectType);
  document.AddMember(Reference("a\xFF"), Reference("\xED\xA0\x80"), document.GetAllocator());
  EXPECT_EQ(Printed(document), "refused");
  EXPECT_EQ(Printed(document, Layout::ONE_LINE, BadText::REPAIRED),
            "{\"a\uFFFD\":\"\uFFFD\uFFFD\uFFFD\"}");
}

TEST(ParseResult, TellsThePlace) {
  const std::pair<std::string_view, const char*> cases[] = {
      {"{\n \"a\":}", "line 2, column 6: Invalid value."},
      {"[1,\n2", "line 2, column 2: Missing a comma or ']' after an array element."},
      {"", "line 1, column 1: The document is empty."},
      {R"({"a":{"a":1},"b":[{"a":1,"c":2,"\u0061":3}]})",
       "line 1, column 40: member \"a\" is named twice"},
      {"\n[99999999999999999999]", "line 2, column 2: an integer of more than 64 bits"}};
  for (const auto& [text, expected] : cases) {
    Document document;
    EXPECT_EQ(Parse(text, document, Origin::OUTSIDE).Describe(text), expected);
  }
}

}  // namespace
}  // namespace Json
