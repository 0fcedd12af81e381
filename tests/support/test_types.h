// Types for tests, installed as any other.
#pragma once

#include "tarnconfigstore/type_administration.h"

#include "support/temporary_host.h"

#include <string>

namespace TestSupport {

/// A plain type, tarn/test/plain: texts, numbers, a list with bounds, a default.
inline constexpr const char* kPlainType = R"({
  "component": "tarn", "group": "test", "key": "plain", "version": "1.0",
  "schema": { "type": "object", "required": ["name"], "properties": {
    "name": { "type": "string" },
    "port": { "type": "integer", "minimum": 1, "maximum": 65535, "default": 22 },
    "tags": { "type": "array", "items": { "type": "string" } },
    "nested": { "type": "object", "properties": { "deep": { "type": "object", "properties": {
      "leaf": { "type": "string" } } } } } } }
})";

/// A type of all parts with instances, and instances inside it, tarn/test/switch.
inline constexpr const char* kSwitchType = R"({
  "component": "tarn", "group": "test", "key": "switch", "version": "2.1",
  "schema": { "type": "object", "properties": {
    "name": { "type": "string", "instanceId": true }, "mtu": { "type": "integer" },
    "serial": { "type": "string", "vital": true },
    "state": { "type": "object", "cached": true, "properties": { "up": { "type": "boolean" } } },
    "ports": { "type": "array", "items": { "type": "object", "properties": {
      "id": { "type": "string", "instanceId": true }, "vlan": { "type": "integer" },
      "mac": { "type": "string", "vital": true }, "speed": { "type": "integer", "cached": true },
      "policy": { "type": "object", "properties": {
        "limit": { "type": "integer" }, "seen": { "type": "integer", "cached": true } } } } } },
    "rules": { "type": "array", "items": { "type": "object", "generatedInstanceId": true,
      "properties": { "allow": { "type": "string" },
        "hits": { "type": "integer", "cached": true } } } } } }
})";

/// A type, tarn/test/ways, in which "v" is vital, "c" cached and anything else the user's: elements
/// that are reached by name, lists of nothing but ids, members that may be null, objects whose
/// properties are of one part but that admit others ("x-admits"), a tuple and a list of lists.
inline constexpr const char* kManyWaysType = R"({
  "component": "tarn", "group": "test", "key": "ways", "version": "1.0",
  "schema": { "type": "object", "properties": {
    "id": { "type": "string", "instanceId": true }, "null": { "type": "null" },
    "u1": { "type": "integer" }, "u2": { "type": ["integer", "null"] },
    "v1": { "type": "integer", "vital": true }, "v2": { "type": ["integer", "null"], "vital": true },
    "c1": { "type": "integer", "cached": true }, "c2": { "type": "integer", "cached": true },
    "ports": { "type": "array", "items": { "$ref": "#port" } },
    "rules": { "type": "array", "items": { "type": "object", "generatedInstanceId": true,
      "properties": { "u": { "type": "string" }, "c": { "type": "integer", "cached": true } } } },
    "ids": { "type": "array", "items": { "$ref": "#/definitions/named" } },
    "seen": { "type": "array", "cached": true, "items": { "$ref": "#/definitions/named" } },
    "tuple": { "type": "array", "vital": true, "items": [ { "type": "integer" }, {} ] },
    "vitals": { "type": "object", "properties": { "v": { "type": "integer", "vital": true } },
      "additionalProperties": { "type": "integer" }, "x-admits": "x" },
    "caches": { "type": "object", "properties": { "c": { "type": "integer", "cached": true } },
      "patternProperties": { "^x": {} }, "x-admits": "x" },
    "either": { "type": "object", "properties": { "v": { "type": "integer", "vital": true } },
      "anyOf": [ { "properties": { "x": {} } }, { "required": ["v"] } ], "x-admits": "x" },
    "kept": { "type": "object", "cached": true, "properties": { "lists": { "type": "array",
      "items": { "type": "array", "items": { "type": ["integer", "null"] } } } },
      "additionalProperties": {}, "x-admits": "x" } },
    "definitions": {
      "named": { "type": "object", "properties": { "id": { "type": "string", "instanceId": true } } },
      "port": { "$id": "#port", "type": "object", "properties": {
        "id": { "type": "string", "instanceId": true }, "u": { "type": ["integer", "null"] },
        "v": { "type": "integer", "vital": true }, "c": { "type": "integer", "cached": true },
        "ports": { "type": "array", "items": { "$ref": "#port" } } } } } }
})";

/// A type file "tarn/test/KEY" with a schema and shipped objects.
inline std::string TypeFile(const std::string& key, const std::string& version,
                            const std::string& schema = R"({"type":"object"})",
                            const std::string& defaults = "") {
  return R"({"component":"tarn","group":"test","key":")" + key + R"(","version":")" + version +
         R"(","schema":)" + schema + R"(,"defaults":[)" + defaults + "]}";
}

/// A type under another key, whose changes wait for the next boot.
inline std::string Staged(std::string type, const std::string& key) {
  const auto replace = [&type](const std::string& old, const std::string& text) {
    type.replace(type.find(old), old.size(), text);
  };
  replace(R"("key": ")", R"("key": ")" + key + "-");
  replace(R"("schema": {)", R"("schema": { "rebootRequired": true,)");
  return type;
}

inline void InstallType(const TemporaryHost& host, const std::string& text) {
  const std::string path = host.Root() + "/type.json";
  WriteFile(path, text);
  for (const auto& report : TarnConfigStore::InstallTypes({path}, {})) {
    if (report.outcome == TarnConfigStore::TypeOutcome::INVALID) {
      const TarnConfigStore::ErrorInfo& error = report.errors.front();
      throw std::runtime_error("a type of the tests is not valid: " + error.field + error.error);
    }
  }
}

}  // namespace TestSupport
