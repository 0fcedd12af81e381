// The keywords of schemas, one by one.
#include "platform/made_once.h"

#include "json_schema/describe.h"
#include "json_schema/number.h"
#include "json_schema/schema_compiler.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace JsonValidator {
namespace {

/// The group of rules, made when the first rule of it is met.
template <class Rules>
Rules& Made(std::unique_ptr<Rules>& rules) {
  if (!rules) {
    rules = std::make_unique<Rules>();
  }
  return *rules;
}

TypeSet TypeNamed(std::string_view name) {
  constexpr std::pair<std::string_view, TypeSet> kTypes[] = {
      {"null", kNullType},
      {"boolean", kBooleanType},
      {"integer", kIntegerType},
      {"string", kTextType},
      {"array", kArrayType},
      {"object", kObjectType},
      {"number", kNumberType | kIntegerType}};
  for (const auto& [known, type] : kTypes) {
    if (known == name) {
      return type;
    }
  }
  return 0;
}

}  // namespace

const std::unordered_map<std::string_view, SchemaCompiler::Keyword>& SchemaCompiler::Keywords() {
  static constinit MadeOnce<const std::unordered_map<std::string_view, Keyword>> keywords;
  return keywords.Get(MakeKeywords);
}

std::unordered_map<std::string_view, SchemaCompiler::Keyword> SchemaCompiler::MakeKeywords() {
  using Self = SchemaCompiler;
  return {
      {"type", {[](Self& c, Node& n, const Entry& e) { c.ReadType(n, e); }}},
      {"const", {[](Self&, Node& n, const Entry& e) { n.constant = &e.value; }}},
      {"enum", {[](Self& c, Node& n, const Entry& e) {
         if (e.value.IsArray()) {
           n.enumeration = &e.value;
         } else {
           c.Malformed(e, "an array");
         }
       }}},
      {"minimum", {[](Self& c, Node& n, const Entry& e) { Made(n.number).minimum = c.Number(e); }}},
      {"maximum", {[](Self& c, Node& n, const Entry& e) { Made(n.number).maximum = c.Number(e); }}},
      {"exclusiveMinimum",
       {[](Self& c, Node& n, const Entry& e) { Made(n.number).exclusiveMinimum = c.Number(e); }}},
      {"exclusiveMaximum",
       {[](Self& c, Node& n, const Entry& e) { Made(n.number).exclusiveMaximum = c.Number(e); }}},
      {"multipleOf", {[](Self& c, Node& n, const Entry& e) {
         const Json::Value* divisor = c.Number(e);
         if (divisor != nullptr && divisor->GetDouble() > 0) {
           Made(n.number).multipleOf = divisor;
         } else if (divisor != nullptr) {
           c.Malformed(e, "a number greater than 0");
         }
       }}},
      {"minLength",
       {[](Self& c, Node& n, const Entry& e) { Made(n.text).minLength = c.Count(e); }}},
      {"maxLength",
       {[](Self& c, Node& n, const Entry& e) { Made(n.text).maxLength = c.Count(e); }}},
      {"pattern", {[](Self& c, Node& n, const Entry& e) {
         Made(n.text).pattern = c.PatternOf(e.value, e.value);
       }}},
      {"format", {[](Self& c, Node& n, const Entry& e) { c.ReadFormat(n, e); }}},
      {"items", {[](Self& c, Node& n, const Entry& e) { c.ReadItems(n, e); }}},
      {"additionalItems",
       {[](Self& c, Node& n, const Entry& e) { Made(n.array).additionalItems = c.Schema(e); }}},
      {"contains",
       {[](Self& c, Node& n, const Entry& e) { Made(n.array).contains = c.Schema(e); }}},
      {"minItems", {[](Self& c, Node& n, const Entry& e) { Made(n.array).minItems = c.Count(e); }}},
      {"maxItems", {[](Self& c, Node& n, const Entry& e) { Made(n.array).maxItems = c.Count(e); }}},
      {"uniqueItems", {[](Self& c, Node& n, const Entry& e) { Made(n.array).unique = c.Flag(e); }}},
      {"properties", {[](Self& c, Node& n, const Entry& e) { c.ReadProperties(n, e); }}},
      {"patternProperties",
       {[](Self& c, Node& n, const Entry& e) { c.ReadPatternProperties(n, e); }}},
      {"additionalProperties",
       {[](Self& c, Node& n, const Entry& e) { Made(n.object).additional = c.Schema(e); }}},
      {"propertyNames",
       {[](Self& c, Node& n, const Entry& e) { Made(n.object).propertyNames = c.Schema(e); }}},
      {"required",
       {[](Self& c, Node& n, const Entry& e) { Made(n.object).required = c.Names(e); }}},
      {"dependencies", {[](Self& c, Node& n, const Entry& e) { c.ReadDependencies(n, e); }}},
      {"minProperties",
       {[](Self& c, Node& n, const Entry& e) { Made(n.object).minProperties = c.Count(e); }}},
      {"maxProperties",
       {[](Self& c, Node& n, const Entry& e) { Made(n.object).maxProperties = c.Count(e); }}},
      {"allOf",
       {[](Self& c, Node& n, const Entry& e) { Made(n.composition).allOf = c.Schemas(e); }}},
      {"anyOf",
       {[](Self& c, Node& n, const Entry& e) { Made(n.composition).anyOf = c.Schemas(e); }}},
      {"oneOf",
       {[](Self& c, Node& n, const Entry& e) { Made(n.composition).oneOf = c.Schemas(e); }}},
      {"not",
       {[](Self& c, Node& n, const Entry& e) { Made(n.composition).negated = c.Schema(e); }}},
      {"if",
       {[](Self& c, Node& n, const Entry& e) { Made(n.composition).condition = c.Schema(e); }}},
      {"then",
       {[](Self& c, Node& n, const Entry& e) { Made(n.composition).consequence = c.Schema(e); }}},
      {"else",
       {[](Self& c, Node& n, const Entry& e) { Made(n.composition).alternative = c.Schema(e); }}},
      {"definitions", {[](Self& c, Node&, const Entry& e) { c.ReadDefinitions(e); }, true}},
      {"title", {[](Self& c, Node&, const Entry& e) { c.Text(e); }}},
      {"description", {[](Self& c, Node&, const Entry& e) { c.Text(e); }}},
      {"$comment", {[](Self& c, Node&, const Entry& e) { c.Text(e); }}},
      {"$id", {[](Self& c, Node&, const Entry& e) { c.Text(e); }}},
      {"vital", {[](Self& c, Node& n, const Entry& e) { c.ReadTag(n, e, kVitalTag); }, true}},
      {"cached", {[](Self& c, Node& n, const Entry& e) { c.ReadTag(n, e, kCachedTag); }, true}},
      {"readOnly", {[](Self& c, Node& n, const Entry& e) { c.ReadTag(n, e, kReadOnlyTag); }, true}},
      {"instanceId",
       {[](Self& c, Node& n, const Entry& e) { c.ReadTag(n, e, kInstanceIdTag); }, true}},
  };
}

