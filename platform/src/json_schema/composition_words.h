// Why a value fits none of several schemas, or too many, or one that it must not fit: in one sentence.
#pragma once

#include "json/json.h"
#include "json_schema/assertion_check.h"
#include "json_schema/compiled_node.h"
#include "json_schema/place.h"
#include "json_schema/value_words.h"

#include <cstddef>
#include <string>

namespace JsonValidator {

struct BranchWords {
  const AssertionCheck& check;  ///< that says why
  bool wordy;                   ///< as in Findings
};

/// Of a value that fits none of the branches: what the closest ask for.
std::string WhyNoBranch(const Nodes& branches, const Json::Value& value, const Place& place,
                        const BranchWords& words);

/// Of a value that fits several branches where it may fit one.
/// \param say  for the value; the branches that a secret fits are not named
std::string WhySeveralBranches(const Nodes& fitting, std::size_t branches, const ValueWords& say,
                               Budget& budget);

/// Of a value that fits the schema under "not".
/// \param check  that says why
std::string WhyExcluded(const Node& excluded, const Json::Value& value, const Place& place,
                        const AssertionCheck& check);

}  // namespace JsonValidator
