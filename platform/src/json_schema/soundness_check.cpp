#include "json_schema/soundness_check.h"

#include "json/utf8.h"
#include "json_schema/describe.h"

#include <cmath>
#include <cstdint>
#include <string_view>
#include <unordered_set>

namespace JsonValidator {
namespace {

/// A set of names that answers for a handful of them without allocating: most objects are small,
/// and their names differ in length or at their ends.
class SeenNames {
 public:
  explicit SeenNames(const Json::Value& object) : object_(object) {}

  /// Notes the name of the member at this index, and tells whether a member before has it, too.
  bool Note(std::string_view name, rapidjson::SizeType index) {
    constexpr rapidjson::SizeType kFew = 32;
    if (index >= kFew) {
      if (many_.empty()) {
        for (rapidjson::SizeType i = 0; i < index; ++i) {
          many_.insert(NameAt(i));
        }
      }
      return !many_.insert(name).second;
    }
    const std::uint64_t bit = BitOf(name);
    const bool maybeSeen = (bits_ & bit) != 0;
    bits_ |= bit;
    for (rapidjson::SizeType i = 0; maybeSeen && i < index; ++i) {
      if (NameAt(i) == name) {
        return true;
      }
    }
    return false;
  }

 private:
  static std::uint64_t BitOf(std::string_view name) {
    if (name.empty()) {
      return 1;
    }
    const auto byte = [&](std::size_t i) {
      return std::size_t{static_cast<unsigned char>(name[i])};
    };
    const std::size_t mix =
        name.size() * 7 + byte(0) * 31 + byte(name.size() / 2) * 3 + byte(name.size() - 1);
    return std::uint64_t{1} << (mix % 64);
  }

  std::string_view NameAt(rapidjson::SizeType index) const {
    return Json::Text((object_.MemberBegin() + static_cast<std::ptrdiff_t>(index))->name);
  }

  const Json::Value& object_;
  std::uint64_t bits_ = 0;
  std::unordered_set<std::string_view> many_;
};

}  // namespace

bool SoundnessCheck::Check(const Json::Value& value) {
  return Walk(value, Place{}, 1);
}

bool SoundnessCheck::Walk(const Json::Value& value, const Place& place, std::size_t depth) {
  ++size_;
  if (value.IsString()) {
    constexpr rapidjson::SizeType kBytesOfOne = 8;
    size_ += value.GetStringLength() / kBytesOfOne;
    CheckText(value, place);
    return true;
  }
  if (value.IsDouble()) {
    if (!std::isfinite(value.GetDouble())) {
      findings_.Add(place,
                    "expected a finite number, found " + findings_.WordsOf(place).Found(value));
    }
    return true;
  }
  if (!value.IsObject() && !value.IsArray()) {
    return true;
  }
  if (depth > Json::kMaxDepth) {
    findings_.Add(place, "is nested too deeply: " + std::to_string(Json::kMaxDepth) +
                             " levels are the most that are allowed");
    return false;
  }
  std::uint32_t index = 0;
  if (value.IsArray()) {
    for (const Json::Value& element : value.GetArray()) {
      if (!Walk(element, Place{&place, nullptr, index++}, depth + 1)) {
        return false;
      }
    }
    return true;
  }
  if (uniqueNames_ && value.MemberCount() > 1) {
    CheckNamesAreUnique(value, place);
  }
  for (const auto& member : value.GetObject()) {
    const Place memberPlace{&place, &member.name, index++};
    CheckName(member.name, memberPlace);
    if (!Walk(member.value, memberPlace, depth + 1)) {
      return false;
    }
  }
  return true;
}

void SoundnessCheck::CheckText(const Json::Value& text, const Place& place) {
  if (!Json::Utf8::IsValid(Json::Text(text))) {
    textsAreSound_ = false;
    findings_.Add(place, findings_.WordsOf(place).Text(Json::Text(text)) + " is not valid UTF-8");
  }
}

void SoundnessCheck::CheckName(const Json::Value& name, const Place& member) {
  if (!Json::Utf8::IsValid(Json::Text(name))) {
    textsAreSound_ = false;
    findings_.Add(*member.parent, "the member name " +
                                      findings_.WordsOf(member).Name(Json::Text(name)) +
                                      " is not valid UTF-8");
  }
}

void SoundnessCheck::CheckNamesAreUnique(const Json::Value& object, const Place& place) {
  SeenNames seen(object);
  rapidjson::SizeType index = 0;
  for (const auto& member : object.GetObject()) {
    if (seen.Note(Json::Text(member.name), index)) {
      const Place memberPlace{&place, &member.name, index};
      findings_.Add(memberPlace, findings_.WordsOf(memberPlace).Member(Json::Text(member.name)) +
                                     " is given twice");
    }
    ++index;
  }
}

}  // namespace JsonValidator
