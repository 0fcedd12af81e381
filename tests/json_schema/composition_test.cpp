// Declared members and "required" where schemas are made of others.
#include "json_schema/findings_text.h"

namespace ValidatorTest {
namespace {

TEST(Composition, WhatAppliesDeclaresAndNothingElse) {
  const Json::Document schema = Parsed(R"({
    "definitions": {"named": {"properties": {"name": {"type": "string"}}}},
    "properties": {"base": {}, "mode": {}}, "allOf": [{"$ref": "#/definitions/named"}],
    "oneOf": [{"properties": {"kind": {"const": "tcp"}, "port": {}}, "required": ["kind"]},
              {"properties": {"kind": {"const": "unix"}, "path": {}}, "required": ["kind"]}],
    "if": {"properties": {"mode": {"const": "static"}}, "required": ["mode"]},
    "then": {"properties": {"address": {}}}, "else": {"properties": {"lease": {}}},
    "dependencies": {"port": {"properties": {"backlog": {}}}}})");
  const std::pair<const char*, const char*> cases[] = {
      {R"({"base": 1, "name": "n", "kind": "tcp", "port": 1, "backlog": 1, "mode": "static",
           "address": 1})",
       ""},
      {R"({"kind": "unix", "path": 1, "lease": 1})", ""},
      {R"({"kind": "unix", "port": 1, "nmae": 1, "address": 1})", "/port /nmae /address "},
      {R"({"kind": "tcp", "backlog": 1, "mode": "static", "lease": 1})", "/backlog /lease "},
      // Of a value that fits no branch it is not known which was meant: that is the one finding.
      {R"({"kind": "udp", "port": 1, "path": 1})", "/ "}};
  for (const auto& [object, fields] : cases) {
    Json::Document result;
    JsonValidator::Validate(schema, Parsed(object), result, {0, 1, 8}, "");
    std::string found;
    for (const Json::Value& finding : result.GetArray()) {
      found += std::string(finding["field"].GetString()) + " ";
    }
    EXPECT_EQ(found, fields) << object;
  }
}

TEST(Composition, WhatIsOpenStaysOpen) {
  Expect({{R"({"type": "object"})", R"({"any": {"thing": 1}})", ""},
          {R"({"properties": {"a": {}}, "additionalProperties": true})", R"({"b": 1})", ""},
          {R"({"properties": {"a": {}}, "allOf": [{"additionalProperties": {"type": "null"}}]})",
           R"({"a": null, "b": null})", ""},
          // A condition asks about members without making the object one of those members only.
          {R"({"if": {"properties": {"a": {"const": 1}}}, "then": {"properties": {"b": {}}}})",
           R"({"a": 1, "c": 2})", ""}});
}

TEST(Composition, SchemasOfOneObjectAreTakenTogether) {
  constexpr const char* kClosed = R"({"allOf": [
      {"properties": {"a": {}}, "additionalProperties": false}, {"properties": {"b": {}}}]})";
  constexpr const char* kTwice = R"({"allOf": [
    {"properties": {"net": {"properties": {"a": {}}}, "list": {"items": {"properties": {"x": {}}}}}},
    {"properties": {"net": {"properties": {"b": {}}}, "list": {"items": {"properties": {"y": {}}}}}}]})";
  Expect({// A member that the schema itself refuses is named once.
          {kClosed, R"({"c": 1})", R"(/c: member "c" is not known; known members: a)", {0, 1}},
          {kClosed, R"({"c": 1})", R"(/c: member "c" is not known; known members: a, b)", {0}},
          {kTwice, R"({"net": {"a": 1, "b": 2}, "list": [{"x": 1, "y": 2}]})", ""},
          {kTwice, R"({"net": {"c": 1}, "list": [{"z": 1}]})",
           R"(/net/c: member "c" is not known; known members: a, b
/list/0/z: member "z" is not known; known members: x, y)"},
          {R"({"properties": {"name": {"type": "string"}, "children": {"items": {"$ref": "#"}}}})",
           R"({"children": [{"name": "a", "children": [{"name": 1, "x": 2}]}]})",
           R"(/children/0/children/0/name: expected a text, found 1
/children/0/children/0/x: member "x" is not known; known members: name, children)"}});
}

TEST(Composition, WithoutRequiredOnlyPlainlyMissingMembersAreForgiven) {
  const Rules kUpdate{0, 1};
  const struct {
    const char* schema;
    const char* value;
    bool forgiven;
  } cases[] = {
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
  Expect({{R"({"not": {"required": ["a"]}})", "{}", "", kUpdate},
          {R"({"if": {"required": ["a"]}, "then": false})", "{}", "", kUpdate}});
}

}  // namespace
}  // namespace ValidatorTest
