// What a validation has found so far.
#pragma once

#include "json/json.h"
#include "json_schema/place.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace JsonValidator {

/// The findings of one validation.
class Findings {
 public:
  struct Finding {
    std::vector<std::uint32_t> order;  ///< the position in the document, for sorting
    std::string field;
    std::string error;
  };

  /// Notes a fault at a place. Broken UTF-8 in the text is replaced.
  void Add(const Place& place, std::string_view error);

  bool Empty() const { return findings_.empty(); }

  /// In document order, a fault found in several ways only once.
  const std::vector<Finding>& Sorted();

  /// Makes `result` the array of all findings.
  void Write(Json::Document& result);

 private:
  std::vector<Finding> findings_;
};

/// Appends {"field", "error"} to the array `result`.
void AppendFinding(Json::Document& result, std::string_view field, std::string_view error);

}  // namespace JsonValidator
