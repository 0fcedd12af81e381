// One type, and what each rule says of objects of it.
#include "json_schema/findings_text.h"

namespace ValidatorTest {
namespace {

constexpr std::string_view kType = R"({
  "type": "object",
  "properties": {
    "name":    { "type": "string", "instanceId": true },
    "mtu":     { "type": "integer", "minimum": 68 },
    "serial":  { "type": "string", "readOnly": true },
    "mac":     { "type": "string", "vital": true },
    "lease":   { "type": "object", "cached": true,
                 "properties": { "server": { "type": "string" } } },
    "link":    { "type": "object",
                 "properties": { "speed": { "type": "integer", "vital": true },
                                 "state": { "type": "string", "cached": true },
                                 "label": { "type": "string" } } },
    "routes":  { "type": "array",
                 "items": { "type": "object",
                            "properties": { "id": { "type": "string", "instanceId": true },
                                            "via": { "type": "string", "vital": true },
                                            "metric": { "type": "integer" } } } },
    "free":    { "type": "object" }
  },
  "required": ["name", "mtu"]
})";

struct Case {
  const char* object;
  Rules rules;
  const char* findings;
};

void Expect(const std::vector<Case>& cases) {
  for (const Case& each : cases) {
    EXPECT_EQ(FindingsOf(kType, each.object, each.rules), each.findings) << each.object;
  }
}

constexpr const char* kComplete = R"({"name": "eth0", "mtu": 1500, "serial": "S1", "mac": "02::",
  "lease": {"server": "a"}, "link": {"speed": 1, "state": "up", "label": "x"},
  "routes": [{"id": "a", "via": "b", "metric": 1}], "free": {"any": [1]}})";

TEST(Rules, MembersHaveToBeDeclaredAndGivenOnce) {
  Expect({{kComplete, {0, 1, 7, 8}, ""},
          {R"({"name": "a", "mtu": 99, "mut": 1, "x/y~": {"deep": 1}})",
           {0},
           "/mut: member \"mut\" is not known; known members: name, mtu, serial, mac, lease, "
           "link, "
           "routes, free\n"
           "/x~1y~0: member \"x/y~\" is not known; known members: name, mtu, serial, mac, lease, "
           "link, routes, free"},
          {R"({"link": {"sped": 1}, "routes": [{"id": "a"}, {"id": "b", "vai": "c"}]})",
           {0},
           "/link/sped: member \"sped\" is not known; known members: speed, state, label\n"
           "/routes/1/vai: member \"vai\" is not known; known members: id, via, metric"},
          {R"({"mtu": 99, "free": {"a": 1, "b": 2, "a": 3}, "mtu": 98})",
           {0},
           "/free/a: member \"a\" is given twice\n"
           "/mtu: member \"mtu\" is given twice"},
          {R"({"unknown": 1, "mtu": 1, "mtu": "x"})", {2, 6, 10, 11, 13, 1000, -1}, ""}});
}

TEST(Rules, WhatIsRequiredIsARuleOfItsOwn) {
  Expect({{R"({"mtu": 1})",
           {0, 1, 8},
           "/: member \"name\" is required\n"
           "/mtu: 68 is the smallest value allowed, found 1"},
          {R"({"mtu": 1})", {0, 1}, "/mtu: 68 is the smallest value allowed, found 1"},
          {R"({"mtu": 1})", {8}, "/: member \"name\" is required"},
          {R"({"mtu": "x"})", {0}, ""}});
}

TEST(Rules, DataOfOtherPartsAreNamedWhereTheyStand) {
  Expect({{kComplete,
           {3},
           "/mac: vital configuration may not be given here\n"
           "/lease: cached configuration may not be given here\n"
           "/link/speed: vital configuration may not be given here\n"
           "/link/state: cached configuration may not be given here\n"
           "/routes/0/via: vital configuration may not be given here"},
          {kComplete, {4}, "/serial: is read-only and may not be given"},
          {kComplete,
           {5},
           "/mtu: only vital configuration may be given here\n"
           "/serial: only vital configuration may be given here\n"
           "/lease: only vital configuration may be given here\n"
           "/link/state: only vital configuration may be given here\n"
           "/link/label: only vital configuration may be given here\n"
           "/routes/0/metric: only vital configuration may be given here\n"
           "/free: only vital configuration may be given here"},
          {R"({"name": "eth0", "lease": {"server": "a"}, "link": {"state": "up"}})", {9}, ""},
          {R"({"name": "eth0", "mac": "02::", "routes": []})",
           {9},
           "/mac: only cached configuration may be given here\n"
           "/routes: only cached configuration may be given here"},
          // A member that nobody knows is said to be unknown, and nothing else.
          {R"({"cash": 1})",
           {0, 9},
           "/cash: member \"cash\" is not known; known members: name, mtu, serial, mac, lease, "
           "link, "
           "routes, free"}});
}

