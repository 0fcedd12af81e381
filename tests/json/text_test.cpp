// JSON text, read and written.
#include "json/arena.h"
#include "json/equality.h"
#include "json/indent.h"
#include "json/json_doc.h"
#include "json/near_miss.h"
#include "json/print.h"
#include "json/text_match.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace Json {
namespace {

// What is wrong with a text, and where; "" when it is taken.
std::string Refusal(std::string_view text, Origin origin = Origin::OUTSIDE) {
  TarnConfigStore::JsonDoc document(TarnConfigStore::JsonDoc::CapacityFor(text.size()));
  const ParseResult result = document.Parse(text, origin);
  EXPECT_TRUE(result || document.GetJsonValuePtr()->IsNull());
  return result ? "" : result.Describe(text);
}

std::string Printed(const Value& value, Layout layout = Layout::ONE_LINE,
                    BadText badText = BadText::REFUSED) {
  std::string text = "left over";
  return Print(value, layout, badText, text) ? text : "refused" + text;
}

std::string Serialized(const Value& value) {
  std::string text = "left over";
  return Serialize(value, text) ? text : "refused" + text;
}

TEST(Parse, IsStrictAndTellsThePlace) {
  EXPECT_EQ(Refusal(R"({"a":[1,"\u00e9",{"b":null}]})"), "");
  EXPECT_EQ(Refusal("{\n \"a\":}"), "line 2, column 6: Invalid value.");
  EXPECT_EQ(Refusal("[1,\n2"), "line 2, column 2: Missing a comma or ']' after an array element.");
  EXPECT_EQ(Refusal(""), "line 1, column 1: The document is empty.");
  EXPECT_EQ(Refusal("{} x"),
            "line 1, column 4: The document root must not be followed by other values.");
  EXPECT_EQ(Refusal("\"\xc3\x28\""), "line 1, column 2: Invalid encoding in string.");
  EXPECT_EQ(Refusal(std::string_view("{}\0{}", 5)), "line 1, column 3: a NUL byte");
  EXPECT_EQ(Refusal(std::string_view("[\"a\0\"]", 6)), "line 1, column 4: a NUL byte");
  EXPECT_EQ(Refusal("\xEF\xBB\xBF{}"), "line 1, column 1: a byte order mark at the start");
  EXPECT_EQ(Refusal("[\"a\nb\"]"), "line 1, column 4: a control character in a string");
  EXPECT_EQ(Refusal(R"({"a":{"a":1},"b":[{"a":1,"c":2,"\u0061":3}]})"),
            "line 1, column 40: member \"a\" is named twice");
  EXPECT_EQ(Refusal(R"({"a":{"b":1,"b":2}})", Origin::STORED), "");
  std::string many = "{";
  for (int i = 0; i < 40; ++i) {
    many += "\"m" + std::to_string(i) + "\":1,";
  }
  EXPECT_EQ(Refusal(many + "\"x\":1}"), "");
  EXPECT_NE(Refusal(many + "\"m7\":1}"), "");
}

// Plain characters are taken several at a time: what is not plain is seen wherever it stands.
TEST(Parse, SeesWhatIsNotPlainAtEachPlace) {
  for (std::size_t place = 0; place < 18; ++place) {
    const std::string before(place, ' ');
    for (const char* refused :
         {"\x1f", "\x1a", "\n", "\x01", "\xff", "\xed\xa0\x80", "\\x", "\"a"}) {
      EXPECT_NE(Refusal("[\"" + before + refused + before + "\"]", Origin::STORED), "");
    }
    for (const char* kept : {"\\n", "\x7f", "\xc3\xa4", "\\\"", "!", "[", "\\\\"}) {
      const std::string text = "\"" + before + kept + before + kept + "\"";
      Document document;
      ASSERT_TRUE(Parse(text, document)) << text;
      EXPECT_EQ(Serialized(document), text);
    }
  }
}

// A text is put together in pieces of some size: where one ends, nothing is lost.
TEST(Serialize, GoesOnWhereverAPieceEnds) {
  const std::string rest = R"(,{"name":-9223372036854775808,"":0.1},true,null,"a\"\u0001ä",[],{}])";
  for (std::size_t length = 4000; length < 4120; ++length) {
    const std::string text = "[\"" + std::string(length, 'p') + "\"" + rest;
    Document document;
    ASSERT_TRUE(Parse(text, document));
    EXPECT_EQ(Serialized(document), text);
  }
}

