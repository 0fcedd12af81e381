#include "json_schema/describe.h"

#include "json/near_miss.h"
#include "json/type_schema_view.h"
#include "json/utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace JsonValidator {
namespace {

constexpr std::size_t kLongestText = 60;    // bytes of a value quoted in a message
constexpr std::size_t kLongestList = 1000;  // bytes of a list in a message
constexpr int kMostLevels = 8;              // of a value written in a message
constexpr std::string_view kCut = "...";

std::string_view Shortened(std::string_view text, std::size_t most) {
  if (text.size() <= most) {
    return text;
  }
  std::size_t end = most;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80) {
    --end;  // never in the middle of a character
  }
  return text.substr(0, end);
}

std::string NumberText(const Json::Value& number) {
  if (number.IsInt64()) {
    return std::to_string(number.GetInt64());
  }
  if (number.IsUint64()) {
    return std::to_string(number.GetUint64());
  }
  const double real = number.GetDouble();
  if (!std::isfinite(real)) {
    return std::isnan(real) ? "something that is not a number" : "an infinite number";
  }
  std::array<char, 32> text{};
  const std::to_chars_result end = std::to_chars(text.data(), text.data() + text.size(), real);
  return std::string(text.data(), end.ptr);
}

std::string Suggestion(const Json::NearMiss& nearest) {
  return nearest.Best().empty() ? std::string() : "; did you mean " + Quoted(nearest.Best()) + "?";
}

bool IsShallow(const Json::Value& value, int levels) {
  const auto isShallow = [&](const Json::Value& inside) { return IsShallow(inside, levels - 1); };
  if (value.IsArray()) {
    return levels > 0 && std::all_of(value.Begin(), value.End(), isShallow);
  }
  return !value.IsObject() ||
         (levels > 0 && std::all_of(value.MemberBegin(), value.MemberEnd(),
                                    [&](const auto& member) { return isShallow(member.value); }));
}

/// \param levels  what is nested deeper is not written
std::uint64_t StepsToWrite(const Json::Value& value, int levels) {
  constexpr std::uint64_t kStepsOfAValue = 16;
  std::uint64_t steps = kStepsOfAValue;
  if (value.IsString()) {
    steps += value.GetStringLength();
  } else if (levels > 0 && value.IsArray()) {
    for (const Json::Value& element : value.GetArray()) {
      steps += StepsToWrite(element, levels - 1);
    }
  } else if (levels > 0 && value.IsObject()) {
    for (const auto& member : value.GetObject()) {
      steps += member.name.GetStringLength() + StepsToWrite(member.value, levels - 1);
    }
  }
  return steps;
}

}  // namespace

std::string Quoted(std::string_view text) {
  const std::string repaired = Json::Utf8::Repaired(Shortened(text, kLongestText));
  Json::Buffer buffer;
  rapidjson::Writer<Json::Buffer, Json::Encoding, Json::Encoding, Json::SystemAllocator> writer(
      buffer);
  writer.String(repaired.data(), static_cast<rapidjson::SizeType>(repaired.size()));
  std::string quoted(buffer.GetString(), buffer.GetSize());
  if (text.size() > kLongestText) {
    quoted.insert(quoted.size() - 1, kCut);
  }
  return quoted;
}

std::string Found(const Json::Value& value) {
  switch (value.GetType()) {
    case rapidjson::kNullType:
      return "null";
    case rapidjson::kFalseType:
      return "false";
    case rapidjson::kTrueType:
      return "true";
    case rapidjson::kObjectType:
      return value.ObjectEmpty() ? "an empty object" : "an object";
    case rapidjson::kArrayType:
      return value.Empty() ? "an empty array" : "an array";
    case rapidjson::kStringType:
      return "the text " + Quoted(Json::Text(value));
    default:
      return NumberText(value);
  }
}

std::string Literal(const Json::Value& value, Budget& budget) {
  return budget.Take(StepsToWrite(value, kMostLevels)) ? Literal(value) : Found(value);
}

