// The groups of a pattern that capture.
#pragma once

#include "json_schema/ecma_reader.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace JsonValidator::Ecma {

/// References may name groups before they come. Names are left to PCRE2 as numbers, since it does
/// not take all that ECMA 262 takes.
class Captures {
 public:
  /// Looks through the pattern for its groups alone. Raises a Fault for names that are none and for
  /// those that two groups have.
  explicit Captures(std::string_view pattern);

  std::size_t Count() const { return count_; }
  /// The number of a group; 0 for none.
  std::size_t Named(const std::string& name) const {
    const auto found = numbers_.find(name);
    return found == numbers_.end() ? 0 : found->second;
  }

  /// A name and the ">" behind it, of a construct that begins at a byte before.
  static std::string TakeName(Reader& reader, std::size_t construct);

 private:
  std::size_t count_ = 0;
  std::map<std::string, std::size_t> numbers_;
};

}  // namespace JsonValidator::Ecma
