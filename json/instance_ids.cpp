#include "json/instance_ids.h"

#include "json/utf8.h"

#include <algorithm>
#include <unordered_set>

namespace Json {

bool IsInstanceId(std::string_view text) noexcept {
  return !text.empty() && text.size() <= kMaxInstanceIdSize && Utf8::IsValid(text) &&
         !Utf8::HasControls(text);
}

bool HasGeneratedId(const Value& value) {
  if (value.IsArray()) {
    return std::any_of(value.Begin(), value.End(), HasGeneratedId);
  }
  return value.IsObject() &&
         std::any_of(value.MemberBegin(), value.MemberEnd(), [](const auto& member) {
           return Text(member.name) == kGeneratedInstanceId || HasGeneratedId(member.value);
         });
}

void ClearGeneratedIds(Value& value) {
  if (value.IsArray()) {
    for (Value& element : value.GetArray()) {
      ClearGeneratedIds(element);
    }
  } else if (value.IsObject()) {
    const auto generated = value.FindMember(kGeneratedInstanceId);
    if (generated != value.MemberEnd()) {
      value.EraseMember(generated);
    }
    for (auto& member : value.GetObject()) {
      ClearGeneratedIds(member.value);
    }
  }
}

std::optional<std::string_view> InstanceIdOf(const Value& object, std::string_view idMember) {
  const Value* id = idMember.empty() ? nullptr : FindMember(object, idMember);
  return id != nullptr && id->IsString() ? std::optional(Text(*id)) : std::nullopt;
}

std::optional<std::vector<std::string_view>> InstanceIdsOf(const Value& list,
                                                           std::string_view idMember) {
  std::vector<std::string_view> ids;
  std::unordered_set<std::string_view> known;
  ids.reserve(list.Size());
  for (const Value& element : list.GetArray()) {
    const auto id = InstanceIdOf(element, idMember);
    if (!id || !known.insert(*id).second) {
      return std::nullopt;
    }
    ids.push_back(*id);
  }
  return ids;
}

}  // namespace Json
