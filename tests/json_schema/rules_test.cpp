// What each rule says of objects of a type, and of objects whose schemas are made of others.
#include "json_schema/findings_text.h"

namespace ValidatorTest {
namespace {

constexpr const char* kType = R"({
  "type": "object", "required": ["name", "mtu"], "properties": {
    "name":   {"type": "string", "instanceId": true},
    "mtu":    {"type": "integer", "minimum": 68},
    "serial": {"type": "string", "readOnly": true},
    "mac":    {"type": "string", "vital": true},
    "lease":  {"type": "object", "cached": true, "properties": {"server": {"type": "string"}}},
    "link":   {"type": "object", "properties": {"speed": {"type": "integer", "vital": true},
               "state": {"type": "string", "cached": true}, "label": {"type": "string"}}},
    "routes": {"type": "array", "items": {"type": "object", "properties": {
               "id": {"type": "string", "instanceId": true},
               "via": {"type": "string", "vital": true}, "metric": {"type": "integer"}}}},
    "free":   {"type": "object"}}})";

constexpr const char* kComplete = R"({"name": "eth0", "mtu": 1500, "serial": "S1", "mac": "02::",
  "lease": {"server": "a"}, "link": {"speed": 1, "state": "up", "label": "x"},
  "routes": [{"id": "a", "via": "b", "metric": 1}], "free": {"any": [1]}})";

constexpr const char* kUnknown =
    " is not known; known members: name, mtu, serial, mac, lease, link, routes, free";

void Check(const Rules& rules, const char* object, const std::string& findings) {
  EXPECT_EQ(FindingsOf(kType, object, rules), findings) << object;
}

// The same finding at each of the places "a,b,c".
std::string At(const std::string& places, const std::string& finding) {
  std::string lines;
  for (const std::string& place : Split(places)) {
    lines += (lines.empty() ? "" : "\n") + place + ": " + finding;
  }
  return lines;
}

TEST(Rules, MembersHaveToBeDeclaredAndGivenOnce) {
  Check({0, 1, 7, 8}, kComplete, "");
  Check({0}, R"({"name": "a", "mtu": 99, "mut": 1, "x/y~": {"deep": 1}})",
        std::string("/mut: member \"mut\"") + kUnknown +
            "; did you mean \"mtu\"?\n/x~1y~0: member \"x/y~\"" + kUnknown);
  Check(
      {0}, R"({"link": {"sped": 1}, "routes": [{"id": "a"}, {"id": "b", "vai": "c"}]})",
      R"(/link/sped: member "sped" is not known; known members: speed, state, label; did you mean "speed"?
/routes/1/vai: member "vai" is not known; known members: id, via, metric; did you mean "via"?)");
  Check({0}, R"({"mtu": 99, "free": {"a": 1, "b": 2, "a": 3, "a": 4}, "mtu": 98})",
        R"(/free/a: member "a" is given twice
/mtu: member "mtu" is given twice)");
  Check({2, 6, 10, 11, 13, 1000, -1}, R"({"unknown": 1, "mtu": 1, "mtu": "x"})", "");
}

