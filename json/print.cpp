#include "json/print.h"

#include "json/utf8.h"

#include <rapidjson/prettywriter.h>

#include <charconv>
#include <cmath>
#include <string_view>

namespace Json {
namespace {

std::string Quoted(std::string_view text) {
  constexpr std::string_view kShortEscapes = "\"\\\b\t\n\f\r";
  constexpr std::string_view kTheirLetters = "\"\\btnfr";
  std::string quoted = "\"";
  while (!text.empty()) {
    const std::string_view character = text.substr(0, Utf8::SequenceLength(text));
    text.remove_prefix(character.size());
    if (const std::size_t at = kShortEscapes.find(character); at != std::string_view::npos) {
      quoted.append(1, '\\').append(1, kTheirLetters[at]);
    } else if (Utf8::HasControls(character) || Utf8::IsDeceptive(character)) {
      Utf8::AppendEscape(quoted, character);
    } else {
      quoted += character;
    }
  }
  return quoted += '"';
}

// The fewest digits that read back as the same number.
std::string Digits(double value) {
  constexpr double kSmallestPlain = 1e-4;
  constexpr double kLargestPlain = 1e15;
  const double size = std::abs(value);
  const bool isPlain = size == 0 || (size >= kSmallestPlain && size < kLargestPlain);
  char buffer[32];
  const auto end =
      std::to_chars(buffer, buffer + sizeof buffer, value,
                    isPlain ? std::chars_format::fixed : std::chars_format::scientific);
  std::string digits(buffer, end.ptr);
  // What is floating point has to read back as floating point.
  return digits.find_first_of(".e") == std::string::npos ? digits + ".0" : digits;
}

template <class Writer>
class Printer : public Writer {
 public:
  Printer(Buffer& buffer, BadText badText) : Writer(buffer), badText_(badText) {}

  bool Double(double value) {
    return std::isfinite(value) && Raw(Digits(value), rapidjson::kNumberType);
  }
  bool String(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    const std::string_view given(text, length);
    if (Utf8::IsValid(given)) {
      return Raw(Quoted(given), rapidjson::kStringType);
    }
    return badText_ == BadText::REPAIRED &&
           Raw(Quoted(Utf8::Repaired(given)), rapidjson::kStringType);
  }
  bool Key(const char* text, rapidjson::SizeType length, bool copy) {
    return String(text, length, copy);
  }

 private:
  bool Raw(const std::string& text, rapidjson::Type type) {
    return this->RawValue(text.data(), text.size(), type);
  }

  BadText badText_;
};

}  // namespace

bool Print(const Value& value, Layout layout, BadText badText, std::string& text) {
  Buffer buffer;
  bool isSound = false;
  if (layout == Layout::INDENTED) {
    Printer<rapidjson::PrettyWriter<Buffer, Encoding, Encoding, SystemAllocator>> printer(buffer,
                                                                                          badText);
    printer.SetIndent(' ', 2);
    isSound = value.Accept(printer);
  } else {
    Printer<rapidjson::Writer<Buffer, Encoding, Encoding, SystemAllocator>> printer(buffer,
                                                                                    badText);
    isSound = value.Accept(printer);
  }
  text.assign(buffer.GetString(), isSound ? buffer.GetSize() : 0);
  return isSound;
}

}  // namespace Json
