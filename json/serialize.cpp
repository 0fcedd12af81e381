#include "json/json.h"
#include "json/plain_text.h"
#include "json/utf8.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

namespace Json {
namespace {

// RapidJSON's own digits read back as the same number but are not always the ones that were given
// (0.30000000000000004 comes out as ...07), and its check of UTF-8 reads past a text that ends in
// the middle of a character.
class TextWriter {
 public:
  /// False for what JSON cannot say.
  bool Write(const Value& value) {
    switch (value.GetType()) {
      case rapidjson::kObjectType:
        return WriteObject(value);
      case rapidjson::kArrayType:
        return WriteArray(value);
      case rapidjson::kStringType:
        return WriteString(Text(value));
      case rapidjson::kNumberType:
        return value.IsDouble()  ? WriteDouble(value.GetDouble())
               : value.IsInt64() ? WriteNumber(value.GetInt64())
                                 : WriteNumber(value.GetUint64());
      case rapidjson::kNullType:
        return Put("null");
      default:
        return Put(value.IsTrue() ? "true" : "false");
    }
  }

  std::string Take() && {
    Flush();
    return std::move(text_);
  }

 private:
  bool WriteObject(const Value& object) {
    char before = '{';
    for (const auto& member : object.GetObject()) {
      Put(before);
      if (!WriteString(Text(member.name)) || !Put(':') || !Write(member.value)) {
        return false;
      }
      before = ',';
    }
    return Put(object.ObjectEmpty() ? "{}" : "}");
  }

  bool WriteArray(const Value& array) {
    char before = '[';
    for (const Value& element : array.GetArray()) {
      Put(before);
      if (!Write(element)) {
        return false;
      }
      before = ',';
    }
    return Put(array.Empty() ? "[]" : "]");
  }

  // Most strings and names are plain throughout, and are taken over as they are.
  bool WriteString(std::string_view text) {
    constexpr std::size_t kQuotes = 2;
    if (text.size() > kRoom - kQuotes || !IsPlainAscii(text)) {
      return WriteLookingAtEach(text);
    }
    MakeRoom(text.size() + kQuotes);
    char* const to = At();
    *to = '"';
    std::memcpy(to + 1, text.data(), text.size());
    to[text.size() + 1] = '"';
    used_ += text.size() + kQuotes;
    return true;
  }

  bool WriteLookingAtEach(std::string_view text) {
    if (!Utf8::IsValid(text)) {
      return false;
    }
    const char* at = text.data();
    const char* const end = at + text.size();
    Put('"');
    while (true) {
      const char* const special = EndOfPlain(at, end);
      Put({at, static_cast<std::size_t>(special - at)});
      if (special == end) {
        return Put('"');
      }
      PutEscaped(*special);
      at = special + 1;
    }
  }

  void PutEscaped(char character) {
    constexpr std::string_view kShortEscapes = "\"\\\b\f\n\r\t";
    constexpr std::string_view kTheirLetters = "\"\\bfnrt";
    constexpr const char* kHex = "0123456789ABCDEF";
    Put('\\');
    if (const auto at = kShortEscapes.find(character); at != std::string_view::npos) {
      Put(kTheirLetters[at]);
    } else {
      const auto byte = static_cast<unsigned char>(character);
      Put("u00");
      Put(kHex[byte >> 4U]);
      Put(kHex[byte & 15U]);
    }
  }

  template <class Number>
  bool WriteNumber(Number number) {
    MakeRoom(kLongestNumber);
    used_ =
        static_cast<std::size_t>(std::to_chars(At(), At() + kLongestNumber, number).ptr - room_);
    return true;
  }

  bool WriteDouble(double number) {
    if (!std::isfinite(number)) {
      return false;
    }
    MakeRoom(kLongestNumber);
    const std::string_view digits(
        At(),
        static_cast<std::size_t>(std::to_chars(At(), At() + kLongestNumber, number).ptr - At()));
    used_ += digits.size();
    // What was floating point has to read back as floating point.
    return digits.find_first_of(".e") != std::string_view::npos || Put(".0");
  }

  bool Put(char character) {
    MakeRoom(1);
    room_[used_++] = character;
    return true;
  }

  bool Put(std::string_view text) {
    if (text.size() > kRoom) {
      Flush();
      text_.append(text);
      return true;
    }
    MakeRoom(text.size());
    std::memcpy(At(), text.data(), text.size());
    used_ += text.size();
    return true;
  }

  void MakeRoom(std::size_t size) {
    if (kRoom - used_ < size) {
      Flush();
    }
  }
  void Flush() {
    text_.append(room_, used_);
    used_ = 0;
  }
  char* At() { return room_ + used_; }

  static constexpr std::size_t kLongestNumber = 32;
  static constexpr std::size_t kRoom = 4096;  // most texts are shorter, and written in one piece
  char room_[kRoom];
  std::size_t used_ = 0;
  std::string text_;
};

}  // namespace

bool Serialize(const Value& value, std::string& text) {
  TextWriter writer;
  const bool isSound = writer.Write(value);
  text = isSound ? std::move(writer).Take() : std::string();
  return isSound;
}

std::string Quoted(std::string_view text) {
  std::string json;
  Serialize(Reference(text), json);
  return json;
}

}  // namespace Json