// The check of the assertions looks at names, too, and spares the rules a walk of their own.
TEST(Rules, MembersAreDeclaredOrNotWhetherAssertionsAreAskedOrNot) {
  const std::string closed = R"({"properties": {"a": {}}})";
  for (const auto& [schema, value] : {
           std::pair<std::string, std::string>(closed, R"({"x": 1})"),
           {R"({"$ref": "#/definitions/d", "definitions": {"d": )" + closed + "}}", R"({"x": 1})"},
           {R"({"properties": {"p": {"items": )" + closed + "}}}", R"({"p": [{}, {"x": 1}]})"},
           {R"({"items": [{}, )" + closed + "]}", R"([{"x": 1}, {"a": 1, "x": 1}])"},
           {R"({"patternProperties": {"^p": )" + closed + "}}", R"({"p1": {"x": 1}})"},
           {R"({"additionalProperties": )" + closed + "}", R"({"p": {"x": 1}})"},
           {R"({"allOf": [)" + closed + R"(, {"properties": {"b": {}}}]})", R"({"b": 1, "x": 1})"},
           {R"({"anyOf": [)" + closed + ", false]}", R"({"x": 1})"},
           {R"({"items": {"oneOf": [{"items": )" + closed + "}, false]}}", R"([[{"x": 1}]])"},
       }) {
    const std::string findings = FindingsOf(schema, value, {0, 1});
    EXPECT_NE(findings.find(R"(member "x" is not known)"), std::string::npos) << schema;
    EXPECT_EQ(findings, FindingsOf(schema, value, {0}));
  }
  EXPECT_EQ(FindingsOf(R"({"allOf": [)" + closed + R"(, {"properties": {"b": {}}}]})",
                       R"({"a": 1, "b": 1})", {0, 1}),
            "");
}

TEST(Rules, WhatIsRequiredIsARuleOfItsOwn) {
  const std::string required = R"(/: member "name" is required)";
  const std::string small = "/mtu: 68 is the smallest value allowed, found 1";
  Check({0, 1, 8}, R"({"mtu": 1})", required + "\n" + small);
  Check({0, 1}, R"({"mtu": 1})", small);
  Check({8}, R"({"mtu": 1})", required);
  Check({0}, R"({"mtu": "x"})", "");
}

TEST(Rules, DataOfOtherPartsAreNamedWhereTheyStand) {
  Check({3}, kComplete, R"(/mac: vital configuration may not be given here
/lease: cached configuration may not be given here
/link/speed: vital configuration may not be given here
/link/state: cached configuration may not be given here
/routes/0/via: vital configuration may not be given here)");
  Check({4}, kComplete, "/serial: is read-only and may not be given");
  Check({5}, kComplete,
        At("/mtu,/serial,/lease,/link/state,/link/label,/routes/0/metric,/free",
           "only vital configuration may be given here"));
  Check({9}, R"({"name": "eth0", "lease": {"server": "a"}, "link": {"state": "up"}})", "");
  Check({9}, R"({"name": "eth0", "mac": "02::", "routes": []})",
        At("/mac,/routes", "only cached configuration may be given here"));
  // A member that nobody knows is said to be unknown, and nothing else.
  Check({0, 9}, R"({"cash": 1})", std::string("/cash: member \"cash\"") + kUnknown);
}

TEST(Rules, InstanceIdsAreGivenAndTakenOnce) {
  Check({7}, "{}", "");
  Check({1, 7}, R"({"mtu": 99, "routes": [{}, {"metric": 1}, {"id": ""}, {"id": 5}]})",
        R"(/: member "name" is required
/routes/1: member "id" is required
/routes/2/id: the instance id may not be empty
/routes/3/id: expected a text, found 5)");
  Check({7}, R"({"name": "n", "routes": [{"id": "b"}, {"id": "a"}, {"metric": 1, "id": "b"},
      {"id": "b"}]})",
        At("/routes/2/id,/routes/3/id", R"(the instance id "b" is taken by element 0)"));
  // "required" and the rule about instance ids say the same, once.
  Check({1, 7, 8}, R"({"mtu": 99})", R"(/: member "name" is required)");
}

TEST(RulesOfWholeTypes, TheNearestTagGoverns) {
  constexpr std::string_view kVital = R"({"vital": true, "properties": {
      "id": {"type": "string", "instanceId": true},
      "a": {"properties": {"b": {"cached": true}, "c": {}}}}})";
  EXPECT_EQ(FindingsOf(kVital, R"({"id": "x", "a": {"b": 1, "c": 1}})", {5}),
            "/a/b: only vital configuration may be given here");
  EXPECT_EQ(FindingsOf(kVital, R"({"id": "x", "a": {"b": 1, "c": 1}})", {3}),
            R"(/a/b: cached configuration may not be given here
/a/c: vital configuration may not be given here)");
  EXPECT_EQ(FindingsOf(R"({"definitions": {"secret": {"vital": true}, "text": {"type": "string"}},
      "properties": {"a": {"$ref": "#/definitions/secret"},
                     "b": {"$ref": "#/definitions/text", "cached": true}}})",
                       R"({"a": "x", "b": "y"})", {0, 1, 3}),
            R"(/a: vital configuration may not be given here
