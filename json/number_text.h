// The text of a number, and what it is.
#pragma once

#include "json/json.h"

#include <cstdint>
#include <string_view>

namespace Json {

/// A number as JSON writes it, read exactly: RapidJSON's own way answers anything beyond the largest
/// double.
class NumberText {
 public:
  enum class Kind {
    SIGNED,
    UNSIGNED,      ///< beyond what is signed
    FLOATING,      ///< the nearest double
    LONG_INTEGER,  ///< of more than 64 bits; the nearest double
    TOO_LARGE,     ///< beyond the largest double
  };

  /// \param text  a number by JSON's grammar
  explicit NumberText(std::string_view text) noexcept
      : NumberText(text, text.find_first_of(".eE") == std::string_view::npos) {}
  /// \param isInteger  whether it has neither a point nor an exponent
  NumberText(std::string_view text, bool isInteger) noexcept;

  Kind GetKind() const noexcept { return kind_; }

  /// Whether such a number is no TOO_LARGE one, whatever it says; where it is not sure, it has to be read.
  static bool SurelyFits(std::string_view text, bool isInteger) noexcept {
    constexpr std::size_t kMostDigits = 300;
    return text.size() <= kMostDigits &&
           (isInteger || text.find_first_of("eE") == std::string_view::npos);
  }

  /// Hands the number on to one who takes a reader's events; not one that is too large.
  template <class Handler>
  bool HandOn(Handler& handler) const {
    return kind_ == Kind::SIGNED     ? handler.Int64(signed_)
           : kind_ == Kind::UNSIGNED ? handler.Uint64(unsigned_)
                                     : handler.Double(real_);
  }

 private:
  void ReadReal(std::string_view text, Kind kind) noexcept;

  Kind kind_ = Kind::SIGNED;
  union {
    std::int64_t signed_ = 0;
    std::uint64_t unsigned_;
    double real_;
  };
};

}  // namespace Json
