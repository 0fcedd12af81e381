#include "json/escapes.h"
#include "json/exponents.h"
#include "json/json.h"
#include "json/number_text.h"
#include "json/plain_value.h"
#include "json/seen_names.h"
#include "json/text_stream.h"

#include <rapidjson/error/en.h>

#include <algorithm>
#include <string>
#include <unordered_set>
#include <vector>

namespace Json {
namespace {

constexpr const char* kTooLarge = "a number that is too large";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Hands the reader's events on to the document, and stops at the depth that every walk over a value
// can bear on a small stack, and at numbers that cannot be kept as they are.
class Guard {
 public:
  Guard(Document& document, Origin origin) : handler_(document), origin_(origin) {}
  bool Null() { return handler_.Null(); }
  bool Bool(bool value) { return handler_.Bool(value); }
  bool RawNumber(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    const NumberText number(std::string_view(text, length));
    tooLarge_ = number.GetKind() == NumberText::Kind::TOO_LARGE;
    tooLong_ = number.GetKind() == NumberText::Kind::LONG_INTEGER && origin_ == Origin::OUTSIDE;
    return !tooLarge_ && !tooLong_ && number.HandOn(handler_);
  }
  // The reader hands every number on as its text.
  bool Int(int /*value*/) { return false; }
  bool Uint(unsigned /*value*/) { return false; }
  bool Int64(std::int64_t /*value*/) { return false; }
  bool Uint64(std::uint64_t /*value*/) { return false; }
  bool Double(double /*value*/) { return false; }
  // The text stands where it does not stay, so it is copied whatever the reader says.
  bool String(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    return handler_.String(text, length, true);
  }
  bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    return handler_.Key(text, length, true);
  }
  /// Why it stopped.
  std::string Reason() const {
    return tooLarge_  ? kTooLarge
           : tooLong_ ? "an integer of more than 64 bits"
                      : "nested deeper than " + std::to_string(kMaxDepth) + " levels";
  }
  bool StartObject() { return Enter() && handler_.StartObject(); }
  bool EndObject(rapidjson::SizeType count) {
    --depth_;
    return handler_.EndObject(count);
  }
  bool StartArray() { return Enter() && handler_.StartArray(); }
  bool EndArray(rapidjson::SizeType count) {
    --depth_;
    return handler_.EndArray(count);
  }

 private:
  bool Enter() { return ++depth_ <= kMaxDepth; }

  Document& handler_;
  const Origin origin_;
  std::size_t depth_ = 0;
  bool tooLong_ = false;
  bool tooLarge_ = false;
};

const Value* DuplicateName(const Value& object) {
  SeenNames seen(object);
  rapidjson::SizeType index = 0;
  for (const auto& member : object.GetObject()) {
    if (seen.Note(Text(member.name), index++)) {
      return &member.name;
    }
  }
  return nullptr;
}

const Value* FindDuplicate(const Value& value) {
  if (value.IsArray()) {
    for (const Value& element : value.GetArray()) {
      if (const Value* duplicate = FindDuplicate(element)) {
        return duplicate;
      }
    }
  } else if (value.IsObject()) {
    if (const Value* duplicate = DuplicateName(value)) {
      return duplicate;
    }
    for (const auto& member : value.GetObject()) {
      if (const Value* duplicate = FindDuplicate(member.value)) {
        return duplicate;
      }
    }
  }
  return nullptr;
}

// Stops at the first name that its object has had before.
struct NamesSeen : rapidjson::BaseReaderHandler<Encoding, NamesSeen> {
  bool StartObject() {
    open.emplace_back();
    return true;
  }
  bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    return open.back().emplace(text, length).second;
  }
  bool EndObject(rapidjson::SizeType /*count*/) {
    open.pop_back();
    return true;
  }

  std::vector<std::unordered_set<std::string>> open;
};

// Where the text that has been read names a member again.
std::size_t PlaceOfDuplicate(std::string_view text) {
  const std::string cut = WithoutExponents(text, Exponents::OF_ZERO);
  TextStream stream(cut);
  NamesSeen names;
  return Reader().Parse<rapidjson::kParseNumbersAsStringsFlag>(stream, names).Offset();
}

