#include "floor_json.h"

#include "json/utf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <system_error>

namespace Benchmarks {
namespace {

// Every stack and every growing block of a parse lies in memory that the thread keeps.
using PlainDocument = rapidjson::GenericDocument<Json::Encoding, Json::Allocator, Json::Allocator>;

constexpr std::size_t kStack = 4096;
constexpr std::size_t kChunk = 512;
constexpr std::size_t kHeader = 32;  // no less than a pool's own

Json::SystemAllocator& System() {
  static Json::SystemAllocator allocator;
  return allocator;
}

// Makes the values of a document. The name or text ends in a quote that has been read: a NUL takes its place.
struct Builder {
  PlainDocument& document;
  std::size_t depth = 0;

  static const char* Ended(std::string_view text) {
    const_cast<char*>(text.data())[text.size()] = '\0';  // the room is the caller's
    return text.data();
  }
  bool Null() { return document.Null(); }
  bool Bool(bool value) { return document.Bool(value); }
  bool Integer(std::string_view text) {
    std::int64_t value = 0;
    return std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc() &&
           document.Int64(value);
  }
  bool Real(std::string_view text) {
    double value = 0;
    return std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc() &&
           document.Double(value);
  }
  bool String(std::string_view text) {
    return document.String(Ended(text), static_cast<rapidjson::SizeType>(text.size()), false);
  }
  bool Key(std::string_view text) { return String(text); }
  bool Open(bool isObject) {
    return ++depth <= Json::kMaxDepth &&
           (isObject ? document.StartObject() : document.StartArray());
  }
  bool Close(bool isObject, std::size_t count) {
    --depth;
    const auto size = static_cast<rapidjson::SizeType>(count);
    return isObject ? document.EndObject(size) : document.EndArray(size);
  }
};

}  // namespace

std::size_t RoomForText(std::string_view text) {
  constexpr std::size_t kAlignment = alignof(Json::Value);
  return (text.size() + kAlignment) & ~(kAlignment - 1);
}

std::size_t RoomForValues(std::string_view text) {
  // A member takes two values and an element one; of the commas, all but one for each object and array
  // stand before one of them. What stands in strings makes it a little more.
  constexpr std::size_t kBlock =
      255;  // what a byte can count: the compiler makes a wide loop of it
  std::size_t values = 0;
  for (; !text.empty(); text.remove_prefix(std::min(kBlock, text.size()))) {
    std::uint8_t ofBlock = 0;
    for (const char character : text.substr(0, kBlock)) {
      const bool counts = (character == ':') | (character == ',') | ((character | 0x20) == '{');
      ofBlock = static_cast<std::uint8_t>(ofBlock + (counts ? 1 : 0));
    }
    values += ofBlock;
  }
  return sizeof(Json::Value) * values + kHeader;
}

Json::Value ParseInto(std::string_view text, char* room, Json::Allocator& pool) {
  alignas(std::max_align_t) thread_local char scratch[4 * kStack];
  thread_local Json::Allocator stack(scratch, sizeof scratch, kChunk, &System());
  std::memcpy(room, text.data(), text.size());
  room[text.size()] = '\0';
  if (Json::Utf8::IsValid(text)) {
    PlainDocument plain(&pool, kStack, &stack);
    bool done = false;
    auto read = [&](PlainDocument& document) {
      Builder builder{document};
      done = PlainReader<Builder>({room, text.size()}, builder).Read();
      return done;
    };
    plain.Populate(read);
    stack.Clear();
    if (done) {
      return std::move(static_cast<Json::Value&>(plain));
    }
  }
  Json::Document careful(&pool, kStack, &System());
  if (!Json::Parse(text, careful)) {
    throw std::runtime_error("floor: a text that is not JSON");
  }
  return std::move(static_cast<Json::Value&>(careful));
}

Json::Value& ScratchValue::Parse(std::string_view text) {
  value_.SetNull();
  const std::size_t room = RoomForText(text);
  Reserve(room + RoomForValues(text));
  pool_.emplace(memory_.get() + room, capacity_ - room, kChunk, &System());
  value_ = ParseInto(text, memory_.get(), *pool_);
  return value_;
}

void ScratchValue::Reserve(std::size_t size) {
  if (capacity_ < size) {
    pool_.reset();
    capacity_ = 2 * size;
    memory_ = std::make_unique<char[]>(capacity_);
  }
}

std::string_view TextMaker::Make(const Json::Value& value) {
  used_ = 0;
  PutValue(value);
  return {text_.get(), used_};
}

char* TextMaker::Room(std::size_t size) {
  if (capacity_ - used_ < size) {
    capacity_ = 2 * (used_ + size);
    auto grown = std::make_unique<char[]>(capacity_);
    if (used_ > 0) {
      std::memcpy(grown.get(), text_.get(), used_);
    }
    text_ = std::move(grown);
  }
  return text_.get() + used_;
}

void TextMaker::Put(std::string_view text) {
  std::memcpy(Room(text.size()), text.data(), text.size());
  used_ += text.size();
}

void TextMaker::PutString(const Json::Value& value) {
  const std::string_view text = Json::Text(value);
  const char* const end = text.data() + text.size();
  if (Json::EndOfPlain(text.data(), end) != end || !Json::Utf8::IsValid(text)) {
    const std::string quoted = Json::Quoted(text);
    if (quoted.empty()) {
      throw std::runtime_error("floor: data that is not UTF-8");
    }
    Put(quoted);
    return;
  }
  PutQuoted(text);
}

void TextMaker::PutQuoted(std::string_view plain) {
  char* to = Room(plain.size() + 2);
  *to++ = '"';
  std::memcpy(to, plain.data(), plain.size());
  to[plain.size()] = '"';
  used_ += plain.size() + 2;
}

void TextMaker::PutLine(std::size_t blanks) {
  char* const to = Room(blanks + 1);
  *to = '\n';
  std::memset(to + 1, ' ', blanks);
  used_ += blanks + 1;
}

template <class Number>
void TextMaker::PutNumber(Number value) {
  constexpr std::size_t kLongest = 32;
  char* const to = Room(kLongest);
  used_ += static_cast<std::size_t>(std::to_chars(to, to + kLongest, value).ptr - to);
}

void TextMaker::PutDouble(double value) {
  if (!std::isfinite(value)) {
    throw std::runtime_error("floor: a number that JSON cannot say");
  }
  const std::size_t begin = used_;
  PutNumber(value);
  if (std::string_view(text_.get() + begin, used_ - begin).find_first_of(".e") ==
      std::string_view::npos) {
    Put(".0");
  }
}

void TextMaker::PutValue(const Json::Value& value) {
  switch (value.GetType()) {
    case rapidjson::kObjectType: {
      char before = '{';
      for (const auto& member : value.GetObject()) {
        Put(before);
        PutString(member.name);
        Put(':');
        PutValue(member.value);
        before = ',';
      }
      Put(value.ObjectEmpty() ? "{}" : "}");
      break;
    }
    case rapidjson::kArrayType: {
      char before = '[';
      for (const Json::Value& element : value.GetArray()) {
        Put(before);
        PutValue(element);
        before = ',';
      }
      Put(value.Empty() ? "[]" : "]");
      break;
    }
    case rapidjson::kStringType:
      return PutString(value);
    case rapidjson::kNumberType:
      return value.IsInt64()    ? PutNumber(value.GetInt64())
             : value.IsUint64() ? PutNumber(value.GetUint64())
                                : PutDouble(value.GetDouble());
    case rapidjson::kNullType:
      return Put("null");
    default:
      Put(value.IsTrue() ? "true" : "false");
  }
}

}  // namespace Benchmarks
