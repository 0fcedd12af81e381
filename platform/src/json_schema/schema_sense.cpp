#include "json_schema/schema_sense.h"

#include "json/equality.h"
#include "json_schema/assertion_check.h"
#include "json_schema/describe.h"
#include "json_schema/place.h"

#include <algorithm>
#include <string>
#include <utility>

namespace JsonValidator {
namespace {

struct Assertion {
  std::string_view keyword;
  TypeSet types;  ///< of the values that it says something of
};

constexpr TypeSet kNumbers = kNumberType | kIntegerType;

// "$ref" hides these, and a name, in draft-07. All other keywords describe: annotations count beside
// a reference as they do anywhere, and "definitions" only holds what others refer to.
constexpr Assertion kAssertions[] = {
    {"$id", kAnyType},
    {"additionalItems", kArrayType},
    {"additionalProperties", kObjectType},
    {"allOf", kAnyType},
    {"anyOf", kAnyType},
    {"const", kAnyType},
    {"contains", kArrayType},
    {"dependencies", kObjectType},
    {"else", kAnyType},
    {"enum", kAnyType},
    {"exclusiveMaximum", kNumbers},
    {"exclusiveMinimum", kNumbers},
    {"format", kTextType | kIntegerType},
    {"if", kAnyType},
    {"items", kArrayType},
    {"maxItems", kArrayType},
    {"maxLength", kTextType},
    {"maxProperties", kObjectType},
    {"maximum", kNumbers},
    {"minItems", kArrayType},
    {"minLength", kTextType},
    {"minProperties", kObjectType},
    {"minimum", kNumbers},
    {"multipleOf", kNumbers},
    {"not", kAnyType},
    {"oneOf", kAnyType},
    {"pattern", kTextType},
    {"patternProperties", kObjectType},
    {"properties", kObjectType},
    {"propertyNames", kObjectType},
    {"required", kObjectType},
    {"then", kAnyType},
    {"type", kAnyType},
    {"uniqueItems", kArrayType},
};

const Assertion* FindAssertion(std::string_view keyword) {
  const auto* found =
      std::find_if(std::begin(kAssertions), std::end(kAssertions),
                   [&](const Assertion& assertion) { return assertion.keyword == keyword; });
  return found == std::end(kAssertions) ? nullptr : found;
}

struct LimitPair {
  const char* lower;
  const char* upper;
  bool mayBeEqual;
};

constexpr LimitPair kLimits[] = {{"minimum", "maximum", true},
                                 {"minimum", "exclusiveMaximum", false},
                                 {"exclusiveMinimum", "maximum", false},
                                 {"exclusiveMinimum", "exclusiveMaximum", false},
                                 {"minLength", "maxLength", true},
                                 {"minItems", "maxItems", true},
                                 {"minProperties", "maxProperties", true}};

class SchemaSense {
 public:
  SchemaSense(const Node& node, Sense& sense, Budget& budget)
      : node_(node), schema_(*node.source), sense_(sense), budget_(budget) {}

  void Judge() {
    if (!schema_.IsObject()) {
      return;
    }
    if (Has("$ref")) {
      JudgeReference();
      return;
    }
    JudgeLimits();
    JudgeConditions();
    JudgeTypes();
    JudgeValues();
  }

 private:
  const Json::Value* Find(const char* keyword) const { return Json::FindMember(schema_, keyword); }
  bool Has(const char* keyword) const { return Find(keyword) != nullptr; }

  void Refuse(const Json::Value& where, std::string text) {
    sense_.refused.push_back({&where, std::move(text)});
  }
  void Warn(const Json::Value& where, std::string text) {
    sense_.odd.push_back({&where, std::move(text)});
  }

  void JudgeReference() {
    for (const auto& member : schema_.GetObject()) {
      if (FindAssertion(Json::Text(member.name)) != nullptr) {
        Refuse(member.value,
               "is ignored beside \"$ref\": put the reference and this into the list of an "
               "\"allOf\", each as a schema of its own");
      }
    }
  }