std::string Literal(const Json::Value& value) {
  if (value.IsString()) {
    return Quoted(Json::Text(value));
  }
  std::string text;
  if ((!value.IsObject() && !value.IsArray()) || !IsShallow(value, kMostLevels) ||
      !Json::Serialize(value, text)) {
    return Found(value);
  }
  const std::string_view shortened = Shortened(text, kLongestText);
  return shortened.size() == text.size() ? text : std::string(shortened) + std::string(kCut);
}

std::string ExpectedTypes(TypeSet types) {
  constexpr std::pair<TypeSet, std::string_view> kNames[] = {
      {kTextType, "a text"},        {kNumberType, "a number"},
      {kIntegerType, "an integer"}, {kBooleanType, "true or false"},
      {kArrayType, "an array"},     {kObjectType, "an object"},
      {kNullType, "null"}};
  if (types == kAnyType) {
    return "any value";
  }
  std::vector<std::string> names;
  for (const auto& [type, name] : kNames) {
    // Every integer is a number, too.
    if ((types & type) != 0 && !(type == kIntegerType && (types & kNumberType) != 0)) {
      names.emplace_back(name);
    }
  }
  return Joined(names, "or");
}

std::string MissingMember(std::string_view name) {
  return "member " + Quoted(name) + " is required";
}

std::string Count(std::uint64_t count, std::string_view noun) {
  return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

std::string Listed(const std::vector<std::string>& items) {
  return Joined(items, {});
}

std::string Joined(const std::vector<std::string>& items, std::string_view word) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (text.size() + items[i].size() > kLongestList) {
      return (text.empty() ? std::string(Shortened(items[i], kLongestList)) : text + ", ")
          .append(kCut);
    }
    if (i > 0 && i + 1 == items.size() && !word.empty()) {
      text.append(" ").append(word).append(" ");
    } else {
      text += i > 0 ? ", " : "";
    }
    text += items[i];
  }
  return text;
}

std::string KnownMembers(std::string_view name, const std::vector<const ObjectRules*>& schemas,
                         bool suggests) {
  std::vector<std::string> known;
  std::size_t length = 0;
  Json::NearMiss nearest(name);
  for (const ObjectRules* schema : schemas) {
    for (const Property& property : schema->properties.All()) {
      if (length > kLongestList && !suggests) {
        break;
      }
      if (property.node->refusesAll || property.name == Json::kGeneratedInstanceId) {
        continue;
      }
      if (suggests) {
        nearest.Offer(property.name);
      }
      if (length <= kLongestList &&
          std::find(known.begin(), known.end(), property.name) == known.end()) {
        known.emplace_back(property.name);
        length += property.name.size() + 1;
      }
    }
  }
  return (known.empty() ? "no members are" : "known members: " + Listed(known)) +
         Suggestion(nearest);
}

std::string NotAmong(const std::vector<const Json::Value*>& allowed, const Json::Value& value,
                     bool suggests, Budget& budget) {
  std::vector<std::string> texts;
  std::size_t length = 0;
  for (std::size_t i = 0; i < allowed.size() && length <= kLongestList; ++i) {
    texts.push_back(Literal(*allowed[i], budget));
    length += texts.back().size() + 1;
  }
  const std::string_view given = value.IsString() ? Json::Text(value) : std::string_view();
  Json::NearMiss nearest(given);
  for (std::size_t i = 0; i < allowed.size() && suggests && allowed.size() > 1; ++i) {
    if (allowed[i]->IsString()) {
      nearest.Offer(Json::Text(*allowed[i]));
    }
  }
  return (allowed.size() == 1 ? "expected " : "expected one of ") + Listed(texts) + ", found " +
         Found(value) + Suggestion(nearest);
}

std::string PatternInWords(const TextRules& rules) {
  constexpr std::size_t kLongestMeaning = 200;
  std::string words = "the pattern " + rules.pattern->Text();
  if (!rules.meaning.empty()) {
    const std::string_view meaning = Shortened(rules.meaning, kLongestMeaning);
    words.append(" (").append(meaning);
    words.append(meaning.size() < rules.meaning.size() ? kCut : "").append(")");
  }
  return words;
}

}  // namespace JsonValidator
