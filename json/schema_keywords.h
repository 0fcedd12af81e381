// The keywords that type files add to JSON Schema, and the few of JSON Schema that types are read
// by.
#pragma once

#include <array>

namespace Json::Keyword {

// Flags of a whole type, at the root of its schema.
constexpr const char* kRebootRequired = "rebootRequired";
constexpr const char* kBootAccessible = "bootAccessible";
constexpr const char* kConfirmedDuringUpgrade = "confirmedDuringUpgrade";
constexpr const char* kShared = "shared";
constexpr std::array<const char*, 4> kFlags = {kRebootRequired, kBootAccessible,
                                               kConfirmedDuringUpgrade, kShared};

// The part of an object that a node and everything under it belongs to.
constexpr const char* kVital = "vital";
constexpr const char* kCached = "cached";

// What is the user's anyway: no more than a remark.
constexpr const char* kUser = "user";
constexpr const char* kSolutionUser = "solutionUser";

// What is not shown to everybody.
constexpr const char* kSecret = "secret";

constexpr const char* kInstanceId = "instanceId";
constexpr const char* kGeneratedInstanceId = "generatedInstanceId";

constexpr const char* kAdditionalProperties = "additionalProperties";
constexpr const char* kDefault = "default";
constexpr const char* kDefinitions = "definitions";
constexpr const char* kDependencies = "dependencies";
constexpr const char* kFormat = "format";
constexpr const char* kId = "$id";
constexpr const char* kItems = "items";
constexpr const char* kPatternProperties = "patternProperties";
constexpr const char* kProperties = "properties";
constexpr const char* kReference = "$ref";
constexpr const char* kRequired = "required";
constexpr const char* kType = "type";

}  // namespace Json::Keyword
