// What is asserted of values: numbers as they are written, formats, and the findings as an
// administrator reads them.
#include "json_schema/findings_text.h"
#include "json_schema/formats.h"

namespace ValidatorTest {
namespace {

bool Fits(const std::string& keyword, const std::string& limit, const std::string& value) {
  return FindingsOf("{\"" + keyword + "\": " + limit + "}", value, {1}).empty();
}

TEST(Numbers, LimitsPastTheExactRangeOfDoublesAreExact) {
  // 2^53 and its neighbours, the largest 64-bit integers, and a double beyond them.
  const std::vector<std::string> rising = Split(
      "-9223372036854775808,-9007199254740993,-9007199254740992,-0.5,0,9007199254740992,"
      "9007199254740993,9223372036854775807,9223372036854775808,18446744073709551615,"
      "18446744073709551616,1e300");
  for (std::size_t i = 0; i < rising.size(); ++i) {
    for (std::size_t j = 0; j < rising.size(); ++j) {
      SCOPED_TRACE(rising[j] + " against " + rising[i]);
      EXPECT_EQ(Fits("minimum", rising[i], rising[j]), j >= i);
      EXPECT_EQ(Fits("exclusiveMaximum", rising[i], rising[j]), j < i);
      EXPECT_EQ(Fits("const", rising[i], rising[j]), j == i);
      EXPECT_EQ(Fits("uniqueItems", "true", "[" + rising[i] + "," + rising[j] + "]"), i != j);
    }
  }
  EXPECT_TRUE(Fits("const", "9007199254740992", "9007199254740992.0"));
  EXPECT_FALSE(Fits("const", "9007199254740993", "9007199254740992.0"));
}

TEST(Numbers, MultiplesAreThoseOfDecimalNumbers) {
  for (const auto& [divisor, multiple, other] :
       {std::tuple("0.1", "1e22", "1e-9"),
        {"0.01", "-4.35", "4.355"},
        {"1e300", "3e300", "1"},
        {"7", "9223372036854775807", "18446744073709551615"}}) {
    EXPECT_TRUE(Fits("multipleOf", divisor, multiple)) << multiple << " of " << divisor;
    EXPECT_FALSE(Fits("multipleOf", divisor, other)) << other << " of " << divisor;
  }
}

// Each is looked for in texts that it matches and in texts that it does not; all as JSON has them.
TEST(Patterns, AreReadAsEcmaScriptReadsThem) {
  struct Case {
    const char* pattern;
    std::vector<const char*> matches;
    std::vector<const char*> others;
  };
  const Case cases[] = {
      {"^.$", {"a", R"(\u0085)", "😀"}, {R"(\n)", R"(\r)", R"(\u2028)", R"(\u2029)"}},
      {"^a$", {"a"}, {R"(a\n)", R"(b\na)"}},
      {R"(^\\s$)",
       {" ", R"(\u000b)", R"(\u00a0)", R"(\ufeff)", R"(\u2028)", R"(\u3000)"},
       {R"(\u0085)", R"(\u180e)"}},
      {R"(^[^\\S]$)", {" ", R"(\u00a0)", R"(\ufeff)"}, {"a", R"(\u200b)"}},
      {R"(^[\\S]$)", {"a", R"(\u200b)", "😀"}, {" ", R"(\u00a0)", R"(\u2029)"}},
      {R"(^\\d\\w$)", {"1_"}, {"٣a", "1é"}},
      {R"(é\\b)", {"éa"}, {"é"}},
      {R"(^[\\b]\\v\\cJ\\0$)", {R"(\b\u000b\n\u0000)"}, {"bvJ0"}},
      {R"(^\\u{1F600}\\uD83D\\uDE00\\x41$)", {"😀😀A"}, {"😀A"}},
      {R"(^[\\uD800\\uDC00-\\uDBFF\\uDFFF\\u0020-\\uDFFF]$)", {"😀", "a"}, {R"(\ue000)"}},
      {R"(\\uD800|a)", {"a"}, {"😀", ""}},
      {R"(^\\p{L}\\p{Lowercase_Letter}\\P{Script=Latin}$)", {"Éaж"}, {"1aж", "ÉAж", "Éab"}},
      {R"(^[\\-\\_\\.][\\w-.][a-]]\\}$)", {"--a]}", "_.-]}"}, {"--b]}"}},
      {"^a{,2}{}]$", {"a{,2}{}]"}, {"aa{}]"}},
      {"^[[:a]x]$", {"[x]", ":x]", "ax]"}, {"b", "l"}},
      {"^(?:[]|[^]b)$", {R"(\nb)"}, {"b"}},
      {R"(^(?<año>\\d)-\\k<año>\\1(?=x)*$)", {"1-11"}, {"1-12"}},
      {R"(^(?:(a)|b)\\1$)", {"aa", "b"}, {"ba"}},
      {"(?<=a{2})(?<!b)c", {"aac"}, {"abc", "ac"}},
  };
  for (const Case& one : cases) {
    for (const bool matches : {true, false}) {
      for (const char* text : matches ? one.matches : one.others) {
        const std::string found = FindingsOf(R"({"pattern": ")" + std::string(one.pattern) + "\"}",
                                             "\"" + std::string(text) + "\"");
        EXPECT_EQ(found.find("does not match") == std::string::npos, matches) << text << found;
        EXPECT_EQ(found.empty(), matches) << one.pattern << " " << text << found;
      }
    }
  }
  // More rounds than the engine counts.
  for (const std::size_t rounds : {69999U, 70000U, 140000U, 140001U}) {
    for (const char* pattern : {R"("^[ab]{70000,140000}$")", R"("^a{70000,140000}?$")"}) {
      EXPECT_EQ(Fits("pattern", pattern, "\"" + std::string(rounds, 'a') + "\""),
                rounds >= 70000 && rounds <= 140000);
    }
  }
}

void ExpectFormat(const char* name, const char* good, const std::string& bad) {
  const JsonValidator::Format* format = JsonValidator::FindFormat(name);
  ASSERT_NE(format, nullptr) << name;
  for (const std::string& text : Split(good)) {
    EXPECT_TRUE(format->holds(text)) << name << " " << text;
  }
  for (const std::string& text : Split(bad)) {
    EXPECT_FALSE(format->holds(text)) << name << " " << text;
  }
}

// Beside what the public suite has of them.
TEST(Formats, TellGoodTextsFromBad) {
  ExpectFormat("date", "2024-02-29,2000-02-29",
               ",2023-02-29,1900-02-29,2024-13-01,2024-1-01,2024-04-31");
  ExpectFormat("time", "23:20:50Z,00:00:00.123+05:30,23:59:60Z,01:29:60+01:30",
               "24:00:00Z,12:00:00,12:00Z,12:00:00.Z,22:59:60Z,12:00:00+24:00");
  ExpectFormat("email", R"("joe \" b"@example.com,a@[10.0.0.1],a+b@localhost)",
               "joe,@example.com,joe@,.a@b.c,a..b@c.d,a b@c.d,a@-b.c");
  ExpectFormat("hostname", "a,node-17.example.com,3com.com", ",-a,a-.b,a..b,a_b,a.,xn--\xC3\xBC");
  ExpectFormat("ipv4", "0.0.0.0,255.255.255.255", "256.0.0.1,1.2.3,01.2.3.4,1.2.3.4 ,1.2.3.");
  ExpectFormat("ipv6", "::,fe80::1,::ffff:10.0.0.1", "fe80::1%eth0,1:2,:::");
  ExpectFormat("ipv4", "1.2.3.4", std::string("1.2.3.4\0", 8));
  ExpectFormat("ipv6", "::1", std::string("::1\0", 4));
  ExpectFormat("uri", "http://a:b@host:80/p?q#f,urn:x:y,http://[::1]/",
               "http://a b,a%zz:b,http://[::1,http://h:x/,1a:b");
  ExpectFormat("iri", "http://\xC3\xBC.example/\xE2\x82\xAC?\xEE\x80\x80,urn:x:\xF0\x9F\x98\x80",
               "http://a/\xEE\x80\x80,http://a/\xC2\x80,http://a/\xEF\xB7\x90,/\xC3\xBC");
  ExpectFormat("iri-reference", "/\xC3\xBC,#\xC3\xBC,", "\xC3\xBC:x,<\xC3\xBC>");
  ExpectFormat("uri-template", "a{?x*}{+y.z:30}/{%41_},{a},\xC3\xBC",
               "{},{a:0},{a.},{a..b},}{,a b,{a");
  ExpectFormat("relative-json-pointer", "0#,1/a~1b,10", ",01,-1,0##,0a,#,1/~2");
  ExpectFormat("idn-hostname",
               "b\xC3\xBC\x63her.example,xn--bcher-kva.example,l\xC2\xB7l.l\xC2\xB7l",
               ",a..b\xC3\xBC,a\xC2\xB7l,-\xC3\xBC,xn--\xC3\xBC,xn--a,\xE3\x80\xAE\xC3\xBC");
  ExpectFormat("idn-hostname", "l\xC2\xB7l", std::string("\xC3\xBC\0", 3));
  ExpectFormat("idn-email", "j\xC3\xBCrg@b\xC3\xBC\x63her.example,\"\xC3\xBC \"@[10.0.0.1]",
               "\xC3\xBC@,j\xC3\xBC rg@a.b,\xC3\xBC@-\xC3\xBC");
  ExpectFormat("duration", "P4DT12H30M5S,P1Y2M3D,PT0S,P36W,P1M,PT1M",
               ",P,PT,P1,1D,P1D1Y,P1Y2D,P1W2D,P1DT,PT1D,P-1D,P1.5D");
  ExpectFormat("uuid", "2EB8AA08-aa98-11ea-b4aa-73b441d16380",
               ",2eb8aa08aa9811eab4aa73b441d16380,2eb8aa08-aa98-11ea-b4aa-73b441d1638,"
               "2eb8aa08-aa98-11ea-b4aa-73b441d1638g");
  ExpectFormat("regex", R"(^[a-z]{2}$,(?<y>\d)\k<y>,\u{1F600},a{)",
               R"(\Z,(?i)a,a++,(?<y>a)(?<y>b))");
  ExpectFormat("mac-address", "02:00:5e:10:00:0F,02-00-5E-10-00-0f",
               "02:00:5e:10:00,02:00-5e:10:00:01,0g:00:5e:10:00:01");
  ExpectFormat("ipv4-prefix", "10.0.0.0/8,0.0.0.0/0,1.2.3.4/32",
               "10.0.0.0,10.0.0.0/33,10.0.0.0/,10.0.0.0/08,10.0.0/8");
  ExpectFormat("ipv6-prefix", "fd00::/8,::/0,::1/128", "fd00::,fd00::/129,10.0.0.0/8");
  ExpectFormat("port", "1,65535", ",0,65536,080,-1,99999999999");
}

