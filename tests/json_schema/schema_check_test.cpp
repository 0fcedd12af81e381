// What CheckSchema says of schemas.
#include "json_schema/schema_check.h"

#include "json_schema/findings_text.h"

#include <gmock/gmock.h>

namespace ValidatorTest {
namespace {

std::string Check(std::string_view schema) {
  Json::Document result;
  JsonValidator::CheckSchema(Parsed(schema), result);
  return Lines(result);
}

TEST(CheckSchema, FindsNothingInSoundSchemas) {
  for (const char* schema :
       {R"({"type": ["string", "null"], "unknown": {"type": 3}, "format": "any"})",
        R"({"properties": {"$ref": {"type": "string"}, "next": {"$ref": "#"}},
            "definitions": {"a/b~": {"items": {"$ref": "#/definitions/a~1b~0"}}, "c d": false},
            "additionalProperties": {"$ref": "#/definitions/c%20d"}})",
        R"({"$ref": "#/definitions/a", "minimum": "hidden by the reference",
            "definitions": {"a": {"minLength": 2.0}}})"}) {
    EXPECT_EQ(Check(schema), "") << schema;
  }
}

TEST(CheckSchema, ReportsEveryMalformedKeywordWhereItStands) {
  EXPECT_EQ(Check(R"({
      "type": "text", "properties": {"a": 1, "b": {"minimum": "3", "vital": 1}},
      "required": ["x", "x", 2], "allOf": [], "items": [{"maxLength": -1}, null],
      "definitions": {"unused": {"multipleOf": 0, "uniqueItems": "yes"}},
      "dependencies": {"a": ["b", 1]}, "enum": 1, "format": 2, "patternProperties": {"(": {}}})"),
            R"(/type: "text" is not a type; the types are array, boolean, integer, null, number, )"
            R"(object and string
/properties/a: expected a schema (an object, or true or false), found 1
/properties/b/minimum: "minimum" has to be a number, found the text "3"
/properties/b/vital: "vital" has to be true or false, found 1
/required/1: "x" is listed twice
/required/2: expected the name of a member, found 2
/allOf: "allOf" has to be an array of at least one schema, found an empty array
/items/0/maxLength: "maxLength" has to be a whole number from 0, found -1
/items/1: expected a schema (an object, or true or false), found null
/definitions/unused/multipleOf: "multipleOf" has to be a number greater than 0, found 0
/definitions/unused/uniqueItems: "uniqueItems" has to be true or false, found the text "yes"
/dependencies/a/1: expected the name of a member, found 1
/enum: "enum" has to be an array, found 1
/format: "format" has to be a text, found 2
/patternProperties/(: "(" is not a valid pattern: missing closing parenthesis (at byte 1))");
}

TEST(CheckSchema, ReportsReferencesThatLeadNowhereOrOutside) {
  EXPECT_EQ(Check(R"({"required": ["a"], "properties": {
      "a": {"$ref": "#/definitions/missing"}, "b": {"$ref": "http://example.com/schema#/a"},
      "d": {"$ref": 5}, "e": {"$ref": "#/properties"}, "f": {"$ref": "#/required/0"}}})"),
            R"(/properties/a/$ref: the reference "#/definitions/missing" leads nowhere
/properties/b/$ref: the reference "http://example.com/schema#/a" leads outside the schema
/properties/d/$ref: "$ref" has to be a text, found 5
/properties/f/$ref: the reference "#/required/0" leads to something that is no schema: the text "a")");
}

TEST(CheckSchema, ReportsReferencesThatLoopInOnePlace) {
  for (const char* keyword :
       {R"("allOf": [@])", R"("anyOf": [true, @])", R"("oneOf": [@])", R"("not": @)", R"("if": @)",
        R"("if": true, "then": @)", R"("if": true, "else": @)", R"("dependencies": {"a": @})"}) {
    std::string schema = std::string(R"({"definitions": {"loop": {)") + keyword +
                         R"(}}, "properties": {"x": {"$ref": "#/definitions/loop"}}})";
    schema.replace(schema.find('@'), 1, R"({"$ref": "#/definitions/loop"})");
    EXPECT_THAT(Check(schema),
                testing::MatchesRegex("[^\n]*/.ref: the reference leads back to where it stands"))
        << schema;
  }
  EXPECT_EQ(Check(R"({"definitions": {"a": {"$ref": "#/definitions/b"},
                                      "b": {"$ref": "#/definitions/a"}}})"),
            "/definitions/b/$ref: the reference leads back to where it stands");
  EXPECT_EQ(Check(R"({"properties": {"a": {"type": "null"}, "a": {"type": "string"}}})"),
            "/properties/a: member \"a\" is given twice");
}

}  // namespace
}  // namespace ValidatorTest