/b: cached configuration may not be given here)");
  EXPECT_EQ(FindingsOf(R"({"vital": false, "cached": true, "properties": {"a": {}}})",
                       R"({"a": 1})", {0, 1, 9}),
            "");
  // An empty object belongs to the part of all that it may hold.
  Expect(R"({"properties": {"o": {"properties": {"v": {"vital": true}}}}})", R"({"o": {}})", "",
         {5});
}

TEST(RulesOfWholeTypes, AMemberWithoutANameIsNoId) {
  constexpr const char* kSchema = R"({"required": [""], "properties": {"": {"vital": true},
      "box": {"properties": {"v": {"vital": true}}, "additionalProperties": {}}}})";
  Expect(kSchema, R"({"": 1})", "/: vital configuration may not be given here", {3});
  Expect(kSchema, R"({"": 1, "box": {"v": 1, "": 1}})",
         "/box/: only vital configuration may be given here", {5});
  Expect(kSchema, R"({"box": {"": 1}})", "", {1, 3, JsonValidator::RULE_REQUIRED_OF_USER});
}

TEST(RulesOfWholeTypes, GeneratedInstanceIdsMayBeGivenAndAreNotAskedFor) {
  constexpr const char* kSchema = R"({
      "definitions": {"rule": {"properties": {"a": {}}, "additionalProperties": false}},
      "properties": {"others": {"items": {"$ref": "#/definitions/rule"}}, "list": {"items": {
                         "generatedInstanceId": true, "$ref": "#/definitions/rule"}}}})";
  Expect(kSchema, R"({"list": [{"a": 1}, {"cs_generated_id": "x", "a": 1}]})", "");
  Expect(kSchema, R"({"list": [{"cs_generated_id": 1, "b": 1}], "others": [{"c": 1}]})",
         R"(/list/0/cs_generated_id: expected a text, found 1
/list/0/b: member "b" is not known; known members: a
/others/0/c: member "c" is not known; known members: a)");
}

TEST(Composition, WhatAppliesDeclaresAndNothingElse) {
  const Json::Document schema = Parsed(R"({
    "definitions": {"named": {"properties": {"name": {"type": "string"}}}},
    "properties": {"base": {}, "mode": {}}, "allOf": [{"$ref": "#/definitions/named"}],
    "oneOf": [{"properties": {"kind": {"const": "tcp"}, "port": {}}, "required": ["kind"]},
              {"properties": {"kind": {"const": "unix"}, "path": {}}, "required": ["kind"]}],
    "if": {"properties": {"mode": {"const": "static"}}, "required": ["mode"]},
    "then": {"properties": {"address": {}}}, "else": {"properties": {"lease": {}}},
    "dependencies": {"port": {"properties": {"backlog": {}}}}})");
  const auto undeclared = [&](std::string_view object) {
    Json::Document result;
    JsonValidator::Validate(schema, Parsed(object), result, {0, 1, 8}, "");
    std::string fields;
    for (const Json::Value& finding : result.GetArray()) {
      fields += std::string(finding["field"].GetString()) + " ";
    }
    return fields;
  };
  EXPECT_EQ(undeclared(R"({"base": 1, "name": "n", "kind": "tcp", "port": 1, "backlog": 1,
                           "mode": "static", "address": 1})"),
            "");
  EXPECT_EQ(undeclared(R"({"kind": "unix", "path": 1, "lease": 1})"), "");
  EXPECT_EQ(undeclared(R"({"kind": "unix", "port": 1, "nmae": 1, "address": 1})"),
            "/port /nmae /address ");
  EXPECT_EQ(undeclared(R"({"kind": "tcp", "backlog": 1, "mode": "static", "lease": 1})"),
            "/backlog /lease ");
  // Of a value that fits no branch it is not known which was meant: that is the one finding.
  EXPECT_EQ(undeclared(R"({"kind": "udp", "port": 1, "path": 1})"), "/ ");
}

