// A host with types whose documents say much.
#pragma once

#include "tarnconfigstore/documents.h"

#include "support/next_boot_fixture.h"

#include <string>

namespace TarnConfigStore {

using TestSupport::Raised;

// All of tarn/test/secrets is the user's: a secret text, secrets in lists with and without ids, and a
// secret that is an object.
inline constexpr const char* kSecretType = R"({
  "component": "tarn", "group": "test", "key": "secrets", "version": "1.0",
  "schema": { "type": "object", "properties": {
    "password": { "type": "string", "secret": true, "maxLength": 8 }, "n": { "type": "integer" },
    "users": { "type": "array", "items": { "type": "object", "properties": {
      "id": { "type": "string", "instanceId": true },
      "token": { "type": "object", "secret": true, "additionalProperties": true } } } },
    "plain": { "type": "array", "items": { "type": "object", "properties": {
      "name": { "type": "string" }, "key": { "type": "string", "secret": true } } } } } }
})";

class Documents : public TestSupport::NextBootFixture {
 protected:
  Documents() { TestSupport::InstallType(host_, kSecretType); }

  static std::string Export(ExportOptions options = {}, const Id& prefix = {"", "", ""}) {
    return ExportConfigText(prefix, options);
  }
  static std::string WithoutBlanks(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
    return text;
  }
  static std::string Config(const std::string& types) {
    return R"({"format":1,"config":{"tarn":{"test":{)" + types + "}}}}";
  }
  std::string Rows() {
    return database_.Lines(
        "SELECT Name, Identifier, Version, ifnull(UserValue,'-'), ifnull(AutoConfValue,'-'), "
        "ifnull(VitalValue,'-'), ifnull(CachedValue,'-'), ifnull(DesiredValue,'-'), Success, "
        "Revision, CreationTime FROM Config ORDER BY Component, ConfigGroup, Name, Identifier");
  }
  static std::string Import(const std::string& document, ImportMode mode = ImportMode::MERGE,
                            bool check = false) {
    return ImportConfig(document, {.mode = mode, .check = check}).ToJson();
  }
};

}  // namespace TarnConfigStore
