#include "validation/schema_references.h"

#include "validation/characters.h"
#include "validation/uri_resolution.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>
#include <vector>

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

void SchemaReferences::FindName(Part& part) {
  const Json::Value* id = Json::FindMember(*part.value, "$id");
  const Json::Value* reference = Json::FindMember(*part.value, "$ref");
  if (reference != nullptr) {
    bases_[reference] = part.base;
  } else if (id != nullptr && id->IsString()) {
    hasNames_ = true;
    std::string name = ResolveUri(part.base, Json::Text(*id));
    if (name.ends_with('#')) {
      name.pop_back();
    }
    if (name.find('#') == std::string::npos) {
      part.base = name;
    }
    named_.emplace(std::move(name), part.value);
  }
}

void SchemaReferences::FindNames() {
  searched_ = true;
  std::vector<Part> parts{{&schema_, {}}};
  while (!parts.empty()) {
    Part part = std::move(parts.back());
    parts.pop_back();
    if (part.value->IsArray()) {
      for (const Json::Value& element : part.value->GetArray()) {
        parts.push_back({&element, part.base});
      }
    } else if (part.value->IsObject()) {
      FindName(part);
      for (const auto& member : part.value->GetObject()) {
        // Values, not schemas.
        if (Json::Text(member.name) != "const" && Json::Text(member.name) != "enum") {
          parts.push_back({&member.value, part.base});
        }
      }
    }
  }
}

const Json::Value* SchemaReferences::Resolve(const Json::Value& reference, std::string& fault) {
  if (!searched_) {
    FindNames();
  }
  const std::string uri = hasNames_ ? ResolveUri(bases_[&reference], Json::Text(reference))
                                    : std::string(Json::Text(reference));
  const std::size_t hash = std::min(uri.find('#'), uri.size());
  const Json::Value* document = &schema_;
  if (hash > 0) {
    const auto named = named_.find(uri.substr(0, hash));
    document = named != named_.end() ? named->second : nullptr;
  }
  if (document == nullptr) {
    fault = "leads outside the schema";
    return nullptr;
  }
  const std::string fragment =
      PercentDecoded(std::string_view(uri).substr(std::min(hash + 1, uri.size())));
  const Json::Value* target = nullptr;
  if (fragment.empty() || fragment.front() == '/') {
    target = Follow(*document, fragment);
  } else if (const auto named = named_.find(uri); named != named_.end()) {
    target = named->second;
  }
  if (target == nullptr) {
    fault = "leads nowhere";
  }
  return target;
}

}  // namespace JsonValidator