TEST(Messages, SayWhatWasExpectedOfAValueAndWhatWasFound) {
  Expect(R"({"type": "integer"})", "1.5", "/: expected an integer, found 1.5");
  Expect(R"({"type": ["object", "null", "number"]})", "[]",
         "/: expected a number, an object or null, found an empty array");
  // The wrong type is one fault, whatever else is asked.
  Expect(R"({"type": "integer", "enum": [1, 2], "minimum": 1, "not": {"const": "x"}})", R"("x")",
         R"(/: expected an integer, found the text "x")");
  Expect(R"({"maximum": 60, "multipleOf": 5})", "99",
         "/: 60 is the largest value allowed, found 99\n/: expected a multiple of 5, found 99");
  Expect(R"({"exclusiveMinimum": 0, "exclusiveMaximum": 0.5})", "0.5",
         "/: expected less than 0.5, found 0.5");
  Expect(R"({"enum": ["a", 2, {"b": []}]})", R"("c")",
         R"(/: expected one of "a", 2, {"b":[]}, found the text "c")");
  Expect(
      R"({"enum": ["error", "warning"]})", R"("Waring")",
      R"(/: expected one of "error", "warning", found the text "Waring"; did you mean "warning"?)");
  Expect(R"({"const": "on"})", "true", R"(/: expected "on", found true)");
  Expect(R"({"minLength": 3})", R"("ü")",
         "/: expected a text of at least 3 characters, found 1 character");
  Expect(R"({"pattern": "^[a-z]+$", "maxLength": 3})", R"("ab\u0007d")",
         R"(/: expected a text of at most 3 characters, found 4 characters
/: the text "ab\u0007d" does not match the pattern ^[a-z]+$)");
  Expect(R"({"pattern": "^[a-z]+$", "title": "Word", "description": "Lower-case\tletters"})",
         R"("\u009b\u007f")",
         R"(/: the text "\xc2\x9b\x7f" does not match the pattern ^[a-z]+$ (Lower-case\tletters))");
  Expect(R"({"format": "ipv4"})", R"("10.0.0.256")",
         R"(/: expected an IPv4 address, found the text "10.0.0.256")");
  Expect(R"({"format": "port"})", "8080", "");
  Expect(R"({"format": "port"})", "65536",
         "/: expected a port number from 1 to 65535, found 65536");
}

