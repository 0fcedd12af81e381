// Why a value fits none of several schemas, put together from why it does not fit each.
#pragma once

#include "json/json.h"
#include "json_schema/compiled_node.h"
#include "json_schema/place.h"
#include "json_schema/validation_findings.h"

#include <cstddef>
#include <string>
#include <vector>

namespace JsonValidator {

/// Collects the reasons of those branches that a value is closest to.
class BranchReasons {
 public:
  BranchReasons(const Json::Value& value, const Place& place, Json::SchemaPlace root);

  /// Drops what was added: a closer branch was found.
  void Forget();

  /// \param title   the branch's name; empty where it has none
  /// \param reason  the first thing that is wrong, going by the branch
  void Add(const std::string& title, const Findings::Finding& reason);

  /// Adds the types of a branch that is about values of other types only; kept by Forget.
  void AddTypes(TypeSet types) { otherTypes_ |= types; }

  /// What would fit, where each of the branches says just that of this place ("expected an IPv4
  /// address or an integer, found ..."), or else what keeps the value from fitting.
  /// \param branches  the number of all branches
  std::string InOneSentence(std::size_t branches) const;

 private:
  std::string found_;
  std::string field_;
  std::vector<std::string> expected_;
  std::vector<std::string> texts_;
  std::string suggestion_;
  TypeSet otherTypes_ = 0;
  bool allHere_ = true;
};

}  // namespace JsonValidator
