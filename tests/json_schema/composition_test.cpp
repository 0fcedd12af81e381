// Declared members and "required" where schemas are made of others.
#include "json_schema/findings_text.h"

namespace ValidatorTest {
namespace {

constexpr std::string_view kComposed = R"({
  "definitions": { "named": { "properties": { "name": {"type": "string"} } } },
  "properties": { "base": {}, "mode": {} },
  "allOf": [ {"$ref": "#/definitions/named"} ],
  "oneOf": [
    { "properties": { "kind": {"const": "tcp"}, "port": {} }, "required": ["kind"] },
    { "properties": { "kind": {"const": "unix"}, "path": {} }, "required": ["kind"] } ],
  "if": { "properties": { "mode": {"const": "static"} }, "required": ["mode"] },
  "then": { "properties": { "address": {} } },
  "else": { "properties": { "lease": {} } },
  "dependencies": { "port": { "properties": { "backlog": {} } } }
})";

std::string Unknown(std::string_view object) {
  std::string unknown;
  Json::Document result;
  JsonValidator::Validate(Parsed(kComposed), Parsed(object), result, {0, 1, 8}, "");
  for (const Json::Value& finding : result.GetArray()) {
    unknown += std::string(unknown.empty() ? "" : " ") + finding["field"].GetString();
  }
  return unknown;
}

TEST(Composition, AMemberDeclaredInAnyApplicableSchemaIsDeclared) {
  EXPECT_EQ(Unknown(R"({"base": 1, "name": "n", "kind": "tcp", "port": 1, "backlog": 1,
                        "mode": "static", "address": 1})"),
            "");
  EXPECT_EQ(Unknown(R"({"kind": "unix", "path": 1, "lease": 1})"), "");
}

TEST(Composition, OnlyTheBranchThatAppliesDeclares) {
  EXPECT_EQ(Unknown(R"({"kind": "unix", "port": 1, "nmae": 1, "address": 1})"),
            "/port /nmae /address");
  EXPECT_EQ(Unknown(R"({"kind": "tcp", "backlog": 1, "mode": "static", "lease": 1})"),
            "/backlog /lease");
  // Of a value that fits no branch it is not known which was meant: that is the one finding.
  EXPECT_EQ(Unknown(R"({"kind": "udp", "port": 1, "path": 1})"), "/");
}

TEST(Composition, DeclaringDoesNotChangeWhichBranchFits) {
  constexpr std::string_view kOpenBranches =
      R"({"oneOf": [{"properties": {"a": {}}}, {"properties": {"b": {}}}]})";
  EXPECT_EQ(FindingsOf(kOpenBranches, R"({"a": 1})"),
            "/: fits 2 of the 2 allowed forms at once (numbers 1, 2), and may fit only one");
}

TEST(Composition, WhatIsOpenStaysOpen) {
  EXPECT_EQ(FindingsOf(R"({"type": "object"})", R"({"any": {"thing": 1}})"), "");
  EXPECT_EQ(FindingsOf(R"({"properties": {"a": {}}, "additionalProperties": true})", R"({"b": 1})"),
            "");
  EXPECT_EQ(
      FindingsOf(
          R"({"properties": {"a": {}}, "allOf": [{"additionalProperties": {"type": "null"}}]})",
          R"({"a": null, "b": null})"),
      "");
  // A condition asks about members without making the object one of those members only.
  EXPECT_EQ(FindingsOf(
                R"({"if": {"properties": {"a": {"const": 1}}}, "then": {"properties": {"b": {}}}})",
                R"({"a": 1, "c": 2})"),
            "");
}

TEST(Composition, AMemberThatTheSchemaItselfRefusesIsNamedOnce) {
  constexpr std::string_view kClosed = R"({"allOf": [
      {"properties": {"a": {}}, "additionalProperties": false}, {"properties": {"b": {}}}]})";
  EXPECT_EQ(FindingsOf(kClosed, R"({"c": 1})", {0, 1}),
            "/c: member \"c\" is not known; known members: a");
  EXPECT_EQ(FindingsOf(kClosed, R"({"c": 1})", {0}),
            "/c: member \"c\" is not known; known members: a, b");
}

TEST(Composition, MembersOfMembersAreTakenTogether) {
  constexpr std::string_view kTwice = R"({"allOf": [
    {"properties": {"net": {"properties": {"a": {}}}, "list": {"items": {"properties": {"x": {}}}}}},
    {"properties": {"net": {"properties": {"b": {}}}, "list": {"items": {"properties": {"y": {}}}}}}]})";
  EXPECT_EQ(FindingsOf(kTwice, R"({"net": {"a": 1, "b": 2}, "list": [{"x": 1, "y": 2}]})"), "");
  EXPECT_EQ(FindingsOf(kTwice, R"({"net": {"c": 1}, "list": [{"z": 1}]})"),
            "/net/c: member \"c\" is not known; known members: a, b\n"
            "/list/0/z: member \"z\" is not known; known members: x, y");
}

TEST(Composition, WithoutRequiredOnlyPlainlyMissingMembersAreForgiven) {
  const Rules kUpdate{0, 1};
  struct {
    const char* schema;
    const char* value;
    bool forgiven;
  } const cases[] = {
      {R"({"required": ["a"]})", "{}", true},
      {R"({"properties": {"n": {"required": ["a"]}}})", R"({"n": {}})", true},
      {R"({"allOf": [{"required": ["a"]}]})", "{}", true},
      {R"({"if": {"required": ["b"]}, "then": {"required": ["a"]}})", R"({"b": 1})", true},
      {R"({"anyOf": [{"required": ["a"]}, {"required": ["b"]}]})", "{}", false},
      {R"({"oneOf": [{"required": ["a"]}, {"required": ["b"]}]})", "{}", false},
      {R"({"contains": {"required": ["a"]}})", "[{}]", false},
      {R"({"not": {"required": ["a"]}})", R"({"a": 1})", false},
  };
  for (const auto& one : cases) {
    EXPECT_NE(FindingsOf(one.schema, one.value, {1, 8}), "") << one.schema;
    EXPECT_EQ(FindingsOf(one.schema, one.value, kUpdate) == "", one.forgiven) << one.schema;
  }
  EXPECT_EQ(FindingsOf(R"({"not": {"required": ["a"]}})", "{}", kUpdate), "");
  EXPECT_EQ(FindingsOf(R"({"if": {"required": ["a"]}, "then": false})", "{}", kUpdate), "");
}

TEST(Composition, SchemasMayReferToThemselvesThroughMembers) {
  constexpr std::string_view kTree = R"({"properties": {"name": {"type": "string"},
      "children": {"items": {"$ref": "#"}}}})";
  EXPECT_EQ(
      FindingsOf(kTree, R"({"children": [{"name": "a", "children": [{"name": 1, "x": 2}]}]})"),
      "/children/0/children/0/name: expected a text, found 1\n"
      "/children/0/children/0/x: member \"x\" is not known; known members: name, children");
}

}  // namespace
}  // namespace ValidatorTest
