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
  /// \param wordy  whether findings may take some time to put into words; only the first ones do
  explicit Findings(bool wordy = true) : wordy_(wordy) {}

  struct Finding {
    std::vector<std::uint32_t> order;  ///< the position in the document, for sorting
    std::string field;
    std::string error;
  };

  /// Notes a fault at a place. In the text control characters are escaped and broken UTF-8 replaced.
  void Add(const Place& place, std::string_view error);

  bool Empty() const { return findings_.empty(); }

  /// Whether what was meant may be looked for. Nobody reads so much of what is wrong everywhere.
  bool AreWordy() const { return wordy_ && findings_.size() < kMostWordy; }

  /// The JSON Pointer of a place, "/" for the root.
  static std::string FieldOf(const Place& place);

  /// In document order; the same of the same field only once.
  const std::vector<Finding>& Sorted();

  /// Makes `result` the array of all findings.
  void Write(Json::Document& result);

 private:
  static constexpr std::size_t kMostWordy = 100;

  bool wordy_;
  std::vector<Finding> findings_;
};

/// Appends {"field", "error"} to the array `result`.
void AppendFinding(Json::Document& result, std::string_view field, std::string_view error);

}  // namespace JsonValidator
