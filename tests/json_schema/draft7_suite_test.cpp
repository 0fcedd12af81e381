// The public test suite of JSON Schema draft-07, against the validator's assertions.
#include "platform/json_validator.h"

#include "json_schema/schema_check.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>

namespace {

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

/// Cases that are known to fail, "file | group | case", each under a line "# reason".
std::set<std::string> ReadExceptions() {
  std::set<std::string> exceptions;
  std::istringstream lines(ReadFile(DRAFT7_EXCEPTIONS));
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.front() != '#') {
      exceptions.insert(line);
    }
  }
  return exceptions;
}

/// Whether the verdict is the expected one. A schema that cannot be used gives none.
bool IsRight(const Json::Value& schema, const Json::Value& value, bool expected) {
  Json::Document result;
  JsonValidator::CheckSchema(schema, result);
  const bool usable = result.Empty();
  JsonValidator::Validate(schema, value, result,
                          {JsonValidator::RULE_JSON_SCHEMA, JsonValidator::RULE_REQUIRED}, "");
  return usable && result.Empty() == expected;
}

/// Puts another document into a schema, under the name that the schema refers to it by.
void TakeIn(const std::string& name, const std::filesystem::path& file, Json::Value& schema,
            Json::Allocator& allocator) {
  Json::Document document;
  ASSERT_TRUE(Json::Parse(ReadFile(file), document)) << file;
  if (!schema.HasMember("definitions")) {
    schema.AddMember("definitions", Json::Value(rapidjson::kObjectType), allocator);
  }
  Json::Value copy(document, allocator);
  copy.RemoveMember("$id");
  copy.AddMember("$id", Json::Copy(name, allocator), allocator);
  schema["definitions"].AddMember(Json::Copy(name, allocator), copy, allocator);
}

/// Answers references to the meta-schema and to the suite's remote files from local copies.
void TakeInRemotes(Json::Value& schema, Json::Allocator& allocator) {
  const std::string host = "http://localhost:1234/";
  const std::string metaSchema = "http://json-schema.org/draft-07/schema#";
  std::string text;
  if (!schema.IsObject() || !Json::Serialize(schema, text)) {
    return;
  }
  if (text.find("\"$ref\":\"" + metaSchema) != std::string::npos) {
    TakeIn(metaSchema, DRAFT7_META_SCHEMA, schema, allocator);
  }
  if (text.find(host) == std::string::npos) {
    return;
  }
  const std::filesystem::path remotes(DRAFT7_REMOTES);
  for (const auto& file : std::filesystem::recursive_directory_iterator(remotes)) {
    if (file.path().extension() == ".json") {
      TakeIn(host + file.path().lexically_relative(remotes).string(), file.path(), schema,
             allocator);
    }
  }
}

TEST(Draft7Suite, FailsInNothingButTheListedCases) {
  std::set<std::string> exceptions = ReadExceptions();
  std::size_t held = 0;
  const std::filesystem::path root(DRAFT7_SUITE);
  for (const auto& file : std::filesystem::recursive_directory_iterator(root)) {
    if (file.path().extension() != ".json") {
      continue;
    }
    const std::string name = file.path().lexically_relative(root).string();
    Json::Document groups;
    ASSERT_TRUE(Json::Parse(ReadFile(file.path()), groups)) << file.path();
    for (Json::Value& group : groups.GetArray()) {
      TakeInRemotes(group["schema"], groups.GetAllocator());
      for (const Json::Value& one : group["tests"].GetArray()) {
        const std::string about = name + " | " + group["description"].GetString() + " | " +
                                  one["description"].GetString();
        const bool right = IsRight(group["schema"], one["data"], one["valid"].GetBool());
        held += right && name.rfind("optional/", 0) != 0 ? 1U : 0U;
        EXPECT_NE(right, exceptions.erase(about) > 0)
            << about << (right ? ": take it off the list" : "");
      }
    }
  }
  for (const std::string& name : exceptions) {
    ADD_FAILURE() << "no such case: " << name;
  }
  std::cout << held << " mandatory cases hold\n";
  EXPECT_GT(held, 402U);
}

}  // namespace