const Json::Value* SchemaCompiler::Number(const Entry& entry) {
  if (!entry.value.IsNumber() || !std::isfinite(entry.value.GetDouble())) {
    Malformed(entry, "a number");
    return nullptr;
  }
  return &entry.value;
}

std::uint64_t SchemaCompiler::Count(const Entry& entry) {
  const Json::Value& value = entry.value;
  if (value.IsUint64()) {
    return value.GetUint64();
  }
  constexpr double kExact = 9007199254740992.0;  // 2^53
  if (value.IsDouble() && value.GetDouble() >= 0 && value.GetDouble() <= kExact && IsWhole(value)) {
    return static_cast<std::uint64_t>(value.GetDouble());
  }
  Malformed(entry, "a whole number from 0");
  return 0;
}

bool SchemaCompiler::Flag(const Entry& entry) {
  if (!entry.value.IsBool()) {
    Malformed(entry, "true or false");
  }
  return entry.value.IsTrue();
}

void SchemaCompiler::Text(const Entry& entry) {
  if (!entry.value.IsString()) {
    Malformed(entry, "a text");
  }
}

const Node* SchemaCompiler::Schema(const Entry& entry) {
  return NodeOf(entry.value);
}

Nodes SchemaCompiler::Schemas(const Entry& entry) {
  Nodes nodes;
  if (!entry.value.IsArray() || entry.value.Empty()) {
    Malformed(entry, "an array of at least one schema");
    return nodes;
  }
  for (const Json::Value& schema : entry.value.GetArray()) {
    nodes.push_back(NodeOf(schema));
  }
  return nodes;
}

