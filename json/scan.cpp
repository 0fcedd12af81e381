#include "json/scan.h"

#include "json/exponents.h"
#include "json/number_text.h"
#include "json/plain_reader.h"
#include "json/text_stream.h"
#include "json/utf8.h"

namespace Json {
namespace {

// Takes no more than Parse does, and leaves it what Parse has to look at twice.
class Scanner {
 public:
  explicit Scanner(MemberReceiver& receiver) : receiver_(receiver) {}
  bool Null() { return Scalar(Value()); }
  bool Bool(bool value) { return Scalar(Value(value)); }
  bool Number(std::string_view text, bool isInteger) {
    if (!wanted_ && NumberText::SurelyFits(text, isInteger)) {
      return depth_ > 0;
    }
    const NumberText number(text, isInteger);
    return number.GetKind() != NumberText::Kind::TOO_LARGE && number.HandOn(*this);
  }
  // Of the number's text.
  bool Int64(std::int64_t value) { return Scalar(Value(value)); }
  bool Uint64(std::uint64_t value) { return Scalar(Value(value)); }
  bool Double(double value) { return Scalar(Value(value)); }
  bool String(std::string_view text, bool /*stays*/) {
    return wanted_ ? Scalar(Reference(text)) : depth_ > 0;
  }
  bool Key(std::string_view text, bool /*stays*/) {
    wanted_ = depth_ == 1 && receiver_.Wants(text);
    return true;
  }
  bool Open(bool isObject) {
    if (wanted_) {
      receiver_.Receive(Value(isObject ? rapidjson::kObjectType : rapidjson::kArrayType));
      wanted_ = false;
    }
    return ++depth_ <= kMaxDepth && (isObject || depth_ > 1);
  }
  bool Close(bool /*isObject*/, std::size_t /*count*/) {
    --depth_;
    return true;
  }

 private:
  bool Scalar(const Value& value) {
    if (wanted_) {
      receiver_.Receive(value);
      wanted_ = false;
    }
    return depth_ > 0;
  }

  MemberReceiver& receiver_;
  std::size_t depth_ = 0;
  bool wanted_ = false;
};

// Remembers the outermost value.
struct FirstType {
  bool Null() { return Is(rapidjson::kNullType); }
  bool Bool(bool value) { return Is(value ? rapidjson::kTrueType : rapidjson::kFalseType); }
  bool Int(int /*value*/) { return Is(rapidjson::kNumberType); }
  bool Uint(unsigned /*value*/) { return Is(rapidjson::kNumberType); }
  bool Int64(std::int64_t /*value*/) { return Is(rapidjson::kNumberType); }
  bool Uint64(std::uint64_t /*value*/) { return Is(rapidjson::kNumberType); }
  bool Double(double /*value*/) { return Is(rapidjson::kNumberType); }
  bool RawNumber(const char* /*text*/, rapidjson::SizeType /*length*/, bool /*copy*/) {
    return Is(rapidjson::kNumberType);
  }
  bool String(const char* /*text*/, rapidjson::SizeType /*length*/, bool /*copy*/) {
    return Is(rapidjson::kStringType);
  }
  bool Key(const char* /*text*/, rapidjson::SizeType /*length*/, bool /*copy*/) { return true; }
  bool StartObject() { return Is(rapidjson::kObjectType); }
  bool EndObject(rapidjson::SizeType /*count*/) { return true; }
  bool StartArray() { return Is(rapidjson::kArrayType); }
  bool EndArray(rapidjson::SizeType /*count*/) { return true; }
  bool Is(rapidjson::Type found) {
    type = type ? type : found;
    return true;
  }

  std::optional<rapidjson::Type> type;
};

}  // namespace

std::optional<rapidjson::Type> TypeByGrammar(std::string_view text) {
  if (!Utf8::IsValid(text)) {
    return std::nullopt;
  }
  const std::string cut = WithoutExponents(text, Exponents::ALL);
  TextStream stream(cut);
  FirstType first;
  Reader reader;
  constexpr unsigned kFlags =
      rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;
  if (reader.Parse<kFlags>(stream, first).IsError() || stream.Tell() != cut.size()) {
    return std::nullopt;
  }
  return first.type;
}

bool ScanMembers(std::string_view text, MemberReceiver& receiver) {
  Scanner scanner(receiver);
  return PlainReader(text, scanner).Read();
}

}  // namespace Json
