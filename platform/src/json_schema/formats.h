// The formats that are checked.
#pragma once

#include "json/json.h"

#include <string_view>

namespace JsonValidator {

/// A format of texts; `port` is one of integers, too.
struct Format {
  std::string_view name;
  std::string_view expected;  ///< in words, with an article
  bool (*holds)(std::string_view text);
  /// Null for a format of texts alone.
  bool (*integerHolds)(const Json::Value& integer) = nullptr;
};

/// Null for a format that is not checked.
const Format* FindFormat(std::string_view name);

}  // namespace JsonValidator
