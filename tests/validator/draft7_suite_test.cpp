// The public test suite of JSON Schema draft-07, against the validator's assertions.
#include "platform/json_validator.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

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

/// Puts the suite's other documents into a schema that refers to them, under the names they go by.
void TakeInRemotes(Json::Value& schema, Json::Allocator& allocator) {
  constexpr std::string_view kHost = "http://localhost:1234/";
  std::string text;
  if (!schema.IsObject() || !Json::Serialize(schema, text) ||
      text.find(kHost) == std::string::npos) {
    return;
  }
  if (!schema.HasMember("definitions")) {
    schema.AddMember("definitions", Json::Value(rapidjson::kObjectType), allocator);
  }
  const std::filesystem::path remotes(DRAFT7_REMOTES);
  for (const auto& file : std::filesystem::recursive_directory_iterator(remotes)) {
    Json::Document remote;
    if (file.is_regular_file() && Json::Parse(ReadFile(file.path()), remote)) {
      const std::string name =
          std::string(kHost) + file.path().lexically_relative(remotes).string();
      Json::Value copy(remote, allocator);
      copy.AddMember("$id", Json::Copy(name, allocator), allocator);
      schema["definitions"].AddMember(Json::Copy(name, allocator), copy, allocator);
    }
  }
}

/// Name of each case of the suite and whether the validator's answer is the right one.
std::map<std::string, bool> RunSuite() {
  std::map<std::string, bool> results;
  const std::filesystem::path root(DRAFT7_SUITE);
  for (const auto& file : std::filesystem::recursive_directory_iterator(root)) {
    if (file.path().extension() != ".json") {
      continue;
    }
    Json::Document groups;
    EXPECT_TRUE(Json::Parse(ReadFile(file.path()), groups)) << file.path();
    for (Json::Value& group : groups.GetArray()) {
      TakeInRemotes(group["schema"], groups.GetAllocator());
      for (const Json::Value& one : group["tests"].GetArray()) {
        const std::string name = file.path().lexically_relative(root).string() + " | " +
                                 group["description"].GetString() + " | " +
                                 one["description"].GetString();
        results[name] = IsRight(group["schema"], one["data"], one["valid"].GetBool());
      }
    }
  }
  return results;
}

TEST(Draft7Suite, FailsInNothingButTheListedCases) {
  const std::map<std::string, bool> results = RunSuite();
  std::set<std::string> exceptions = ReadExceptions();
  EXPECT_GT(results.size(), 400U);
  for (const auto& [name, right] : results) {
    const bool listed = exceptions.erase(name) > 0;
    EXPECT_TRUE(right || listed) << "fails: " << name;
    EXPECT_FALSE(right && listed) << "holds, take it off the list: " << name;
  }
  for (const std::string& name : exceptions) {
    ADD_FAILURE() << "no such case: " << name;
  }
}

}  // namespace
