#include "json_schema/describe.h"

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

bool IsShallow(const Json::Value& value, int levels) {
  const auto isShallow = [&](const Json::Value& inside) { return IsShallow(inside, levels - 1); };
  if (value.IsArray()) {
    return levels > 0 && std::all_of(value.Begin(), value.End(), isShallow);
  }
  return !value.IsObject() ||
         (levels > 0 && std::all_of(value.MemberBegin(), value.MemberEnd(),
                                    [&](const auto& member) { return isShallow(member.value); }));
}

}  // namespace

std::string Quoted(std::string_view text) {
  const std::string repaired = Json::Utf8::Repaired(Shortened(text, kLongestText));
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
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

std::string Literal(const Json::Value& value) {
  if (value.IsString()) {
    return Quoted(Json::Text(value));
  }
  constexpr int kMostLevels = 8;
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
  std::vector<std::string_view> names;
  for (const auto& [type, name] : kNames) {
    // Every integer is a number, too.
    if ((types & type) != 0 && !(type == kIntegerType && (types & kNumberType) != 0)) {
      names.push_back(name);
    }
  }
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    text += i == 0 ? "" : i + 1 == names.size() ? " or " : ", ";
    text += names[i];
  }
  return text;
}

std::string MissingMember(std::string_view name) {
  return "member " + Quoted(name) + " is required";
}

std::string Count(std::uint64_t count, std::string_view noun) {
  return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

std::string Listed(const std::vector<std::string>& items) {
  std::string text;
  for (const std::string& item : items) {
    if (text.size() + item.size() > kLongestList) {
      return text + ", " + std::string(kCut);
    }
    text += text.empty() ? "" : ", ";
    text += item;
  }
  return text;
}

std::string UnknownMember(std::string_view name, const std::vector<const ObjectRules*>& schemas) {
  std::vector<std::string> known;
  for (const ObjectRules* schema : schemas) {
    for (const Property& property : schema->properties.All()) {
      const std::string text = Json::Utf8::Repaired(property.name);
      if (!property.node->refusesAll && property.name != Json::kGeneratedInstanceId &&
          std::find(known.begin(), known.end(), text) == known.end()) {
        known.push_back(text);
      }
    }
  }
  return "member " + Quoted(name) + " is not known; " +
         (known.empty() ? "no members are" : "known members: " + Listed(known));
}

}  // namespace JsonValidator
