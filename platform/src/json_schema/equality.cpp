#include "json_schema/equality.h"

#include "json_schema/number.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <unordered_map>

namespace JsonValidator {
namespace {

bool EqualObjects(const Json::Value& a, const Json::Value& b) {
  if (a.MemberCount() != b.MemberCount()) {
    return false;
  }
  return std::all_of(a.MemberBegin(), a.MemberEnd(), [&](const auto& member) {
    const Json::Value* other = Json::FindMember(b, Json::Text(member.name));
    return other != nullptr && Equal(member.value, *other);
  });
}

/// Equal values have equal hashes.
std::size_t Hash(const Json::Value& value) {
  constexpr std::size_t kSpread = 0x9E3779B97F4A7C15U;
  std::size_t hash = static_cast<std::size_t>(value.GetType()) * kSpread;
  if (value.IsNumber()) {
    // As a double, so that 1 and 1.0 meet; integers that round to the same double are told apart by
    // Equal.
    const double real = value.GetDouble();
    return hash ^ std::hash<double>{}(real == 0 ? 0.0 : real);
  }
  if (value.IsString()) {
    return hash ^ std::hash<std::string_view>{}(Json::Text(value));
  }
  if (value.IsArray()) {
    for (const Json::Value& element : value.GetArray()) {
      hash = (hash ^ Hash(element)) * kSpread;
    }
  } else if (value.IsObject()) {
    for (const auto& member : value.GetObject()) {  // in any order
      hash +=
          (std::hash<std::string_view>{}(Json::Text(member.name)) ^ Hash(member.value)) * kSpread;
    }
  }
  return hash;
}

}  // namespace

bool Equal(const Json::Value& a, const Json::Value& b) {
  if (a.IsNumber() || b.IsNumber()) {
    return a.IsNumber() && b.IsNumber() && CompareNumbers(a, b) == 0;
  }
  if (a.GetType() != b.GetType()) {
    return false;
  }
  if (a.IsString()) {
    return Json::Text(a) == Json::Text(b);
  }
  if (a.IsArray()) {
    return std::equal(a.Begin(), a.End(), b.Begin(), b.End(), Equal);
  }
  return !a.IsObject() || EqualObjects(a, b);
}

std::optional<std::pair<std::size_t, std::size_t>> FindEqualElements(const Json::Value& array) {
  constexpr rapidjson::SizeType kFew = 8;
  if (array.Size() <= kFew) {
    for (rapidjson::SizeType i = 1; i < array.Size(); ++i) {
      for (rapidjson::SizeType j = 0; j < i; ++j) {
        if (Equal(array[i], array[j])) {
          return std::pair<std::size_t, std::size_t>(j, i);
        }
      }
    }
    return std::nullopt;
  }
  std::unordered_multimap<std::size_t, rapidjson::SizeType> seen;
  seen.reserve(array.Size());
  for (rapidjson::SizeType i = 0; i < array.Size(); ++i) {
    const std::size_t hash = Hash(array[i]);
    const auto same = seen.equal_range(hash);
    for (auto other = same.first; other != same.second; ++other) {
      if (Equal(array[i], array[other->second])) {
        return std::pair<std::size_t, std::size_t>(other->second, i);
      }
    }
    seen.emplace(hash, i);
  }
  return std::nullopt;
}

}  // namespace JsonValidator
