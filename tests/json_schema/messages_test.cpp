// Findings as an administrator reads them.
#include "json_schema/findings_text.h"

namespace ValidatorTest {
namespace {

TEST(Messages, SayWhatWasExpectedOfAValueAndWhatWasFound) {
  Expect({{R"({"type": "integer"})", "1.5", "/: expected an integer, found 1.5"},
          {R"({"type": ["object", "null", "number"]})", "[]",
           "/: expected a number, an object or null, found an empty array"},
          // The wrong type is one fault, whatever else is asked.
          {R"({"type": "integer", "enum": [1, 2], "minimum": 1, "not": {"const": "x"}})", R"("x")",
           R"(/: expected an integer, found the text "x")"},
          {R"({"maximum": 60, "multipleOf": 5})", "99",
           "/: 60 is the largest value allowed, found 99\n/: expected a multiple of 5, found 99"},
          {R"({"exclusiveMinimum": 0, "exclusiveMaximum": 0.5})", "0.5",
           "/: expected less than 0.5, found 0.5"},
          {R"({"enum": ["a", 2, {"b": []}]})", R"("c")",
           R"(/: expected one of "a", 2, {"b":[]}, found the text "c")"},
          {R"({"const": "on"})", "true", R"(/: expected "on", found true)"},
          {R"({"minLength": 3})", R"("ü")",
           "/: expected a text of at least 3 characters, found 1 character"},
          {R"({"pattern": "^[a-z]+$", "maxLength": 3})", R"("ab\u0007d")",
           R"(/: expected a text of at most 3 characters, found 4 characters
/: the text "ab\u0007d" does not match the pattern ^[a-z]+$)"},
          {R"({"format": "ipv4"})", R"("10.0.0.256")",
           R"(/: expected an IPv4 address, found the text "10.0.0.256")"}});
}

TEST(Messages, NameTheElementsAndMembers) {
  Expect(
      {{R"({"properties": {"servers": {"minItems": 1}}})", R"({"servers": []})",
        "/servers: expected at least 1 element, found 0"},
       {R"({"items": {"type": "string"}, "uniqueItems": true})", R"(["a", 1, "b", 1.0])",
        "/: no two elements may be equal, but elements 1 and 3 are\n"
        "/1: expected a text, found 1\n/3: expected a text, found 1"},
       {R"({"items": [{"type": "string"}], "additionalItems": false})", R"(["a", "b"])",
        "/1: is not allowed here"},
       {R"({"contains": {"const": 1}})", "[2, 3]",
        "/: none of the elements is of the form that at least one has to have"},
       {R"({"properties": {"a": {}, "b": false}, "additionalProperties": false})",
        R"({"d": 1, "b": 2})", R"(/d: member "d" is not known; known members: a
/b: is not allowed here)"},
       {R"({"propertyNames": {"pattern": "^[a-z]+$"}})", R"({"ok": 1, "No": 2})",
        R"(/No: the member name is not allowed: the text "No" does not match the pattern ^[a-z]+$)"},
       {R"({"dependencies": {"user": ["password"]}})", R"({"user": "x"})",
        R"(/: member "password" is required because member "user" is given)"},
       {R"({"patternProperties": {"^e": {"type": "integer"}}, "properties": {"e0": {"minimum": 5}}})",
        R"({"e0": 1, "e1": "x"})", R"(/e0: 5 is the smallest value allowed, found 1
/e1: expected an integer, found the text "x")"},
       // Document order, whatever the order in the schema.
       {R"({"properties": {"a": {"type": "null"}, "b": {"items": {"type": "null"}}}, "required": ["c"]})",
        R"({"b": [null, 1], "a": 2})", R"(/: member "c" is required
/b/1: expected null, found 1
/a: expected null, found 2)"}});
}

TEST(Messages, SayWhichFormIsClosest) {
  Expect(
      {{R"({"anyOf": [{"type": "string"}, {"type": "null"}]})", "3",
        "/: expected a text or null, found 3"},
       {R"({"oneOf": [{"const": "auto"}, {"enum": [10, 100]}]})", "11",
        R"(/: expected one of "auto", 10, 100, found 11)"},
       {R"({"oneOf": [
             {"properties": {"kind": {"const": "a"}, "x": {"type": "integer"}}, "required": ["kind"]},
             {"properties": {"kind": {"const": "b"}, "y": {"type": "integer"}}, "required": ["kind", "y"]}]})",
        R"({"kind": "b"})",
        R"(/: fits none of the 2 allowed forms; the closest is number 2, where /: member "y" is required)"},
       // What is declared does not change which form fits.
       {R"({"oneOf": [{"properties": {"a": {}}}, {"properties": {"b": {}}}]})", R"({"a": 1})",
        "/: fits 2 of the 2 allowed forms at once (numbers 1, 2), and may fit only one"},
       {R"({"not": {"required": ["a", "b"]}})", R"({"a": 1, "b": 2})",
        R"(/: the members "a", "b" are not allowed together, as they are here)"},
       {R"({"not": {"enum": ["root"]}})", R"("root")",
        R"(/: the value is one of those that are not allowed: "root")"},
       {R"({"if": {"properties": {"mode": {"const": "static"}}}, "then": {"required": ["address"]},
               "else": {"properties": {"address": {"type": "null"}}}})",
        R"({"mode": "dhcp", "address": "x"})", R"(/address: expected null, found the text "x")"},
       // The same fault found by two schemas is told once.
       {R"({"allOf": [{"required": ["a"]}, {"required": ["a", "b"]}]})", "{}",
        R"(/: member "a" is required
/: member "b" is required)"}});
}

TEST(Messages, LongTextsAreShortenedBetweenCharacters) {
  const std::string text(59, 'a');
  EXPECT_EQ(FindingsOf(R"({"type": "null"})", "\"" + text + "üü\""),
            "/: expected null, found the text \"" + text + "...\"");
}

}  // namespace
}  // namespace ValidatorTest
