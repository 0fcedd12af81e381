// Collecting what is wrong with a type file.
#pragma once

#include "platform/type_files.h"

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace TypeFiles {

class Findings {
 public:
  /// \param pointer  JSON Pointer into the file; empty for the file as a whole
  void Add(std::string_view pointer, std::string error) {
    all_.push_back({pointer.empty() ? "/" : std::string(pointer), std::move(error)});
  }

  /// Checks a value against a schema and adds what is found.
  /// \param pointer  where the value stands in the file
  void Validate(const Json::Value& schema, const Json::Value& value,
                const std::unordered_set<int>& rules, std::string_view pointer);

  /// Adds findings as the validator writes them. What is said at a place already is not said again.
  void AddNew(const Json::Value& results, std::string_view pointer);

  /// Adds warnings as the validator writes findings.
  void Warn(const Json::Value& results, std::string_view pointer);

  bool AnyAtOrUnder(std::string_view pointer) const;
  std::vector<Finding> Take() { return std::move(all_); }
  std::vector<Finding> TakeWarnings() { return std::move(warnings_); }

 private:
  bool AnyAt(std::string_view pointer) const;

  std::vector<Finding> all_;
  std::vector<Finding> warnings_;
};

}  // namespace TypeFiles
