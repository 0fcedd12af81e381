// Judging schemas themselves.
#pragma once

#include "json/json.h"

namespace JsonValidator {

/// Everything that keeps a schema from being used: findings as in Validate, `field` pointing into
/// the schema. Malformed keywords, patterns that do not compile, references that lead nowhere or
/// outside the schema (nothing is ever fetched), and references that come back to the place they
/// stand at. Empty when it is fine. Safe from several threads.
void CheckSchema(const Json::Value& schema, Json::Document& result);

/// The same for a schema that somebody is about to take into use: what can never hold and what
/// draft-07 ignores counts as well, since whoever wrote it meant something else. What is only odd is
/// in `warnings`.
void CheckNewSchema(const Json::Value& schema, Json::Document& result, Json::Document& warnings);

}  // namespace JsonValidator