// Made in passing and moved to where it stays, or made there between others that grow, a value is the same.
TEST(Parse, MakesTheSameOfAStoredTextWithNoMoreRoomThanItTakes) {
  auto arena = std::make_unique<TarnConfigStore::Arena>();
  std::vector<std::pair<std::shared_ptr<TarnConfigStore::JsonDoc>, std::string>> made;
  std::string many = "[[]";
  for (int i = 0; i < 1000; ++i) {
    many += ",[]";
  }
  for (const std::string& text :
       {std::string(
            R"({"a name that is long":{"b":[1,-2.5,"a text that is long",{"c":null}]},"d":{}})"),
        std::string(
            R"(["short","with \"quotes\" and \u00e4, longer",true,18446744073709551615,[]])"),
        std::string("\"a text alone, which is long\""), std::string(" 1e300 "), many + "]",
        "[\"" + std::string(5000, 'x') + "\",1]", std::string("[1,]"), std::string("{\"a\":1e999}"),
        std::string(R"(["\udc00"])")}) {
    Document parsed;
    const ParseResult read = Parse(text, parsed);
    for (int i = 0; i < 100; ++i) {
      ParseResult moved;
      const auto document =
          TarnConfigStore::JsonDoc::MakeOf(text, moved, i == 0 ? nullptr : arena.get());
      EXPECT_EQ(moved.message, read.message);
      EXPECT_EQ(Serialized(*document->GetJsonValuePtr()), Serialized(parsed)) << text;
      if (read && parsed.IsArray()) {
        document->GetJsonValuePtr()->PushBack(Copy(text, document->GetAllocator()),
                                              document->GetAllocator());
        EXPECT_EQ(Text(*(document->GetJsonValuePtr()->End() - 1)), text);
      }
      if (i % 2 == 0) {
        made.emplace_back(document, Serialized(*document->GetJsonValuePtr()));
      }
    }
  }
  arena.reset();
  for (const auto& [document, text] : made) {
    EXPECT_EQ(Serialized(*document->GetJsonValuePtr()), text);
  }
}

TEST(Values, AreEqualHoweverTheyAreWritten) {
  const auto equal = [](std::string_view a, std::string_view b) {
    Document one;
    Document other;
    return Parse(a, one) && Parse(b, other) && Equal(one, other);
  };
  EXPECT_TRUE(equal(R"({"a":[1,{"b":-0.0}],"c":"x"})", R"({"c":"x","a":[1.0,{"b":0}]})"));
  EXPECT_TRUE(equal("18446744073709551615", "18446744073709551615"));
  EXPECT_FALSE(equal("9007199254740993", "9007199254740992.0"));
  EXPECT_FALSE(equal("[1]", "[1,2]"));
  EXPECT_FALSE(equal(R"({"a":1})", R"({"b":1})"));
  EXPECT_FALSE(equal("null", "false"));
}

TEST(Parse, RefusesWhatWalksCannotBear) {
  const auto nested = [](std::size_t levels) {
    return std::string(levels, '[') + std::string(levels, ']');
  };
  EXPECT_EQ(Refusal(nested(kMaxDepth)), "");
  EXPECT_NE(Refusal(nested(kMaxDepth + 1)).find("nested deeper than 128"), std::string::npos);
  EXPECT_NE(Refusal(std::string(10'000'000, '[')), "");
}

