// What findings tell of secrets: what was expected, and not what was found.
#include "json_schema/findings_text.h"

#include <limits>

namespace ValidatorTest {
namespace {

// In all that is found at secret places, and in nothing else.
constexpr const char* kMark = "8675309";

TEST(Secrets, AreNotToldInFindings) {
  const std::string secret = R"({"properties":{"a":{"secret":true,)";
  const struct {
    std::string keywords, value, findings;
  } cases[] = {
      {R"("type":"integer")", R"("top")", "/a: expected an integer, found ***"},
      {R"("type":"object")", R"([1])", "/a: expected an object, found ***"},
      {R"("const":"tip")", R"("top")", "/a: expected the value that the type allows, found ***"},
      {R"("enum":["tip","tap"])", R"("top")",
       "/a: expected one of the values that the type allows, found ***"},
      {R"("minimum":5)", "4", "/a: 5 is the smallest value allowed, found ***"},
      {R"("minLength":5)", R"("top")", "/a: expected a text of at least 5 characters, found ***"},
      {R"("minItems":2)", "[7]", "/a: expected at least 2 elements, found ***"},
      {R"("maxProperties":1)", R"({"x":1,"y":2})", "/a: expected at most 1 member, found ***"},
      {R"("pattern":"^q")", R"("top")", "/a: the text *** does not match the pattern ^q"},
      {R"("pattern":"^(a?){40}a{40}$")", "\"" + std::string(40, 'a') + "b\"",
       "/a: the text *** could not be checked against the pattern ^(a?){40}a{40}$: it takes too "
       "much work"},
      {R"("format":"ipv4")", R"("top")", "/a: expected an IPv4 address, found ***"},
      {R"("oneOf":[{"format":"ipv4"},{"type":"integer"}])", R"("top")",
       "/a: expected an IPv4 address or an integer, found ***"},
      {R"("oneOf":[{"const":"top"},{"type":"string"}])", R"("top")",
       "/a: fits 2 of the 2 allowed forms at once, and may fit only one"},
      {R"("not":{"enum":["top"]})", R"("top")",
       "/a: the value is one of those that are not allowed: ***"},
      // Names that somebody made are part of a secret; those of the schema are not.
      {R"("properties":{"user":{"type":"string"}})", R"({"user":1,"usr":2})",
       "/a/user: expected a text, found ***\n/a/***: a member is not known; known members: user"},
      {R"("additionalProperties":{"items":{"type":"null"}})", R"({"x":[7]})",
       "/a/***/0: expected null, found ***"},
      {R"("propertyNames":{"maxLength":1})", R"({"top":1})",
       "/a/***: the member name is not allowed: expected a text of at most 1 character, found ***"},
      {R"("uniqueItems":true)", R"([7,8,7])",
       "/a: no two elements may be equal, but elements 0 and 2 are"},
      {R"("items":{"properties":{"id":{"type":"string","instanceId":true}}})",
       R"([{"id":"x"},{"id":"x"},{"id":7}])",
       "/a/1/id: the instance id *** is taken by element 0\n/a/2/id: expected a text, found ***"},
  };
  for (const auto& [keywords, value, findings] : cases) {
    EXPECT_EQ(FindingsOf(secret + keywords + "}}}", R"({"a":)" + value + "}"), findings);
  }

  // Whoever lets pass what is stored has to find it.
  Expect(secret + R"("additionalProperties":{"items":{"readOnly":true}}}}})", R"({"a":{"x":[1]}})",
         "/a: is read-only and may not be given", {4});

  Json::Document sound = Parsed(R"({"a":[0,{"\u00ff":1}]})");
  sound["a"][0].SetDouble(std::numeric_limits<double>::infinity());
  sound["a"][1].AddMember("\xFF", "\xFE", sound.GetAllocator());
  EXPECT_EQ(FindingsOf(Parsed(secret + R"("type":"array"}}})"), sound, {}),
            "/a/0: expected a finite number, found ***\n"
            "/a/1: the member name *** is not valid UTF-8\n"
            "/a/1/***: the text *** is not valid UTF-8");
}

TEST(Secrets, AreNotToldAroundThem) {
  const std::string list = R"({"properties":{"l":{"type":"array","items":{"secret":true}},
    "o":{"type":"object","properties":{"p":{"secret":true}},)";
  // One that was given without its list, or its object, is still one.
  Expect(list + R"("required":["p"]}}})", R"({"l":"top","o":5})",
         "/l: expected an array, found ***\n/o: expected an object, found ***");
  Expect(list + R"("const":{"p":1}}}})", R"({"o":{"p":2}})",
         "/o: expected the value that the type allows, found an object");
  Expect(list + R"("not":{"const":{"p":2}}}}})", R"({"o":{"p":2}})",
         "/o: the value is one of those that are not allowed: an object");
  Expect(list + R"("dependencies":{"p":["q"]}}}})", R"({"o":{"p":2}})",
         "/o: member \"q\" is required because member \"p\" is given");
  // The elements that "contains" asks about are at their own places.
  Expect(R"({"properties":{"l":{"items":{"properties":{"p":{"secret":true}}},
             "contains":{"properties":{"p":{"pattern":"^(a?){40}a{40}$"}}}}}})",
         R"({"l":[{"p":")" + std::string(40, 'a') + R"(b"}]})",
         "/l/0/p: the text *** could not be checked against the pattern ^(a?){40}a{40}$: it takes "
         "too much work");
}

