// What findings tell of secrets: what was expected, and not what was found.
#include "json_schema/findings_text.h"
#include "support/random_objects.h"
#include "support/sanitized.h"

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

// Makes schemas with secrets in them, and values that do not fit, the mark in every secret.
class RandomSecrets {
 public:
  explicit RandomSecrets(TestSupport::Random& random) : random_(random) {}

  struct Made {
    std::string schema, value;
  };

  Made Type() {
    definitions_.clear();
    const Made made = Object(3);
    return {made.schema.substr(0, made.schema.size() - 1) + R"(,"definitions":{"":{})" +
                definitions_ + "}}",
            made.value};
  }

 private:
  std::string AnyOf(std::initializer_list<const char*> texts) {
    return *(texts.begin() + random_.Below(texts.size()));
  }

  // Of anything; it says nothing of what is secret.
  std::string Schema(int depth) {
    std::string schema;
    const auto add = [&](const char* keyword, const std::string& value) {
      if (random_.OneIn(6)) {
        schema += (schema.empty() ? "\"" : ",\"") + std::string(keyword) + "\":" + value;
      }
    };
    const auto inner = [&] { return depth > 0 ? Schema(depth - 1) : R"({"type":"null"})"; };
    const auto both = [&] { return "[" + inner() + "," + inner() + "]"; };
    add("type", AnyOf({R"("string")", R"("integer")", R"("array")", R"(["null","object"])"}));
    add("title", R"("T")");
    add("enum", R"(["8675309a",[8675309],"x"])");
    add("const", AnyOf({R"("8675309c")", "8675309.25", R"({"8675309":1})"}));
    add("minimum", "9000000");
    add("exclusiveMaximum", "2");
    add("multipleOf", "11");
    add("maxLength", "3");
    add("minLength", "50");
    add("pattern", R"("^q+$")");
    add("format", AnyOf({R"("ipv4")", R"("date")", R"("uri")"}));
    add("maxItems", "1");
    add("uniqueItems", "true");
    add("items", random_.OneIn(2) ? inner() : both());
    add("additionalItems", "false");
    add("contains", inner());
    add("properties", R"({"a":)" + inner() + R"(,"b":)" + inner() + "}");
    add("patternProperties", R"({"^8":)" + inner() + "}");
    add("additionalProperties", random_.OneIn(2) ? "false" : inner());
    add("propertyNames", inner());
    add("minProperties", "4");
    add("required", R"(["z"])");
    add("dependencies", R"({"a":["y"],"b":)" + inner() + "}");
    for (const char* several : {"allOf", "anyOf", "oneOf"}) {
      add(several, both());
    }
    for (const char* one : {"not", "if", "then", "else"}) {
      add(one, inner());
    }
    return "{" + schema + "}";
  }

  std::string Marked(int depth) {
    const auto inner = [&] { return Marked(depth - 1); };
    switch (random_.Below(depth > 0 ? 7 : 4)) {
      case 0:
        return R"("8675309a")";
      case 1:
        return R"("8675309 and more than the most that a finding quotes of a text: 8675309")";
      case 2:
        return "8675309";
      case 3:
        return "-8675309.25";
      case 4:
        return R"({"8675309":)" + inner() + R"(,"a":)" + inner() + "}";
      case 5:
        return R"({"b":)" + inner() + R"(,"8675309b":1})";
      default:
        return "[" + inner() + ",8675309,8675309]";
    }
  }

  // With the members, and sometimes the schema somewhere else.
  std::string With(const std::string& members, std::string schema, bool isSecret) {
    const char* const mark = R"("secret":true)";
    if (isSecret) {
      schema = "{" + std::string(mark) + (schema == "{}" ? "}" : "," + schema.substr(1));
    }
    if (!members.empty()) {
      schema = "{" + members + (schema == "{}" ? "}" : "," + schema.substr(1));
    }
    if (!random_.OneIn(3)) {
      return schema;
    }
    const std::string name = "d" + std::to_string(definitions_.size());
    definitions_ += ",\"" + name + "\":" + schema;
    const std::string reference = R"({"$ref":"#/definitions/)" + name + "\"";
    return reference + (isSecret && random_.OneIn(2) ? "," + std::string(mark) + "}" : "}");
  }

  Made Any(int depth) {
    if (depth == 0 || random_.OneIn(3)) {
      return {With("", Schema(2), true), Marked(2)};
    }
    if (random_.OneIn(2)) {
      const Made element = Any(depth - 1);
      return {With(R"("items":)" + element.schema, "{}", false),
              random_.OneIn(5) ? Marked(0) : "[" + element.value + "," + element.value + "]"};
    }
    return Object(depth - 1);
  }

  // What is said of the whole object speaks of its secrets, too.
  Made Object(int depth) {
    const Made a = Any(depth);
    const Made p = Any(depth);
    const std::string value = R"({"a":)" + a.value + R"(,"p":)" + p.value + "}";
    std::string members = R"("properties":{"a":)" + a.schema + R"(,"p":)" + p.schema + "}";
    const auto add = [&](const std::string& more) {
      members += random_.OneIn(5) ? "," + more : "";
    };
    add(R"("allOf":[{"properties":{"a":)" + Schema(1) + R"(,"p":)" + Schema(1) + "}}]");
    add(R"("oneOf":[{"title":"T","properties":{"p":)" + Schema(1) + R"(}},{"properties":{"a":)" +
        Schema(1) + "}}]");
    add(R"("anyOf":[{"const":)" + value + R"(},{"required":["z"]}])");
    add(R"("not":{"const":)" + value + "}");
    add(R"("enum":[1,{"p":8675309}])");
    add(R"("dependencies":{"p":["q"],"a":{"maxProperties":1}})");
    add(R"("if":{"properties":{"p":)" + Schema(1) + R"(}},"then":{"properties":{"a":)" + Schema(1) +
        "}}");
    return {"{" + members + "}", depth < 3 && random_.OneIn(6) ? Marked(0) : value};
  }

  TestSupport::Random& random_;
  std::string definitions_;
};

TEST(Secrets, OfRandomTypesAreInNoFinding) {
  TestSupport::Random random;
  RandomSecrets secrets(random);
  int told = 0;
  const int rounds = TestSupport::kSanitized ? 60 : 600;
  for (int round = 0; round < rounds; ++round) {
    auto [schema, value] = secrets.Type();
    const std::string findings = FindingsOf(schema, value);
    ASSERT_EQ(findings.find(kMark), std::string::npos) << findings << "\n"
                                                       << schema << "\n"
                                                       << value;
    ASSERT_EQ(findings.find("cannot be used"), std::string::npos) << findings << "\n" << schema;
    ASSERT_EQ(findings.find("did you mean"), std::string::npos) << findings << "\n" << schema;
    for (std::size_t at; (at = schema.find(R"("secret")")) != std::string::npos;) {
      schema.replace(at, 8, R"("x-open")");
    }
    told += FindingsOf(schema, value).find(kMark) != std::string::npos ? 1 : 0;
  }
  EXPECT_GT(told, rounds / 2) << "the values have to be told where they are no secrets";
}

}  // namespace
}  // namespace ValidatorTest