TEST(Parse, RefusesIntegersThatItWouldAlter) {
  for (const char* text :
       {"18446744073709551616", "-9223372036854775809", "123456789012345678901"}) {
    EXPECT_EQ(Refusal("\n[" + std::string(text) + "]"),
              "line 2, column 2: an integer of more than 64 bits");
    EXPECT_NE(Refusal(text), "");
    EXPECT_EQ(Refusal(text, Origin::STORED), "");
  }
  for (const char* text :
       {"1e21", "1E+21", "1e300", "123456789012345678901.5", "-9.3e18", "1e-21"}) {
    EXPECT_EQ(Refusal(text), "") << text;
  }
}

TEST(Parse, TakesNumbersForWhatTheyMean) {
  for (const std::string text :
       {"01", "-", "-01", "+1", ".5", "1.", "1.e5", "1e", "1e+", "1e5.5", "0x1", "--1"}) {
    EXPECT_NE(Refusal("[" + text + "]", Origin::STORED), "") << text;
    EXPECT_NE(Refusal(text, Origin::STORED), "") << text;
  }
  for (const auto& [text, means] : std::vector<std::pair<const char*, const char*>>{
           {"-0", "0"},
           {"[0e999,\"0e999\\\"\",-0.00E+400,0e-999,1e1]", "[0.0,\"0e999\\\"\",-0.0,0.0,10.0]"},
           {"0.1000000000000000000000001", "0.1"},
           {"1000000000000000000000e-20", "10.0"},
           {"[1e-400,-2e-324,3e-324,1.7976931348623157e308]",
            "[0.0,-0.0,5e-324,1.7976931348623157e+308]"}}) {
    Document document;
    ASSERT_TRUE(Parse(text, document, Origin::OUTSIDE)) << text;
    EXPECT_EQ(Serialized(document), means);
  }
  for (const std::string& text : std::vector<std::string>{
           "1e400", "-1e309", "1.8e308", "4e308", "999999e308", "1e99999999999",
           std::string(300, '9') + "e308", "0." + std::string(300, '9') + "e309"}) {
    for (const Origin origin : {Origin::STORED, Origin::OUTSIDE}) {
      EXPECT_EQ(Refusal("[0e999," + text + "]", origin),
                "line 1, column 8: a number that is too large")
          << text;
    }
  }
}

TEST(Print, IndentsAndKeepsWhatWasRead) {
  constexpr std::string_view kText = R"({
  "b": {},
  "a": [
    [],
    {
      "\u000b\u001f\n\"\\": "/\u007fä\u2028",
      "": null
    }
  ],
  "é": true
})";
  // However it was written, what could drive a terminal is printed escaped.
  std::string text(kText);
  text.replace(text.find("\\u007f"), 6, "\x7F");
  text.replace(text.find("\\u2028"), 6, "\xE2\x80\xA8");
  Document document;
  ASSERT_TRUE(Parse(text, document, Origin::OUTSIDE));
  EXPECT_EQ(Printed(document, Layout::INDENTED), kText);
}