std::vector<std::string_view> SchemaCompiler::Names(const Entry& entry) {
  std::vector<std::string_view> names;
  if (!entry.value.IsArray()) {
    Malformed(entry, "an array of member names");
    return names;
  }
  for (const Json::Value& name : entry.value.GetArray()) {
    if (!name.IsString()) {
      Fault(name, "expected the name of a member, found " + Found(name));
    } else if (std::find(names.begin(), names.end(), Json::Text(name)) != names.end()) {
      Fault(name, Quoted(Json::Text(name)) + " is listed twice");
    } else {
      names.push_back(Json::Text(name));
    }
  }
  return names;
}

std::unique_ptr<const Pattern> SchemaCompiler::PatternOf(const Json::Value& text,
                                                         const Json::Value& where) {
  if (!text.IsString()) {
    Fault(where, "expected a pattern, found " + Found(text));
    return nullptr;
  }
  std::string fault;
  std::unique_ptr<const Pattern> pattern = Pattern::Compile(Json::Text(text), fault);
  if (!pattern) {
    Fault(where, Quoted(Json::Text(text)) + " is not a valid pattern: " + fault);
  }
  return pattern;
}

void SchemaCompiler::ReadType(Node& node, const Entry& entry) {
  node.types = 0;
  const auto read = [&](const Json::Value& name) {
    const TypeSet type = name.IsString() ? TypeNamed(Json::Text(name)) : TypeSet{0};
    if (type == 0) {
      Fault(name, Literal(name) +
                      " is not a type; the types are array, boolean, integer, null, "
                      "number, object and string");
    }
    node.types |= type;
  };
  if (!entry.value.IsArray()) {
    read(entry.value);
    return;
  }
  if (entry.value.Empty()) {
    Fault(entry.value, "\"type\" has to name at least one type");
  }
  for (const Json::Value& name : entry.value.GetArray()) {
    read(name);
  }
}

void SchemaCompiler::ReadFormat(Node& node, const Entry& entry) {
  if (!entry.value.IsString()) {
    Malformed(entry, "a text");
    return;
  }
  node.format = FindFormat(Json::Text(entry.value));
}

void SchemaCompiler::ReadTag(Node& node, const Entry& entry, Tags tag) {
  if (Flag(entry)) {
    node.tags |= tag;
  }
}

void SchemaCompiler::ReadItems(Node& node, const Entry& entry) {
  ArrayRules& rules = Made(node.array);
  if (!entry.value.IsArray()) {
    rules.items = NodeOf(entry.value);
    return;
  }
  rules.hasTuple = true;
  for (const Json::Value& schema : entry.value.GetArray()) {
    rules.tuple.push_back(NodeOf(schema));
  }
}

void SchemaCompiler::ReadProperties(Node& node, const Entry& entry) {
  if (!entry.value.IsObject()) {
    Malformed(entry, "an object of schemas");
    return;
  }
  ObjectRules& rules = Made(node.object);
  rules.hasProperties = true;
  std::vector<Property> properties;
  properties.reserve(entry.value.MemberCount());
  for (const auto& member : entry.value.GetObject()) {
    properties.push_back({Json::Text(member.name), NodeOf(member.value), 0});
  }
  rules.properties.Assign(std::move(properties));
}

void SchemaCompiler::ReadPatternProperties(Node& node, const Entry& entry) {
  if (!entry.value.IsObject()) {
    Malformed(entry, "an object of schemas");
    return;
  }
  ObjectRules& rules = Made(node.object);
  for (const auto& member : entry.value.GetObject()) {
    std::unique_ptr<const Pattern> pattern = PatternOf(member.name, member.value);
    if (pattern) {
      rules.patternProperties.push_back({std::move(pattern), NodeOf(member.value)});
    }
  }
}

void SchemaCompiler::ReadDependencies(Node& node, const Entry& entry) {
  if (!entry.value.IsObject()) {
    Malformed(entry, "an object");
    return;
  }
  ObjectRules& rules = Made(node.object);
  for (const auto& member : entry.value.GetObject()) {
    Dependency dependency{Json::Text(member.name), {}, nullptr};
    if (member.value.IsArray()) {
      dependency.members = Names({dependency.name, member.value});
    } else {
      dependency.node = NodeOf(member.value);
    }
    rules.dependencies.push_back(std::move(dependency));
  }
}

void SchemaCompiler::ReadDefinitions(const Entry& entry) {
  if (!entry.value.IsObject()) {
    Malformed(entry, "an object of schemas");
    return;
  }
  for (const auto& member : entry.value.GetObject()) {
    NodeOf(member.value);
  }
}

}  // namespace JsonValidator
