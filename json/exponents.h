// Exponents in JSON texts.
#pragma once

#include <string>
#include <string_view>

namespace Json {

enum class Exponents { ALL, OF_ZERO };

/// The text with the digits of its exponents replaced by zeros: of all numbers, or of those that are
/// zero whatever their exponent. The reader goes by the exponent alone when it takes a number for
/// too large. Everything else stays in its place, also in a text that is not JSON.
std::string WithoutExponents(std::string_view text, Exponents which);

}  // namespace Json
