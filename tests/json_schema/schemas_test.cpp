// What is said of schemas that are checked, and compiled ones, which are kept for as long as their types
// live.
#include "json_schema/findings_text.h"
#include "json_schema/registration.h"
#include "json_schema/schema_check.h"
#include "json_schema/schema_registry.h"
#include "support/threads.h"

#include <gmock/gmock.h>

#include <optional>

namespace ValidatorTest {
namespace {

using JsonValidator::CompiledSchema;
using JsonValidator::Registration;
using JsonValidator::SchemaRegistry;

TEST(Registration, CompilesOnceAndOnlyWhenUsed) {
  const Json::Document schema = Parsed(R"({"type": "string", "pattern": "^a"})");
  const Json::TypeSchemaView view(schema);
  EXPECT_EQ(SchemaRegistry::Instance().Find(schema), nullptr);
  const std::uint64_t before = CompiledSchema::CountSoFar();
  const Registration registration(view);
  EXPECT_EQ(CompiledSchema::CountSoFar(), before);
  for (const Rules& rules : {Rules{0, 1}, Rules{0, 1, 3, 7, 8}, Rules{}}) {
    const Registration another(view);
    FindingsOf(schema, Json::Value("ab"), rules);
  }
  EXPECT_EQ(CompiledSchema::CountSoFar(), before + 1);
}

TEST(Registration, LastsUntilTheLastOneGoes) {
  Json::Document schema = Parsed(R"({"type": "string"})");
  const Json::TypeSchemaView view(schema);
  std::optional<Registration> one(std::in_place, view);
  std::optional<Registration> other(std::in_place, view);
  one.reset();
  const auto held = SchemaRegistry::Instance().Find(schema);
  ASSERT_NE(held, nullptr);
  other.reset();
  EXPECT_EQ(SchemaRegistry::Instance().Find(schema), nullptr);
  EXPECT_TRUE(held->Faults().empty());  // what is in use stays
  // Another schema at the same address is seen as what it is.
  schema["type"] = "null";
  EXPECT_EQ(FindingsOf(schema, Json::Value("a")), "/: expected null, found the text \"a\"");
}

TEST(Registration, ThreadsShareOneSchema) {
  const Json::Document schema =
      Parsed(R"({"properties": {"name": {"pattern": "^[a-z]+$"}, "next": {"$ref": "#"}}})");
  const Json::TypeSchemaView view(schema);
  const Json::Document value = Parsed(R"({"next": {"name": "A"}})");
  const Registration registration(view);
  TestSupport::InThreads(4, [&](int) {
    const Json::Document own = Parsed(R"({"type": "object"})");
    const Json::TypeSchemaView ownView(own);
    for (int round = 0; round < 200; ++round) {
      const Registration passing(ownView);  // registrations come and go meanwhile
      EXPECT_EQ(FindingsOf(own, value), "");
      EXPECT_EQ(FindingsOf(schema, value),
                R"(/next/name: the text "A" does not match the pattern ^[a-z]+$)");
    }
  });
}

std::string Check(std::string_view schema) {
  Json::Document result;
  JsonValidator::CheckSchema(Parsed(schema), result);
  return Lines(result);
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

TEST(CheckSchema, NamesWhatEcmaScriptDoesNotHaveInPatterns) {
  for (const auto& [pattern, fault] :
       {std::pair(R"(a\\Z)", R"(ECMAScript has no escape \Z (at byte 1))"),
        {R"([\\h])", R"(ECMAScript has no escape \h (at byte 1))"},
        {R"(\\x{41})", R"(ECMAScript has no escape \x (at byte 0))"},
        {R"(\\01)", R"(ECMAScript has no escape \0 (at byte 0))"},
        {R"(\\pL)", R"(ECMAScript has no escape \p (at byte 0))"},
        {R"(\\p{Greek})", R"(ECMAScript has no escape \p{Greek} (at byte 0))"},
        {R"(\\u{110000})", R"(ECMAScript has no escape \u{110000 (at byte 0))"},
        {R"(\\k<a>)", R"(there is no group for the reference \k<a> (at byte 0))"},
        {R"((a)\\2)", R"(there is no group for the reference \2 (at byte 3))"},
        {"é(?i)a", "ECMAScript has no group (?i (at byte 2)"},
        {"(*UTF)", "ECMAScript has no group (*U (at byte 0)"},
        {"(?P<a>b)", "ECMAScript has no group (?P (at byte 0)"},
        {"(?>a)", "ECMAScript has no group (?> (at byte 0)"},
        {"(?<1>a)", "the name of a group is expected in (?<1 (at byte 0)"},
        {"a*+", "ECMAScript has no possessive quantifier + (at byte 2)"},
        {"^*", "there is nothing that * could repeat (at byte 1)"},
        {"{2}", "there is nothing that {2} could repeat (at byte 0)"},
        {"a{2,1}", "numbers out of order in {2,1} (at byte 1)"},
        {"(a){65536}", "the number is too large in {65536} (at byte 3)"},
        {"[b-a]", "range out of order in character class: b-a (at byte 1)"},
        {"[a", "missing terminating ] for character class (at byte 0)"},
        {"a)", "unmatched closing parenthesis (at byte 1)"},
        {"(?<=a+)b", "lookbehind assertion is not fixed length (at byte 0)"}}) {
    const std::string found = Check(R"({"pattern": ")" + std::string(pattern) + "\"}");
    EXPECT_TRUE(found.ends_with(std::string(" is not a valid pattern: ") + fault)) << found;
  }
}

TEST(CheckSchema, ReportsReferencesThatLeadNowhereOrOutside) {
  EXPECT_EQ(Check(R"({"required": ["a"], "properties": {
      "a": {"$ref": "#/definitions/missing"}, "b": {"$ref": "http://example.com/schema#/a"},
      "d": {"$ref": 5}, "e": {"$ref": "#/properties"}, "f": {"$ref": "#/required/0"},
      "hides": {"$id": "http://example.com/", "$ref": "#/properties/e"}}})"),
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
