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

bool IsValid(const Json::Value& schema, const Json::Value& value) {
  Json::Document result;
  JsonValidator::Validate(schema, value, result,
                          {JsonValidator::RULE_JSON_SCHEMA, JsonValidator::RULE_REQUIRED}, "");
  return result.Empty();
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
    for (const Json::Value& group : groups.GetArray()) {
      for (const Json::Value& one : group["tests"].GetArray()) {
        const std::string name = file.path().lexically_relative(root).string() + " | " +
                                 group["description"].GetString() + " | " +
                                 one["description"].GetString();
        results[name] = IsValid(group["schema"], one["data"]) == one["valid"].GetBool();
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
