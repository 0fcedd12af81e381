#include "json/escapes.h"

#include "json/text_stream.h"

namespace Json {
namespace {

struct OneString : rapidjson::BaseReaderHandler<Encoding, OneString> {
  explicit OneString(std::string& gets) : text(gets) {}
  bool Default() { return false; }
  bool String(const char* characters, rapidjson::SizeType length, bool /*copy*/) {
    text.assign(characters, length);
    return true;
  }

  std::string& text;
};

}  // namespace

bool ReadEscapes(std::string_view quoted, std::string& text) {
  TextStream stream(quoted);
  OneString string(text);
  return !Reader().Parse<rapidjson::kParseNoFlags>(stream, string).IsError();
}

std::size_t FindLoneSurrogate(std::string_view text) noexcept {
  constexpr std::size_t kShort = 2;         // "\n"
  constexpr std::size_t kLong = 6;          // "\u0041"
  constexpr std::size_t kPair = 2 * kLong;  // "\ud83d\ude00"
  const auto isOneOf = [text](std::size_t at, std::string_view characters) {
    return at < text.size() && characters.find(text[at]) != std::string_view::npos;
  };
  std::size_t at = text.find('\\');
  while (at != std::string_view::npos) {
    const bool isLong = isOneOf(at + 1, "u");
    const bool isSurrogate = isLong && isOneOf(at + 2, "dD") && !isOneOf(at + 3, "01234567");
    if (isSurrogate && isOneOf(at + 3, "cdefCDEF")) {
      return at;
    }
    at = text.find('\\', at + (isSurrogate ? kPair : isLong ? kLong : kShort));
  }
  return at;
}

}  // namespace Json