// What is read in one go with something else is read as Parse reads it, whichever character is wrong.
TEST(Text, IsTheSameToEveryoneWhoLooksAtIt) {
  const std::string whole =
      R"({"id":"1","s":"\\\u00e9 \"","n":[-1.5e3, {},[ ],0,true,null],"o":{"id":"b"},"u":"ä","id":"é"} )";
  Document given;
  ASSERT_TRUE(Parse(R"({"id":"1","s":"plain","n":[-1500.0,{},[],7,true,null],"o":{"u":"ä"}})",
                    given, Origin::OUTSIDE));
  std::string same = R"({"id":"1","s":"plain","n":[-1.5e3,{},[],7,true,null],"o":{"u":"ä"}})";
  int indented = 0;
  int matched = 0;
  const auto look = [&](const std::string& text) {
    Document document;
    const bool sound = !!Parse(text, document) && document.IsObject();
    Buffer lines;
    std::string expected;
    const auto id = sound ? document.MemberEnd() - 1 : Value::MemberIterator();
    if (sound && !document.ObjectEmpty() && id->name == "id" && id->value == "é") {
      AppendIndented(text, 3, expected);
      ++indented;
    }
    const bool fits = AppendIndentedIfSound(text, {"id", "é"}, 3, lines);
    EXPECT_EQ(fits ? std::string(lines.GetString(), lines.GetSize()) : "", expected) << text;

    const TextMatch match = MatchText(text, given);
    const bool equal = sound && Equal(given, document);
    EXPECT_NE(match, equal ? TextMatch::OTHER : TextMatch::SAME) << text;
    matched += match == TextMatch::SAME ? 1 : 0;
  };
  for (const std::string& text : {whole, same}) {
    look(text);
    for (std::size_t at = 0; at < text.size(); ++at) {
      look(text.substr(0, at));
      for (const char other :
           {'"', '\\', '}', ']', '{', ',', ':', '\0', '\x1f', '\xff', 'e', '0'}) {
        look(std::string(text).replace(at, 1, 1, other));
        look(std::string(text).insert(at, 1, other));
      }
    }
  }
  EXPECT_GT(indented, 100);
  EXPECT_GT(matched, 0);
  for (const char* other : {R"({"id":"2"})", R"({"id":"1"})", R"({"id":"1","s":"plainer"})"}) {
    EXPECT_EQ(MatchText(other, given), TextMatch::OTHER) << other;
  }
  Buffer lines;
  EXPECT_FALSE(AppendIndentedIfSound(R"({"a":1e999})", {}, 0, lines));
  EXPECT_FALSE(AppendIndentedIfSound(R"({"a":"\ud800"})", {}, 0, lines));
}

// A number as it is serialized, and as it is printed.
std::string Written(const char* number) {
  Document document;
  EXPECT_TRUE(Parse(number, document, Origin::OUTSIDE));
  return Serialized(document) + " " + Printed(document);
}

TEST(Print, WritesNumbersAsPeopleDoAndEveryDigit) {
  EXPECT_EQ(Written("1e5"), "1e+05 100000.0");
  EXPECT_EQ(Written("0.0001"), "1e-04 0.0001");
  EXPECT_EQ(Written("9007199254740993.5"), "9007199254740994.0 9.007199254740994e+15");
  for (const char* same : {"-0.0", "5.0", "0.1", "1e-05", "1e+15", "0.30000000000000004",
                           "123456789012345.6", "1.7976931348623157e+308", "9007199254740993",
                           "18446744073709551615", "-9223372036854775808"}) {
    EXPECT_EQ(Written(same), std::string(same) + " " + same);
  }
}

TEST(NearMiss, IsAWordWithASlipOrTwo) {
  const auto best = [](std::string_view given) {
    NearMiss nearest(given);
    for (const char* known : {"mtu", "timeout", "timeouts", "id", "portGroups", "ports"}) {
      nearest.Offer(known);
    }
    return nearest.Best();
  };
  for (const auto& [given, meant] : {std::pair("mut", "mtu"),
                                     {"Timeout", "timeout"},
                                     {"tmieuot", "timeout"},
                                     {"timeoutss", "timeouts"},
                                     {"portgrups", "portGroups"},
                                     {"ID", "id"},
                                     {"ports", "ports"},
                                     {"if", ""},
                                     {"mxx", ""},
                                     {"txmexxt", ""},
                                     {"", ""}}) {
    EXPECT_EQ(best(given), meant) << given;
  }
  EXPECT_EQ(LettersApart(std::string(64, 'a'), std::string(63, 'a') + "b"), 1U);
  EXPECT_EQ(LettersApart(std::string(65, 'a'), std::string(64, 'a')), std::nullopt);
}

TEST(Print, RefusesOrRepairsWhatJsonCannotSay) {
  Document document(rapidjson::kObjectType);
  document.AddMember(Reference("a\xFF"), Reference("\xED\xA0\x80"), document.GetAllocator());
  EXPECT_EQ(Serialized(document) + Printed(document), "refusedrefused");
  EXPECT_EQ(Printed(document, Layout::ONE_LINE, BadText::REPAIRED),
            "{\"a\uFFFD\":\"\uFFFD\uFFFD\uFFFD\"}");
  EXPECT_EQ(Serialized(Value(std::numeric_limits<double>::infinity())), "refused");
}

}  // namespace
}  // namespace Json
