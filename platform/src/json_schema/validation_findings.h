// What a validation has found so far.
#pragma once

#include "json/json.h"
#include "json_schema/place.h"
#include "json_schema/value_words.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace JsonValidator {

/// The findings of one validation.
class Findings {
 public:
  /// \param root   what is known of the value's places, so that no secret gets into a finding
  /// \param wordy  whether findings may take some time to put into words; only the first ones do
  explicit Findings(Json::SchemaPlace root = {}, bool wordy = true) : root_(root), wordy_(wordy) {}

  struct Finding {
    std::vector<std::uint32_t> order;  ///< the position in the document, for sorting
    std::string field;
    std::string error;
  };

  /// Notes a fault at a place. In the text control characters are escaped and broken UTF-8 replaced.
  void Add(const Place& place, std::string_view error);

  bool Empty() const { return findings_.empty(); }

  /// Notes that an object has a member which a schema of it does not declare; that alone is no fault.
  void NoteUndeclared() { undeclared_ = true; }
  bool SawUndeclared() const { return undeclared_; }

  /// Whether what was meant may be looked for. Nobody reads so much of what is wrong everywhere.
  bool AreWordy() const { return wordy_ && findings_.size() < kMostWordy; }

  /// The words for what stands at a place. Whatever a finding says of a value comes from there.
  ValueWords WordsOf(const Place& place) const { return {place, root_}; }

  /// In document order; the same of the same field only once.
  const std::vector<Finding>& Sorted();

  /// Makes `result` the array of all findings.
  void Write(Json::Document& result);

 private:
  static constexpr std::size_t kMostWordy = 100;

  Json::SchemaPlace root_;
  bool wordy_;
  bool undeclared_ = false;
  std::vector<Finding> findings_;
};

/// Appends {"field", "error"} to the array `result`.
void AppendFinding(Json::Document& result, std::string_view field, std::string_view error);

}  // namespace JsonValidator