TEST(Composition, WhatIsOpenStaysOpen) {
  Expect(R"({"type": "object"})", R"({"any": {"thing": 1}})", "");
  Expect(R"({"properties": {"a": {}}, "additionalProperties": true})", R"({"b": 1})", "");
  Expect(R"({"properties": {"a": {}}, "allOf": [{"additionalProperties": {"type": "null"}}]})",
         R"({"a": null, "b": null})", "");
  // A condition asks about members without making the object one of those members only.
  Expect(R"({"if": {"properties": {"a": {"const": 1}}}, "then": {"properties": {"b": {}}}})",
         R"({"a": 1, "c": 2})", "");
}

TEST(Composition, SchemasOfOneObjectAreTakenTogether) {
  constexpr const char* kClosed = R"({"allOf": [
      {"properties": {"a": {}}, "additionalProperties": false}, {"properties": {"b": {}}}]})";
  constexpr const char* kTwice = R"({"allOf": [
    {"properties": {"net": {"properties": {"a": {}}}, "list": {"items": {"properties": {"x": {}}}}}},
    {"properties": {"net": {"properties": {"b": {}}}, "list": {"items": {"properties": {"y": {}}}}}}]})";
  // A member that the schema itself refuses is named once.
  Expect(kClosed, R"({"c": 1})", R"(/c: member "c" is not known; known members: a)", {0, 1});
  Expect(kClosed, R"({"c": 1})", R"(/c: member "c" is not known; known members: a, b)", {0});
  Expect(kTwice, R"({"net": {"a": 1, "b": 2}, "list": [{"x": 1, "y": 2}]})", "");
  Expect(kTwice, R"({"net": {"c": 1}, "list": [{"z": 1}]})",
         R"(/net/c: member "c" is not known; known members: a, b
/list/0/z: member "z" is not known; known members: x, y)");
  Expect(R"({"properties": {"name": {"type": "string"}, "children": {"items": {"$ref": "#"}}}})",
         R"({"children": [{"name": "a", "children": [{"name": 1, "x": 2}]}]})",
         R"(/children/0/children/0/name: expected a text, found 1
/children/0/children/0/x: member "x" is not known; known members: name, children)");
}

TEST(Composition, WithoutRequiredOnlyPlainlyMissingMembersAreForgiven) {
  const Rules kUpdate{0, 1};
  const auto forgiven = [&](const char* schema, const char* value) {
    EXPECT_NE(FindingsOf(schema, value, {1, 8}), "") << schema;
    return FindingsOf(schema, value, kUpdate).empty();
  };
  EXPECT_TRUE(forgiven(R"({"required": ["a"]})", "{}"));
  EXPECT_TRUE(forgiven(R"({"properties": {"n": {"required": ["a"]}}})", R"({"n": {}})"));
  EXPECT_TRUE(forgiven(R"({"allOf": [{"required": ["a"]}]})", "{}"));
  EXPECT_TRUE(
      forgiven(R"({"if": {"required": ["b"]}, "then": {"required": ["a"]}})", R"({"b": 1})"));
  EXPECT_FALSE(forgiven(R"({"anyOf": [{"required": ["a"]}, {"required": ["b"]}]})", "{}"));
  EXPECT_FALSE(forgiven(R"({"oneOf": [{"required": ["a"]}, {"required": ["b"]}]})", "{}"));
  EXPECT_FALSE(forgiven(R"({"contains": {"required": ["a"]}})", "[{}]"));
  EXPECT_FALSE(forgiven(R"({"not": {"required": ["a"]}})", R"({"a": 1})"));
  Expect(R"({"not": {"required": ["a"]}})", "{}", "", kUpdate);
  Expect(R"({"if": {"required": ["a"]}, "then": false})", "{}", "", kUpdate);
}

}  // namespace
}  // namespace ValidatorTest
