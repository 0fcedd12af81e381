#include "json_schema/soundness_check.h"

#include "json/seen_names.h"
#include "json/utf8.h"
#include "json_schema/describe.h"

#include <cmath>

namespace JsonValidator {

bool SoundnessCheck::Check(const Json::Value& value) {
  return Walk(value, Place{}, 1);
}

bool SoundnessCheck::Walk(const Json::Value& value, const Place& place, std::size_t depth) {
  ++size_;
  if (value.IsString()) {
    constexpr rapidjson::SizeType kBytesOfOne = 8;
    size_ += value.GetStringLength() / kBytesOfOne;
    if (!Json::Utf8::IsValid(Json::Text(value))) {
      NoteText(value, place);
    }
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
    if (!Json::Utf8::IsValid(Json::Text(member.name))) {
      NoteName(memberPlace);
    }
    if (!Walk(member.value, memberPlace, depth + 1)) {
      return false;
    }
  }
  return true;
}

void SoundnessCheck::NoteText(const Json::Value& text, const Place& place) {
  textsAreSound_ = false;
  findings_.Add(place, findings_.WordsOf(place).Text(Json::Text(text)) + " is not valid UTF-8");
}

void SoundnessCheck::NoteName(const Place& member) {
  textsAreSound_ = false;
  findings_.Add(*member.parent, "the member name " +
                                    findings_.WordsOf(member).Name(Json::Text(*member.name)) +
                                    " is not valid UTF-8");
}

void SoundnessCheck::CheckNamesAreUnique(const Json::Value& object, const Place& place) {
  Json::SeenNames seen(object);
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