ParseResult Failure(std::size_t offset, std::string message) {
  return {false, offset, std::move(message)};
}

constexpr const char* kNul = "a NUL byte";

// What the reader says of it is not always what is wrong.
std::string ReasonOf(const rapidjson::ParseResult& outcome, std::string_view text) {
  const std::size_t at = outcome.Offset();
  if (at == 0 && text.starts_with(kByteOrderMark)) {
    return "a byte order mark at the start";
  }
  if (at < text.size() && text[at] == '\0') {
    return kNul;
  }
  if (outcome.Code() == rapidjson::kParseErrorNumberTooBig) {
    return kTooLarge;
  }
  const bool isControl = at < text.size() && static_cast<unsigned char>(text[at]) < ' ';
  return outcome.Code() == rapidjson::kParseErrorStringEscapeInvalid && isControl
             ? "a control character in a string"
             : rapidjson::GetParseError_En(outcome.Code());
}

// Finds out the place and the reason of what is wrong.
ParseResult ParseCarefully(std::string_view text, Document& into, Origin origin) {
  constexpr unsigned kFlags =
      rapidjson::kParseValidateEncodingFlag | rapidjson::kParseNumbersAsStringsFlag;
  TextStream stream(text);
  rapidjson::ParseResult outcome;
  std::string stopped;
  into.SetNull();
  auto generate = [&](Document& document) {
    Reader reader;
    Guard guard(document, origin);
    outcome = reader.Parse<kFlags>(stream, guard);
    if (outcome.Code() == rapidjson::kParseErrorTermination) {
      stopped = guard.Reason();
    }
    return !outcome.IsError();
  };
  into.Populate(generate);
  if (outcome.IsError()) {
    into.SetNull();
    return Failure(outcome.Offset(), outcome.Code() == rapidjson::kParseErrorTermination
                                         ? std::move(stopped)
                                         : ReasonOf(outcome, text));
  }
  // The reader takes a NUL for the end of the text.
  if (stream.Tell() != text.size()) {
    into.SetNull();
    return Failure(stream.Tell(), kNul);
  }
  if (const std::size_t at = FindLoneSurrogate(text); at != std::string_view::npos) {
    into.SetNull();
    return Failure(
        at, rapidjson::GetParseError_En(rapidjson::kParseErrorStringUnicodeSurrogateInvalid));
  }
  return {};
}

// The careful reader takes some exponents for too large, and is given the text without.
ParseResult ParseText(std::string_view text, Document& into, Origin origin) {
  return ReadPlain(text, origin, into, into.GetAllocator())
             ? ParseResult()
             : ParseCarefully(WithoutExponents(text, Exponents::OF_ZERO), into, origin);
}

}  // namespace

ParseResult Parse(std::string_view text, Document& into, Origin origin) {
  ParseResult result = ParseText(text, into, origin);
  if (origin == Origin::STORED) {
    return result;
  }
  if (const Value* name = result ? FindDuplicate(into) : nullptr) {
    std::string message = "member \"" + std::string(Text(*name)) + "\" is named twice";
    into.SetNull();
    return {false, PlaceOfDuplicate(text), std::move(message), "a member is named twice"};
  }
  return result;
}

ParseResult::Place ParseResult::PlaceIn(std::string_view text) const {
  const std::string_view before = text.substr(0, offset);
  const auto lines = std::count(before.begin(), before.end(), '\n');
  const std::size_t lineEnd = before.rfind('\n');
  return {static_cast<std::size_t>(lines) + 1,
          lineEnd == std::string_view::npos ? before.size() + 1 : before.size() - lineEnd};
}

std::string ParseResult::Describe(std::string_view text) const {
  const auto [line, column] = PlaceIn(text);
  return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + message;
}

const Value* FindMember(const Value& object, std::string_view name) {
  if (!object.IsObject()) {
    return nullptr;
  }
  for (auto member = object.MemberBegin(); member != object.MemberEnd(); ++member) {
    if (Text(member->name) == name) {
      return &member->value;
    }
  }
  return nullptr;
}

bool IsTrue(const Value& object, std::string_view name) {
  const Value* member = FindMember(object, name);
  return member != nullptr && member->IsTrue();
}

}  // namespace Json
