#include "json/json.h"
#include "json/plain_text.h"
#include "json/utf8.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace Json {
namespace {

using Writer = rapidjson::Writer<Buffer, Encoding, Encoding, SystemAllocator,
                                 rapidjson::kWriteValidateEncodingFlag>;

// RapidJSON's own digits read back as the same number but are not always the ones that were given
// (0.30000000000000004 comes out as ...07).
class ExactWriter : public Writer {
 public:
  using Writer::Writer;

  // Most strings and names are plain throughout, and are taken over as they are. RapidJSON's own
  // check would read past a text that ends in the middle of a character.
  bool String(const char* text, rapidjson::SizeType length, bool copy) {
    if (!Utf8::IsValid({text, length})) {
      return false;
    }
    if (EndOfPlain(text, text + length) != text + length) {
      return Writer::String(text, length, copy);
    }
    constexpr std::size_t kQuotes = 2;
    Prefix(rapidjson::kStringType);
    char* to = os_->Push(length + kQuotes);
    *to++ = '"';
    std::memcpy(to, text, length);
    to[length] = '"';
    return EndValue(true);
  }
  bool Key(const char* text, rapidjson::SizeType length, bool copy) {
    return String(text, length, copy);
  }

  bool Double(double value) {
    if (!std::isfinite(value)) {
      return false;
    }
    constexpr std::size_t kLongest = 32;
    char text[kLongest];
    char* end = std::to_chars(text, text + kLongest, value).ptr;
    if (std::string_view(text, static_cast<std::size_t>(end - text)).find_first_of(".e") ==
        std::string_view::npos) {
      // What was floating point has to read back as floating point.
      *end++ = '.';
      *end++ = '0';
    }
    return RawValue(text, static_cast<std::size_t>(end - text), rapidjson::kNumberType);
  }
};

}  // namespace

bool Serialize(const Value& value, std::string& text) {
  constexpr std::size_t kUsualSize = 1024;
  Buffer buffer(nullptr, kUsualSize);
  ExactWriter writer(buffer);
  if (!value.Accept(writer)) {
    text.clear();
    return false;
  }
  text.assign(buffer.GetString(), buffer.GetSize());
  return true;
}

std::string Quoted(std::string_view text) {
  std::string json;
  Serialize(Reference(text), json);
  return json;
}

}  // namespace Json
