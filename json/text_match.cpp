#include "json/text_match.h"

#include "json/plain_text.h"

#include <charconv>
#include <cstdint>
#include <system_error>

namespace Json {
namespace {

using enum TextMatch;

// What has been read so far is the same on both sides. So a difference is one whatever follows: a text
// that turns out not to be sound later on is none that holds the same, either.
class Walk {
 public:
  explicit Walk(std::string_view text) : at_(text.data()), end_(at_ + text.size()) {}

  bool IsAtEnd() const { return at_ == end_; }

  TextMatch Match(const Value& value) {
    switch (value.GetType()) {
      case rapidjson::kObjectType:
        return MatchObject(value);
      case rapidjson::kArrayType:
        return MatchArray(value);
      case rapidjson::kStringType:
        return MatchString(Text(value));
      case rapidjson::kNumberType:
        return MatchNumber(value);
      case rapidjson::kNullType:
        return Take("null") ? SAME : UNKNOWN;
      default:
        return Take(value.IsTrue() ? "true" : "false")   ? SAME
               : Take(value.IsTrue() ? "false" : "true") ? OTHER
                                                         : UNKNOWN;
    }
  }

 private:
  bool Take(std::string_view word) {
    const bool is = std::string_view(at_, static_cast<std::size_t>(end_ - at_)).starts_with(word);
    at_ += is ? word.size() : 0;
    return is;
  }

  // The plain string that comes, if any does.
  bool TakeString(std::string_view& string) {
    if (!Take("\"")) {
      return false;
    }
    const char* const begin = at_;
    at_ = EndOfPlain(begin, end_);
    string = {begin, static_cast<std::size_t>(at_ - begin)};
    return Take("\"");
  }

  TextMatch MatchString(std::string_view expected) {
    std::string_view string;
    return !TakeString(string) ? UNKNOWN : string == expected ? SAME : OTHER;
  }

  template <class Number>
  static TextMatch MatchRead(const char* begin, const char* end, Number expected) {
    Number read{};
    const auto [stop, error] = std::from_chars(begin, end, read);
    return error != std::errc() || stop != end ? UNKNOWN : read == expected ? SAME : OTHER;
  }

  TextMatch MatchNumber(const Value& expected) {
    const char* const begin = at_;
    bool isWhole = false;
    const char* const end = EndOfNumber(begin, end_, isWhole);
    if (end == nullptr) {
      return UNKNOWN;
    }
    at_ = end;
    if (isWhole != !expected.IsDouble()) {
      return UNKNOWN;
    }
    return !isWhole             ? MatchRead(begin, end, expected.GetDouble())
           : expected.IsInt64() ? MatchRead(begin, end, expected.GetInt64())
                                : MatchRead(begin, end, expected.GetUint64());
  }

  TextMatch MatchObject(const Value& object) {
    const char* before = "{";
    for (const auto& member : object.GetObject()) {
      std::string_view name;
      if (!Take(before)) {
        return *before == ',' && Take("}") ? OTHER : UNKNOWN;
      }
      before = ",";
      if (!TakeString(name) || name != Text(member.name) || !Take(":")) {
        return UNKNOWN;
      }
      if (const TextMatch match = Match(member.value); match != SAME) {
        return match;
      }
    }
    return Close(object.ObjectEmpty() ? "{}" : "}");
  }

  TextMatch MatchArray(const Value& array) {
    const char* before = "[";
    for (const Value& element : array.GetArray()) {
      if (!Take(before)) {
        return *before == ',' && Take("]") ? OTHER : UNKNOWN;
      }
      before = ",";
      if (const TextMatch match = Match(element); match != SAME) {
        return match;
      }
    }
    return Close(array.Empty() ? "[]" : "]");
  }

  TextMatch Close(std::string_view bracket) {
    return Take(bracket) ? SAME : bracket.size() == 1 && Take(",") ? OTHER : UNKNOWN;
  }

  const char* at_;
  const char* end_;
};

}  // namespace

TextMatch MatchText(std::string_view text, const Value& value) {
  Walk walk(text);
  const TextMatch match = walk.Match(value);
  return match == SAME && !walk.IsAtEnd() ? UNKNOWN : match;
}

}  // namespace Json
