// What every value has to be, whatever its schema and the rules.
#pragma once

#include "json/json.h"
#include "json_schema/place.h"
#include "json_schema/validation_findings.h"

#include <cstdint>

namespace JsonValidator {

/// Whether a value can be walked, written and stored.
class SoundnessCheck {
 public:
  /// \param uniqueNames  whether a name that an object has twice is a fault, too
  SoundnessCheck(bool uniqueNames, Findings& findings)
      : uniqueNames_(uniqueNames), findings_(findings) {}

  /// Notes texts and names that are not UTF-8, numbers that are not finite, and nesting that is too
  /// deep to be walked. False for the last: then nothing else may be asked of the value.
  bool Check(const Json::Value& value);

  /// Whether all texts and names are UTF-8.
  bool TextsAreSound() const { return textsAreSound_; }

  /// The values that were walked, a long text counting as several.
  std::uint64_t Size() const { return size_; }

 private:
  bool Walk(const Json::Value& value, const Place& place, std::size_t depth);
  void NoteText(const Json::Value& text, const Place& place);
  void NoteName(const Place& member);
  void CheckNamesAreUnique(const Json::Value& object, const Place& place);

  bool uniqueNames_;
  Findings& findings_;
  bool textsAreSound_ = true;
  std::uint64_t size_ = 0;
};

}  // namespace JsonValidator
