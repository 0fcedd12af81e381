// Judging schemas themselves.
#pragma once

#include "json/json.h"

namespace JsonValidator {

/// Everything that keeps a schema from being used: findings as in Validate, `field` pointing into
/// the schema. Malformed keywords, patterns that do not compile, references that lead nowhere or
/// outside the schema (nothing is ever fetched), and references that come back to the place they
/// stand at. Empty when it is fine. Safe from several threads.
void CheckSchema(const Json::Value& schema, Json::Document& result);

}  // namespace JsonValidator
