// The public test suite of JSON Schema draft-07, against the validator's assertions.
#include "platform/json_validator.h"
#include "platform/type_files.h"

#include "json/text_file.h"
#include "json_schema/schema_check.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>

namespace {

/// Cases that are known to fail, "file | group | case", each under a line "# reason".
std::set<std::string> ReadExceptions() {
  std::set<std::string> exceptions;
  std::ifstream lines(DRAFT7_EXCEPTIONS);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.front() != '#') {
      exceptions.insert(line);
    }
  }
  return exceptions;
}

Json::Document Read(const std::filesystem::path& path) {
  Json::Document document;
  EXPECT_TRUE(Json::Parse(Json::ReadTextFile(path, TypeFiles::kLongestFile).text, document))
      << path;
  return document;
}

/// The JSON files of a directory, by their paths in it.
std::map<std::string, std::filesystem::path> FilesUnder(const std::filesystem::path& root) {
  std::map<std::string, std::filesystem::path> files;
  for (const auto& file : std::filesystem::recursive_directory_iterator(root)) {
    if (file.path().extension() == ".json") {
      files[file.path().lexically_relative(root)] = file.path();
    }
  }
  return files;
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
  if (!schema.HasMember("definitions")) {
    schema.AddMember("definitions", Json::Value(rapidjson::kObjectType), allocator);
  }
  Json::Value copy(Read(file), allocator);
  copy.RemoveMember("$id");
  copy.AddMember("$id", Json::Copy(name, allocator), allocator);
  schema["definitions"].AddMember(Json::Copy(name, allocator), copy, allocator);
}

/// Answers references to the meta-schema and to the suite's remote files from local copies.
void TakeInRemotes(Json::Value& schema, Json::Allocator& allocator) {
  if (schema.IsObject()) {
    TakeIn("http://json-schema.org/draft-07/schema#", DRAFT7_META_SCHEMA, schema, allocator);
    for (const auto& [name, file] : FilesUnder(DRAFT7_REMOTES)) {
      TakeIn("http://localhost:1234/" + name, file, schema, allocator);
    }
  }
}

TEST(Draft7Suite, FailsInNothingButTheListedCases) {
  std::set<std::string> exceptions = ReadExceptions();
  std::size_t held = 0;
  for (const auto& [name, file] : FilesUnder(DRAFT7_SUITE)) {
    Json::Document groups = Read(file);
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
  EXPECT_GT(held, 402U);
}

}  // namespace
