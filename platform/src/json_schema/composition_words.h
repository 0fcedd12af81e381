// Why a value fits none of several schemas, or one that it must not fit: in one sentence.
#pragma once

#include "json/json.h"
#include "json_schema/compiled_node.h"
#include "json_schema/place.h"

#include <string>

namespace JsonValidator {

/// Of a value that fits none of the branches.
/// \param textsAreSound  as in AssertionCheck::Scope
std::string WhyNoBranch(const Nodes& branches, const Json::Value& value, const Place& place,
                        bool textsAreSound);

/// Of a value that fits the schema under "not".
std::string WhyExcluded(const Node& excluded, const Json::Value& value);

}  // namespace JsonValidator