TEST(Rules, InstanceIdsAreGivenAndTakenOnce) {
  Expect(
      {{R"({})", {7}, ""},
       {R"({"mtu": 99, "routes": [{}, {"metric": 1}, {"id": ""}, {"id": 5}]})",
        {1, 7},
        "/: member \"name\" is required\n"
        "/routes/1: member \"id\" is required\n"
        "/routes/2/id: the instance id may not be empty\n"
        "/routes/3/id: expected a text, found 5"},
       {R"({"name": "n", "routes": [{"id": "b"}, {"id": "a"}, {"metric": 1, "id": "b"}, {"id": "b"}]})",
        {7},
        "/routes/2/id: the instance id \"b\" is taken by element 0\n"
        "/routes/3/id: the instance id \"b\" is taken by element 0"},
       // "required" and the rule about instance ids say the same, once.
       {R"({"mtu": 99})", {1, 7, 8}, "/: member \"name\" is required"}});
}

TEST(RulesOfWholeTypes, TheNearestTagGoverns) {
  constexpr std::string_view kVital = R"({"vital": true, "properties": {
      "id": {"type": "string", "instanceId": true},
      "a": {"properties": {"b": {"cached": true}, "c": {}}}}})";
  EXPECT_EQ(FindingsOf(kVital, R"({"id": "x", "a": {"b": 1, "c": 1}})", {5}),
            "/a/b: only vital configuration may be given here");
  EXPECT_EQ(FindingsOf(kVital, R"({"id": "x", "a": {"b": 1, "c": 1}})", {3}),
            "/a/b: cached configuration may not be given here\n"
            "/a/c: vital configuration may not be given here");
  EXPECT_EQ(FindingsOf(R"({"vital": false, "cached": true, "properties": {"a": {}}})",
                       R"({"a": 1})", {0, 1, 9}),
            "");
}

TEST(RulesOfWholeTypes, GeneratedInstanceIdsMayBeGivenAndAreNotAskedFor) {
  for (const std::string_view items :
       {R"({"generatedInstanceId": true, "properties": {"a": {}}})",
        R"({"generatedInstanceId": true, "$ref": "#/definitions/rule"})"}) {
    const std::string schema =
        R"({"definitions": {"rule": {"properties": {"a": {}}, "additionalProperties": false}},
            "properties": {"others": {"items": {"$ref": "#/definitions/rule"}},
                           "list": {"items": )" +
        std::string(items) + "}}}";
    EXPECT_EQ(FindingsOf(schema, R"({"list": [{"a": 1}, {"cs_generated_id": "x", "a": 1}]})"), "");
    EXPECT_EQ(FindingsOf(schema, R"({"list": [{"cs_generated_id": 1, "b": 1}],
                                     "others": [{"cs_generated_id": "x"}]})"),
              "/list/0/cs_generated_id: expected a text, found 1\n"
              "/list/0/b: member \"b\" is not known; known members: a\n"
              "/others/0/cs_generated_id: member \"cs_generated_id\" is not known; known members: "
              "a");
  }
}

TEST(RulesOfWholeTypes, TagsAreFoundThroughReferences) {
  constexpr std::string_view kType2 = R"({
    "definitions": {"secret": {"type": "string", "vital": true}, "text": {"type": "string"}},
    "properties": {"a": {"$ref": "#/definitions/secret"},
                   "b": {"$ref": "#/definitions/text", "cached": true}}})";
  EXPECT_EQ(FindingsOf(kType2, R"({"a": "x", "b": "y"})", {0, 1, 3}),
            "/a: vital configuration may not be given here\n"
            "/b: cached configuration may not be given here");
}

}  // namespace
}  // namespace ValidatorTest
