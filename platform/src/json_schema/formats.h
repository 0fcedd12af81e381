// The formats that are checked.
#pragma once

#include "json/json.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace JsonValidator {

/// A format of texts; `port` is one of integers, too.
struct Format {
  std::string_view name;
  std::string_view expected;  ///< in words, with an article
  bool (*holds)(std::string_view text);
  /// Null for a format of texts alone.
  bool (*integerHolds)(const Json::Value& integer) = nullptr;
  // What it takes to check a text: so many steps, and so many for each eight bytes.
  std::uint64_t steps = 0;
  std::uint64_t stepsOfEightBytes = 1;
};

/// Null for a format that is not checked.
const Format* FindFormat(std::string_view name);

/// The names of all formats that are checked, separated by ", ".
std::string FormatNames();

}  // namespace JsonValidator
