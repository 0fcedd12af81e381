#include "json/instance_ids.h"

#include "json/utf8.h"

namespace Json {

bool IsInstanceId(std::string_view text) noexcept {
  return !text.empty() && text.size() <= kMaxInstanceIdSize && Utf8::IsValid(text) &&
         !Utf8::HasControls(text);
}

}  // namespace Json
