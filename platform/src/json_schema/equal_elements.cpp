#include "json_schema/equal_elements.h"

#include "json/equality.h"
#include "json_schema/number.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string_view>
#include <tuple>
#include <vector>

namespace JsonValidator {
namespace {

constexpr std::size_t kBytesOfAComparison = 16;
constexpr rapidjson::SizeType kMembersOfAStep = 4;

bool EqualObjects(const Json::Value& a, const Json::Value& b, Budget& budget) {
  if (a.MemberCount() != b.MemberCount()) {
    return false;
  }
  // Most often the members come in the same order.
  auto beside = b.MemberBegin();
  return std::all_of(a.MemberBegin(), a.MemberEnd(), [&](const auto& member) {
    const std::string_view name = Json::Text(member.name);
    const Json::Value* other = &(beside++)->value;
    if (Json::Text((beside - 1)->name) != name) {
      other = budget.Take(b.MemberCount() / kMembersOfAStep) ? Json::FindMember(b, name) : nullptr;
    }
    return other != nullptr && Equal(member.value, *other, budget);
  });
}

/// Both parts, each bit of either in all bits of the result.
std::uint64_t Mixed(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15U;
  std::uint64_t mixed = a * kSpread;
  mixed = (mixed ^ (mixed >> 32U)) * kSpread + b;
  mixed = (mixed ^ (mixed >> 29U)) * kSpread;
  return mixed ^ (mixed >> 32U);
}

std::uint64_t HashOfText(const Json::Value& text, Budget& budget) {
  budget.Take(text.GetStringLength() / kBytesOfAComparison);
  return std::hash<std::string_view>{}(Json::Text(text));
}

/// 1 and 1.0 have to meet, and large integers must not, as they would when taken as doubles.
std::uint64_t HashOfNumber(const Json::Value& number) {
  if (!number.IsDouble()) {
    return number.IsInt64() ? static_cast<std::uint64_t>(number.GetInt64()) : number.GetUint64();
  }
  constexpr double kPastSigned = 9223372036854775808.0;     // 2^63
  constexpr double kPastUnsigned = 18446744073709551616.0;  // 2^64
  const double real = number.GetDouble();
  if (!IsWhole(number) || real < -kPastSigned || real >= kPastUnsigned) {
    return std::hash<double>{}(real);
  }
  return real < kPastSigned ? static_cast<std::uint64_t>(static_cast<std::int64_t>(real))
                            : static_cast<std::uint64_t>(real);
}

/// Equal values have equal hashes.
std::uint64_t Hash(const Json::Value& value, Budget& budget) {
  std::uint64_t hash = value.GetType();
  if (!budget.Take(1)) {
    return hash;
  }
  if (value.IsNumber()) {
    return Mixed(hash, HashOfNumber(value));
  }
  if (value.IsString()) {
    return Mixed(hash, HashOfText(value, budget));
  }
  if (value.IsArray()) {
    for (const Json::Value& element : value.GetArray()) {
      hash = Mixed(hash, Hash(element, budget));
    }
  } else if (value.IsObject()) {
    for (const auto& member : value.GetObject()) {  // in any order
      const std::uint64_t name = HashOfText(member.name, budget);
      hash += Mixed(name, Hash(member.value, budget));
    }
  }
  return hash;
}

}  // namespace

bool Equal(const Json::Value& a, const Json::Value& b, Budget& budget) {
  if (!budget.Take(1)) {
    return false;
  }
  if (a.IsNumber() || b.IsNumber()) {
    return a.IsNumber() && b.IsNumber() && Json::CompareNumbers(a, b) == 0;
  }
  if (a.GetType() != b.GetType()) {
    return false;
  }
  if (a.IsString()) {
    return a.GetStringLength() == b.GetStringLength() &&
           budget.Take(a.GetStringLength() / kBytesOfAComparison) && Json::Text(a) == Json::Text(b);
  }
  if (a.IsArray()) {
    return std::equal(
        a.Begin(), a.End(), b.Begin(), b.End(),
        [&](const auto& one, const auto& other) { return Equal(one, other, budget); });
  }
  return !a.IsObject() || EqualObjects(a, b, budget);
}

std::optional<std::pair<std::size_t, std::size_t>> FindEqualElements(const Json::Value& array,
                                                                     Budget& budget) {
  struct Element {
    std::uint64_t hash;
    rapidjson::SizeType index;
  };
  std::vector<Element> elements;
  constexpr rapidjson::SizeType kFew = 8;
  const bool few = array.Size() <= kFew;  // are compared with one another
  elements.reserve(array.Size());
  for (rapidjson::SizeType i = 0; i < array.Size(); ++i) {
    elements.push_back({few ? 0 : Hash(array[i], budget), i});
  }
  std::sort(elements.begin(), elements.end(), [](const Element& a, const Element& b) {
    return std::tie(a.hash, a.index) < std::tie(b.hash, b.index);
  });
  std::optional<std::pair<std::size_t, std::size_t>> first;
  std::size_t begin = 0;  // of the elements of one hash
  for (std::size_t i = 1; i < elements.size(); ++i) {
    if (elements[i].hash != elements[begin].hash) {
      begin = i;
    }
    if (first && elements[i].index >= first->second) {
      continue;
    }
    for (std::size_t j = begin; j < i; ++j) {
      if (Equal(array[elements[j].index], array[elements[i].index], budget)) {
        first.emplace(elements[j].index, elements[i].index);
        break;
      }
    }
  }
  return budget.Spent() ? std::nullopt : first;
}

}  // namespace JsonValidator