  void JudgeLimits() {
    for (const LimitPair& limits : kLimits) {
      const Json::Value* lower = Find(limits.lower);
      const Json::Value* upper = Find(limits.upper);
      const int order =
          lower != nullptr && upper != nullptr ? Json::CompareNumbers(*lower, *upper) : -1;
      if (order > 0 || (order == 0 && !limits.mayBeEqual)) {
        Refuse(*lower, "leaves no value beside \"" + std::string(limits.upper) +
                           "\": nothing fits both " + Literal(*lower) + " and " + Literal(*upper));
      }
    }
    if (node_.object && node_.object->required.size() > node_.object->maxProperties) {
      Refuse(*Find("maxProperties"), "leaves no room for all members that are required");
    }
  }

  void JudgeConditions() {
    const Json::Value* condition = Find("if");
    for (const char* keyword : {"then", "else"}) {
      if (const Json::Value* branch = Find(keyword); branch != nullptr && condition == nullptr) {
        Refuse(*branch, "is ignored without \"if\"");
      }
    }
    if (condition != nullptr && !Has("then") && !Has("else")) {
      Warn(*condition, "changes nothing without \"then\" or \"else\"");
    }
    const Json::Value* items = Find("items");
    if (const Json::Value* others = Find("additionalItems");
        others != nullptr && (items == nullptr || !items->IsArray())) {
      Refuse(*others, "is ignored unless \"items\" is a list of schemas");
    }
  }

  // No more than odd: the type keeps such values out already, and programs that write schemas list
  // keywords for the types that they may widen one to.
  void JudgeTypes() {
    for (const auto& member : schema_.GetObject()) {
      const Assertion* assertion = FindAssertion(Json::Text(member.name));
      if (assertion == nullptr) {
        continue;
      }
      TypeSet types = assertion->types;
      if (assertion->keyword == "format") {
        types = node_.format == nullptr                 ? kAnyType
                : node_.format->integerHolds == nullptr ? kTextType
                                                        : types;
      }
      if ((types & node_.types) == 0) {
        Warn(member.value, "changes nothing: it is about " + ExpectedTypes(types) +
                               ", and the type is " + ExpectedTypes(node_.types));
      }
    }
  }

  void JudgeValues() {
    if (const Json::Value* constant = Find("const")) {
      if (const std::string reason = WhyNever(*constant); !reason.empty()) {
        Refuse(*constant, reason);
      }
    }
    const Json::Value* values = Find("enum");
    if (values == nullptr) {
      return;
    }
    // Each is compared with all, so that a very long list would take long.
    constexpr rapidjson::SizeType kMostValues = 1000;
    const rapidjson::SizeType judged = std::min(values->Size(), kMostValues);
    std::vector<SchemaFault> never;
    for (rapidjson::SizeType i = 0; i < judged; ++i) {
      if (std::string reason = WhyNever((*values)[i]); !reason.empty()) {
        never.push_back({&(*values)[i], std::move(reason)});
      }
    }
    std::vector<SchemaFault>& into =
        !never.empty() && never.size() == values->Size() ? sense_.refused : sense_.odd;
    into.insert(into.end(), never.begin(), never.end());
  }

  // Why a value that the schema lists does not fit the rest of it; empty where it does.
  std::string WhyNever(const Json::Value& value) const {
    Findings findings;
    AssertionCheck({.budget = &budget_}).Check(node_, value, Place{}, findings);
    if (findings.Empty() || budget_.Spent()) {
      return {};
    }
    const Findings::Finding& first = findings.Sorted().front();
    return "this value can never be given: " +
           (first.field == "/" ? std::string() : "at " + first.field + ": ") + first.error;
  }

  const Node& node_;
  const Json::Value& schema_;
  Sense& sense_;
  Budget& budget_;
};

}  // namespace

Sense JudgeSense(const CompiledSchema& schema) {
  Sense sense;
  // One for all values of the schema; what it does not reach is not judged.
  Findings leftOpen;
  Budget budget(leftOpen, 0);
  for (const Node& node : schema.AllNodes()) {
    SchemaSense(node, sense, budget).Judge();
  }
  JudgePlaces(schema, sense, budget);
  return sense;
}

}  // namespace JsonValidator
