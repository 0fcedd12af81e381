// The text of a number, as the reader has just read it.
#pragma once

#include <string_view>

namespace Json {

class NumberText {
 public:
  /// \param end  where the number ends
  NumberText(const char* begin, const char* end);

  bool IsInteger() const { return text_.find_first_of(".eE") == std::string_view::npos; }
  /// The double that is nearest; false for what is beyond the largest.
  bool Read(double& value) const;

  // Beyond the largest double RapidJSON answers anything: NaN and, as the exponent runs over into the
  // sign, tiny numbers first.
  /// What it may have answered for such a number of fewer digits than HasLong looks for ...
  static bool IsDoubtful(double value);
  /// ... and whether a text has numbers of as many digits.
  static bool HasLong(std::string_view text);

 private:
  bool IsBelowOne() const;

  std::string_view text_;
};

}  // namespace Json
