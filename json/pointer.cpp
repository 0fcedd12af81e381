#include "json/pointer.h"

#include <charconv>

namespace Json {
namespace {

bool Unescape(std::string_view token, std::string& name) {
  name.reserve(token.size());
  for (std::size_t i = 0; i < token.size(); ++i) {
    if (token[i] != '~') {
      name += token[i];
      continue;
    }
    ++i;
    if (i == token.size() || (token[i] != '0' && token[i] != '1')) {
      return false;
    }
    name += token[i] == '0' ? '~' : '/';
  }
  return true;
}

const Value* Element(const Value& array, std::string_view index) {
  rapidjson::SizeType at = 0;
  const char* end = index.data() + index.size();
  const std::from_chars_result parsed = std::from_chars(index.data(), end, at);
  const bool sound =
      parsed.ec == std::errc() && parsed.ptr == end && (index.size() == 1 || index.front() != '0');
  return sound && at < array.Size() ? &array[at] : nullptr;
}

}  // namespace

void AppendToken(std::string& pointer, std::string_view name) {
  pointer += '/';
  for (const char c : name) {
    if (c == '~') {
      pointer += "~0";
    } else if (c == '/') {
      pointer += "~1";
    } else {
      pointer += c;
    }
  }
}

std::string PointerBelow(std::string_view pointer, std::string_view name) {
  std::string below(pointer);
  AppendToken(below, name);
  return below;
}

std::optional<std::vector<std::string>> ParsePointer(std::string_view pointer) {
  std::vector<std::string> names;
  while (!pointer.empty()) {
    if (pointer.front() != '/') {
      return std::nullopt;
    }
    pointer.remove_prefix(1);
    const std::string_view token = pointer.substr(0, pointer.find('/'));
    if (!Unescape(token, names.emplace_back())) {
      return std::nullopt;
    }
    pointer.remove_prefix(token.size());
  }
  return names;
}

const Value* FindAt(const Value& root, const std::vector<std::string>& names) {
  const Value* at = &root;
  for (const std::string& name : names) {
    at = at->IsArray() ? Element(*at, name) : FindMember(*at, name);
    if (at == nullptr) {
      return nullptr;
    }
  }
  return at;
}

}  // namespace Json