// Whatever is asked of a secret, wherever it stands, by whatever is asked about those around it.
TEST(Secrets, OfEveryKindAreInNoFinding) {
  const std::vector<std::string> asked = {
      R"("type":"string","maxLength":3)",
      R"("type":["null","object"])",
      R"("enum":["8675309a",[8675309],"x"])",
      R"("const":{"8675309":1})",
      R"("minimum":9000000)",
      R"("exclusiveMaximum":2,"multipleOf":11)",
      R"("minLength":80,"pattern":"^q+$","format":"date")",
      R"("format":"uri","title":"T")",
      R"("maxItems":1,"uniqueItems":true)",
      R"("items":{"type":"null"},"contains":{"const":"8675309c"})",
      R"("items":[{"type":"null"}],"additionalItems":false)",
      R"("properties":{"a":{"type":"null"}},"additionalProperties":false)",
      R"("patternProperties":{"^8":{"type":"null"}},"additionalProperties":{"enum":["8675309"]})",
      R"("propertyNames":{"maxLength":1},"minProperties":4,"required":["z"])",
      R"("dependencies":{"a":["y"],"8675309":{"required":["w"]}})",
      R"("allOf":[{"type":"null"},{"const":8675309.25}])",
      R"("anyOf":[{"const":"8675309"},{"format":"ipv4"},{"required":["q"]}])",
      R"("oneOf":[true,{"title":"8"},{"maxLength":1}])",
      R"("not":{"type":["string","integer","number","object","array"]})",
      R"("if":{"type":"string"},"then":{"const":"x"},"else":{"enum":["8675309",1]})",
  };
  const std::vector<std::string> given = {
      R"("8675309 and more than the most that a finding quotes of a text: 8675309")", "8675309",
      "-8675309.25", R"({"8675309":{"8675309":"8675309"},"a":"8675309"})",
      R"([{"b":"8675309"},8675309,8675309])"};
  // "@" is the secret; what is said of the whole object speaks of it, too.
  const std::pair<const char*, const char*> places[] = {
      {R"({"properties":{"p":{@}}})", R"({"p":@})"},
      {R"({"properties":{"p":{"$ref":"#/definitions/d"}},"definitions":{"d":{@}}})", R"({"p":@})"},
      {R"({"properties":{"l":{"items":{"properties":{"p":{@}}}}}})", R"({"l":[{"p":@},{"p":@}]})"},
      {R"({"properties":{"p":{@}},"not":{"required":["p"]},"enum":[{"p":1}]})", R"({"p":@})"},
      {R"({"properties":{"p":{@}},"oneOf":[{"properties":{"p":{"type":"null"}}},{"const":8}],
           "dependencies":{"p":["q"]}})",
       R"({"p":@})"}};
  const auto with = [](std::string text, const std::string& secret) {
    for (std::size_t at; (at = text.find('@')) != std::string::npos;) {
      text.replace(at, 1, secret);
    }
    return text;
  };
  int told = 0;
  for (const std::string& keywords : asked) {
    for (const std::string& value : given) {
      for (const auto& [schema, object] : places) {
        const std::string json = with(object, value);
        const std::string found = FindingsOf(with(schema, R"("secret":true,)" + keywords), json);
        EXPECT_EQ(found.find(kMark), std::string::npos) << keywords << json << found;
        EXPECT_EQ(found.find("cannot be used"), std::string::npos) << keywords << found;
        EXPECT_EQ(found.find("did you mean"), std::string::npos) << keywords << json << found;
        const std::string open = FindingsOf(with(schema, R"("x-open":true,)" + keywords), json);
        told += open.find(kMark) != std::string::npos ? 1 : 0;
      }
    }
  }
  EXPECT_GT(told, 200) << "the values have to be told where they are no secrets";
}

}  // namespace
}  // namespace ValidatorTest
