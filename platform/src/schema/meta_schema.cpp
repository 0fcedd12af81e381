#include "schema/meta_schema.h"

#include "platform/made_once.h"

#include "json/json_doc.h"
#include "json/type_schema_view.h"
#include "json_schema/registration.h"

namespace TypeFiles {
namespace {

// Unknown keywords are refused, for a misspelt tag would silently make other data of a member;
// names that begin with "x-" are free. Whether an annotation stands where it means something is not
// asked here.
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
        "anyOf": { "$ref": "#/definitions/list" },
        "bootAccessible": {},
        "cached": {},
        "confirmedDuringUpgrade": {},
        "const": {},
        "contains": { "$ref": "#/definitions/node" },
        "contentEncoding": { "type": "string" },
        "contentMediaType": { "type": "string" },
        "default": {},
        "definitions": { "$ref": "#/definitions/nodes" },
        "dependencies": {
          "type": "object",
          "additionalProperties": {
            "if": { "type": "array" },
            "then": { "$ref": "#/definitions/names" },
            "else": { "$ref": "#/definitions/node" }
          }
        },
        "description": { "type": "string" },
        "else": { "$ref": "#/definitions/node" },
        "enum": { "type": "array", "minItems": 1 },
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
        "patternProperties": { "$ref": "#/definitions/nodes" },
        "properties": { "$ref": "#/definitions/nodes" },
        "propertyNames": { "$ref": "#/definitions/node" },
        "readOnly": { "type": "boolean" },
        "rebootRequired": {},
        "required": { "$ref": "#/definitions/names" },
        "shared": {},
        "then": { "$ref": "#/definitions/node" },
        "title": { "type": "string" },
        "type": {
          "if": { "type": "array" },
          "then": { "minItems": 1, "uniqueItems": true, "items": { "$ref": "#/definitions/kind" } },
          "else": { "$ref": "#/definitions/kind" }
        },
        "uniqueItems": { "type": "boolean" },
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

const Json::Value& MetaSchema() {
  return compiled.Get().view.Schema();
}

}  // namespace TypeFiles