TEST(Messages, NameTheElementsAndMembers) {
  Expect(R"({"properties": {"servers": {"minItems": 1}}})", R"({"servers": []})",
         "/servers: expected at least 1 element, found 0");
  Expect(R"({"items": {"type": "string"}, "uniqueItems": true})", R"(["a", 1, "b", 1.0])",
         "/: no two elements may be equal, but elements 1 and 3 are\n"
         "/1: expected a text, found 1\n/3: expected a text, found 1");
  Expect(R"({"items": [{"type": "string"}], "additionalItems": false})", R"(["a", "b"])",
         "/1: is not allowed here");
  Expect(R"({"contains": {"const": 1}})", "[2, 3]",
         "/: none of the elements is of the form that at least one has to have");
  Expect(R"({"properties": {"a": {}, "b": false}, "additionalProperties": false})",
         R"({"d": 1, "b": 2})", R"(/d: member "d" is not known; known members: a
/b: is not allowed here)");
  Expect(
      R"({"propertyNames": {"pattern": "^[a-z]+$"}})", R"({"ok": 1, "No": 2})",
      R"(/No: the member name is not allowed: the text "No" does not match the pattern ^[a-z]+$)");
  Expect(R"({"dependencies": {"user": ["password"]}})", R"({"user": "x"})",
         R"(/: member "password" is required because member "user" is given)");
  Expect(
      R"({"patternProperties": {"^e": {"type": "integer"}}, "properties": {"e0": {"minimum": 5}}})",
      R"({"e0": 1, "e1": "x"})", R"(/e0: 5 is the smallest value allowed, found 1
/e1: expected an integer, found the text "x")");
  // Document order, whatever the order in the schema.
  Expect(
      R"({"properties": {"a": {"type": "null"}, "b": {"items": {"type": "null"}}}, "required": ["c"]})",
      R"({"b": [null, 1], "a": 2})", R"(/: member "c" is required
/b/1: expected null, found 1
/a: expected null, found 2)");
}

