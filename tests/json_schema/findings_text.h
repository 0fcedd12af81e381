// What the validator finds, as lines of text.
#pragma once

#include "platform/json_validator.h"

#include <gtest/gtest.h>

#include <sstream>
#include <unordered_set>
#include <vector>

namespace ValidatorTest {

using Rules = std::unordered_set<int>;

/// The rules of most writes.
inline const Rules kSetRules{0, 1, 7, 8};

inline Json::Document Parsed(std::string_view text) {
  Json::Document document;
  const Json::ParseResult parsed = Json::Parse(text, document);
  EXPECT_TRUE(parsed) << text << ": " << parsed.message;
  return document;
}

/// "field: error" of each finding, separated by "\n"; "" for none.
inline std::string Lines(const Json::Value& findings) {
  std::string lines;
  for (const Json::Value& finding : findings.GetArray()) {
    lines += lines.empty() ? "" : "\n";
    lines += std::string(finding["field"].GetString()) + ": " + finding["error"].GetString();
  }
  return lines;
}

inline std::string FindingsOf(const Json::Value& schema, const Json::Value& value,
                              const Rules& rules = kSetRules) {
  Json::Document result;
  JsonValidator::Validate(schema, value, result, rules, "");
  return Lines(result);
}

inline std::string FindingsOf(std::string_view schema, std::string_view value,
                              const Rules& rules = kSetRules) {
  return FindingsOf(Parsed(schema), Parsed(value), rules);
}

inline void Expect(const std::string& schema, const std::string& value, const std::string& findings,
                   const Rules& rules = kSetRules) {
  EXPECT_EQ(FindingsOf(schema, value, rules), findings) << schema << " " << value;
}

/// The parts of "a,b,c".
inline std::vector<std::string> Split(const std::string& list) {
  std::vector<std::string> parts;
  std::istringstream text(list);
  for (std::string part; std::getline(text, part, ',');) {
    parts.push_back(part);
  }
  return parts;
}

}  // namespace ValidatorTest
