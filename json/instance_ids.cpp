#include "json/instance_ids.h"

#include "json/utf8.h"

namespace Json {

bool IsInstanceId(std::string_view text) noexcept {
  return !text.empty() && text.size() <= kMaxInstanceIdSize && Utf8::IsValid(text) &&
         !Utf8::HasControls(text);
}

std::optional<std::string_view> InstanceIdOf(const Value& object, std::string_view idMember) {
  const Value* id = idMember.empty() ? nullptr : FindMember(object, idMember);
  return id != nullptr && id->IsString() ? std::optional(Text(*id)) : std::nullopt;
}

}  // namespace Json
