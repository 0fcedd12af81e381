#include "json/scan.h"

#include "json/escapes.h"
#include "json/exponents.h"
#include "json/number_text.h"
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
  bool RawNumber(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    const NumberText number({text, length});
    return number.GetKind() != NumberText::Kind::TOO_LARGE && number.HandOn(*this);
  }
  // Of the number's text.
  bool Int64(std::int64_t value) { return Scalar(Value(value)); }
  bool Uint64(std::uint64_t value) { return Scalar(Value(value)); }
  bool Double(double value) { return Scalar(Value(value)); }
  // The reader hands every number on as its text.
  bool Int(int /*value*/) { return false; }
  bool Uint(unsigned /*value*/) { return false; }
  bool String(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    return !wanted_ || Scalar(Reference({text, length}));
  }
  bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    wanted_ = depth_ == 1 && receiver_.Wants({text, length});
    return true;
  }
  bool StartObject() { return Enter(rapidjson::kObjectType); }
  bool EndObject(rapidjson::SizeType /*count*/) { return Leave(); }
  bool StartArray() { return depth_ > 0 && Enter(rapidjson::kArrayType); }
  bool EndArray(rapidjson::SizeType /*count*/) { return Leave(); }

 private:
  bool Scalar(const Value& value) {
    if (wanted_) {
      receiver_.Receive(value);
      wanted_ = false;
    }
    return depth_ > 0;
  }
  bool Enter(rapidjson::Type type) {
    if (wanted_) {
      receiver_.Receive(Value(type));
      wanted_ = false;
    }
    return ++depth_ <= kMaxDepth;
  }
  bool Leave() {
    --depth_;
    return true;
  }

  MemberReceiver& receiver_;
  std::size_t depth_ = 0;
  bool wanted_ = false;
};

}  // namespace
}  // namespace Json

TARN_PASS_PLAIN_VALUES(Json::Scanner)

namespace Json {
namespace {

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
  CopiedTextStream stream{TextStream(cut)};
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
  if (!Utf8::IsValid(text)) {
    return false;
  }
  UnwatchedTextStream stream(text);
  Scanner scanner(receiver);
  Reader reader;
  const auto outcome = reader.Parse<rapidjson::kParseNumbersAsStringsFlag>(stream, scanner);
  // The reader takes a NUL for the end of the text.
  return !outcome.IsError() && stream.Tell() == text.size() &&
         FindLoneSurrogate(text) == std::string_view::npos;
}

}  // namespace Json