TEST(Messages, SayWhichFormIsClosest) {
  Expect(R"({"anyOf": [{"type": "string"}, {"type": "null"}]})", "3",
         "/: expected a text or null, found 3");
  Expect(R"({"oneOf": [{"const": "auto"}, {"enum": [10, 100]}]})", "11",
         R"(/: expected one of "auto", 10, 100, found 11)");
  Expect(
      R"({"oneOf": [
             {"properties": {"kind": {"const": "a"}, "x": {"type": "integer"}}, "required": ["kind"]},
             {"properties": {"kind": {"const": "b"}, "y": {"type": "integer"}}, "required": ["kind", "y"]}]})",
      R"({"kind": "b"})",
      R"(/: fits none of the 2 allowed forms; of the closest: member "y" is required)");
  // Those that are equally close are told together.
  Expect(
      R"({"anyOf": [{"format": "ipv4"}, {"format": "ipv6"}, {"type": "integer"},
                       {"enum": ["automatic", "none"]}]})",
      R"("automatc")",
      R"(/: expected an IPv4 address, an IPv6 address, one of "automatic", "none" or an integer, )"
      R"(found the text "automatc"; did you mean "automatic"?)");
  Expect(R"({"anyOf": [{"required": ["a"]}, {"title": "Leased", "required": ["b"]},
                       {"properties": {"c": {"type": "null"}}}]})",
         R"({"c": 1})",
         R"(/: fits none of the 3 allowed forms; of those closest: member "a" is )"
         R"(required, for "Leased" member "b" is required or at /c: expected null, found 1)");
  // What is declared does not change which form fits.
  Expect(R"({"oneOf": [{"properties": {"a": {}}}, {"properties": {"b": {}}}]})", R"({"a": 1})",
         "/: fits 2 of the 2 allowed forms at once (an object with \"a\" and an object with "
         "\"b\"), and may fit only one");
  Expect(R"({"not": {"required": ["a", "b"]}})", R"({"a": 1, "b": 2})",
         R"(/: must not have the members "a" and "b" together)");
  Expect(R"({"not": {"anyOf": [{"required": ["a"]}, {"required": ["b"]}]}})", R"({"b": 2})",
         R"(/: must not have the member "b")");
  Expect(R"({"not": {"enum": ["root"]}})", R"("root")",
         R"(/: the value is one of those that are not allowed: "root")");
  Expect(R"({"if": {"properties": {"mode": {"const": "static"}}}, "then": {"required": ["address"]},
               "else": {"properties": {"address": {"type": "null"}}}})",
         R"({"mode": "dhcp", "address": "x"})", R"(/address: expected null, found the text "x")");
  // The same fault found by two schemas is told once.
  Expect(R"({"allOf": [{"required": ["a"]}, {"required": ["a", "b"]}]})", "{}",
         R"(/: member "a" is required
/: member "b" is required)");
}

TEST(Messages, LongTextsAreShortenedBetweenCharacters) {
  const std::string text(59, 'a');
  EXPECT_EQ(FindingsOf(R"({"type": "null"})", "\"" + text + "üü\""),
            "/: expected null, found the text \"" + text + "...\"");
}

}  // namespace
}  // namespace ValidatorTest
