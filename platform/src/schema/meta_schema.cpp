#include "schema/meta_schema.h"

#include "platform/made_once.h"

#include "json/json_doc.h"
#include "json/near_miss.h"
#include "json/type_schema_view.h"
#include "json_schema/describe.h"
#include "json_schema/registration.h"

#include <utility>

namespace TypeFiles {
namespace {

// Unknown keywords are refused, for a misspelt tag would silently make other data of a member;
// names that begin with "x-" are free, and what editors know is left to them. Whether an annotation
// stands where it means something is not asked here.
constexpr const char* kText = R"json({
  "type": "object",
  "required": ["component", "group", "key", "version", "schema"],
  "additionalProperties": false,
  "properties": {
    "$comment": { "type": "string" },
    "description": { "type": "string" },
    "component": { "type": "string" },
    "group": { "type": "string" },
    "key": { "type": "string" },
    "version": { "type": "string" },
    "schema": { "$ref": "#/definitions/node" },
    "defaults": {
      "type": "array",
      "items": {
        "type": "object",
        "required": ["instance", "value"],
        "additionalProperties": false,
        "properties": { "instance": { "type": "string" }, "value": { "type": "object" } }
      }
    }
  },
  "definitions": {
    "nodes": { "type": "object", "additionalProperties": { "$ref": "#/definitions/node" } },
    "list": { "type": "array", "minItems": 1, "items": { "$ref": "#/definitions/node" } },
    "names": { "type": "array", "uniqueItems": true, "items": { "type": "string" } },
    "count": { "type": "integer", "minimum": 0 },
    "kind": { "enum": ["array", "boolean", "integer", "null", "number", "object", "string"] },
    "node": {
      "type": ["object", "boolean"],
      "properties": {
        "$comment": { "type": "string" },
        "$id": { "type": "string" },
        "$ref": { "type": "string", "pattern": "^#" },
        "$schema": { "type": "string" },
        "additionalItems": { "$ref": "#/definitions/node" },
        "additionalProperties": { "$ref": "#/definitions/node" },
        "allOf": { "$ref": "#/definitions/list" },
        "allowComments": {},
        "allowTrailingCommas": {},
        "anyOf": { "$ref": "#/definitions/list" },
        "bootAccessible": {},
        "cached": {},
        "confirmedDuringUpgrade": {},
        "const": {},
        "contains": { "$ref": "#/definitions/node" },
        "contentEncoding": { "type": "string" },
        "contentMediaType": { "type": "string" },
        "default": {},
        "defaultSnippets": {},
        "definitions": { "$ref": "#/definitions/nodes" },
        "dependencies": {
          "type": "object",
          "additionalProperties": {
            "if": { "type": "array" },
            "then": { "$ref": "#/definitions/names" },
            "else": { "$ref": "#/definitions/node" }
          }
        },
        "deprecated": { "type": "boolean" },
        "deprecationMessage": {},
        "description": { "type": "string" },
        "doNotSuggest": {},
        "else": { "$ref": "#/definitions/node" },
        "enum": { "type": "array", "minItems": 1 },
        "enumDescriptions": {},
        "errorMessage": {},
        "examples": { "type": "array" },
        "exclusiveMaximum": { "type": "number" },
        "exclusiveMinimum": { "type": "number" },
        "format": { "type": "string" },
        "generatedInstanceId": {},
        "if": { "$ref": "#/definitions/node" },
        "instanceId": {},
        "items": {
          "if": { "type": "array" },
          "then": { "$ref": "#/definitions/list" },
          "else": { "$ref": "#/definitions/node" }
        },
        "markdownDescription": {},
        "markdownEnumDescriptions": {},
        "maxItems": { "$ref": "#/definitions/count" },
        "maxLength": { "$ref": "#/definitions/count" },
        "maxProperties": { "$ref": "#/definitions/count" },
        "maximum": { "type": "number" },
        "minItems": { "$ref": "#/definitions/count" },
        "minLength": { "$ref": "#/definitions/count" },
        "minProperties": { "$ref": "#/definitions/count" },
        "minimum": { "type": "number" },
        "multipleOf": { "type": "number", "exclusiveMinimum": 0 },
        "not": { "$ref": "#/definitions/node" },
        "oneOf": { "$ref": "#/definitions/list" },
        "pattern": { "type": "string" },
        "patternErrorMessage": {},
        "patternProperties": { "$ref": "#/definitions/nodes" },
        "properties": { "$ref": "#/definitions/nodes" },
        "propertyNames": { "$ref": "#/definitions/node" },
        "readOnly": { "type": "boolean" },
        "rebootRequired": {},
        "required": { "$ref": "#/definitions/names" },
        "secret": {},
        "shared": {},
        "solutionUser": {},
        "suggestSortText": {},
        "then": { "$ref": "#/definitions/node" },
        "title": { "type": "string" },
        "type": {
          "if": { "type": "array" },
          "then": { "minItems": 1, "uniqueItems": true, "items": { "$ref": "#/definitions/kind" } },
          "else": { "$ref": "#/definitions/kind" }
        },
        "uniqueItems": { "type": "boolean" },
        "user": {},
        "vital": {},
        "writeOnly": { "type": "boolean" }
      }
    }
  }
})json";

struct Compiled {
  TarnConfigStore::JsonDoc document;
  Json::TypeSchemaView view;
  JsonValidator::Registration registration;
  const Json::Value& keywords;

  Compiled()
      : view(Parsed(document)),
        registration(view),
        keywords(view.Schema()["definitions"]["node"]["properties"]) {}

  static const Json::Value& Parsed(TarnConfigStore::JsonDoc& document) {
    document.Parse(kText, Json::Origin::OUTSIDE);
    return *document.GetJsonValuePtr();
  }
};

constinit MadeOnce<const Compiled> compiled;

}  // namespace

bool IsKeyword(std::string_view name) {
  return Json::FindMember(compiled.Get().keywords, name) != nullptr;
}

std::string WhyNoKeyword(std::string_view name) {
  // Of other drafts, and what to write in their place.
  constexpr std::pair<std::string_view, std::string_view> kOthers[] = {
      {"$defs", R"(use "definitions")"},
      {"dependentRequired", R"(use "dependencies")"},
      {"dependentSchemas", R"(use "dependencies")"},
      {"id", R"(use "$id")"},
      {"nullable", R"(list "null" in "type")"},
      {"prefixItems", R"(use a list of schemas in "items")"},
      {"unevaluatedProperties", R"(use "additionalProperties")"},
  };
  const std::string invalid = "Invalid field in schema: " + JsonValidator::Quoted(name) + " is ";
  for (const auto& [other, use] : kOthers) {
    if (name == other) {
      return invalid + "no keyword of JSON Schema draft-07; " + std::string(use);
    }
  }
  Json::NearMiss nearest(name);
  for (const auto& keyword : compiled.Get().keywords.GetObject()) {
    nearest.Offer(Json::Text(keyword.name));
  }
  return invalid + "neither a keyword of JSON Schema draft-07 nor an annotation of types; " +
         (nearest.Best().empty() ? std::string(R"(members of your own begin with "x-")")
                                 : "did you mean " + JsonValidator::Quoted(nearest.Best()) + "?");
}

const Json::Value& MetaSchema() {
  return compiled.Get().view.Schema();
}

}  // namespace TypeFiles
