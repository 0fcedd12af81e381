#include "validation/schema_references.h"

#include "validation/characters.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <system_error>

namespace JsonValidator {
namespace {

std::string PercentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned byte = 0;
    if (text[i] == '%' && i + 2 < text.size() && IsHexDigit(text[i + 1]) &&
        IsHexDigit(text[i + 2])) {
      std::from_chars(text.data() + i + 1, text.data() + i + 3, byte, 16);
      decoded += static_cast<char>(byte);
      i += 2;
    } else {
      decoded += text[i];
    }
  }
  return decoded;
}

std::string UnescapedStep(std::string_view step) {
  std::string name;
  for (std::size_t i = 0; i < step.size(); ++i) {
    const bool escape = step[i] == '~' && i + 1 < step.size();
    i += static_cast<std::size_t>(escape);
    name += !escape ? step[i] : step[i] == '0' ? '~' : '/';
  }
  return name;
}

const Json::Value* Element(const Json::Value& array, std::string_view index) {
  rapidjson::SizeType at = 0;
  const std::from_chars_result end = std::from_chars(index.data(), index.data() + index.size(), at);
  const bool sound = end.ec == std::errc() && end.ptr == index.data() + index.size() &&
                     (index.size() == 1 || index.front() != '0');
  return sound && at < array.Size() ? &array[at] : nullptr;
}

/// Follows a JSON Pointer.
const Json::Value* Follow(const Json::Value& from, std::string_view pointer) {
  const Json::Value* value = &from;
  while (!pointer.empty() && value != nullptr) {
    const std::size_t end = std::min(pointer.find('/', 1), pointer.size());
    const std::string step = UnescapedStep(pointer.substr(1, end - 1));
    value = value->IsArray() ? Element(*value, step) : Json::FindMember(*value, step);
    pointer.remove_prefix(end);
  }
  return value;
}

}  // namespace

const Json::Value* SchemaReferences::Resolve(std::string_view reference, std::string& fault) const {
  const std::size_t hash = std::min(reference.find('#'), reference.size());
  if (hash > 0) {
    fault = "leads outside the schema";
    return nullptr;
  }
  const std::string pointer =
      PercentDecoded(reference.substr(std::min(hash + 1, reference.size())));
  const Json::Value* target =
      pointer.empty() || pointer.front() == '/' ? Follow(schema_, pointer) : nullptr;
  if (target == nullptr) {
    fault = "leads nowhere";
  }
  return target;
}

}  // namespace JsonValidator
