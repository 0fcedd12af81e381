#include "platform/json.h"

#include <charconv>
#include <string>

namespace Json {
namespace {

// More than any schema has a use for; what goes on for longer goes round in a circle.
constexpr int kMaxReferences = 32;

int HexDigit(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// A token of a pointer in a URI fragment: percent-encoded first, then "~1" and "~0".
std::string UnescapeToken(std::string_view token) {
  std::string name;
  name.reserve(token.size());
  for (std::size_t i = 0; i < token.size(); ++i) {
    if (token[i] == '%' && i + 2 < token.size() && HexDigit(token[i + 1]) >= 0 &&
        HexDigit(token[i + 2]) >= 0) {
      name += static_cast<char>(HexDigit(token[i + 1]) * 16 + HexDigit(token[i + 2]));
      i += 2;
    } else if (token[i] == '~' && i + 1 < token.size() &&
               (token[i + 1] == '0' || token[i + 1] == '1')) {
      name += token[i + 1] == '0' ? '~' : '/';
      ++i;
    } else {
      name += token[i];
    }
  }
  return name;
}

const Value* Child(const Value& node, std::string_view token) {
  if (!node.IsArray()) {
    return FindMember(node, UnescapeToken(token));
  }
  rapidjson::SizeType index = 0;
  const auto parsed = std::from_chars(token.data(), token.data() + token.size(), index);
  const bool isIndex = parsed.ec == std::errc() && parsed.ptr == token.data() + token.size();
  return isIndex && index < node.Size() ? &node[index] : nullptr;
}

const Value* FollowOnce(const Value& root, std::string_view reference) {
  if (reference.empty() || reference.front() != '#') {
    return nullptr;
  }
  reference.remove_prefix(1);
  const Value* at = &root;
  while (at != nullptr && !reference.empty()) {
    if (reference.front() != '/') {
      return nullptr;
    }
    reference.remove_prefix(1);
    const std::string_view token = reference.substr(0, reference.find('/'));
    reference.remove_prefix(token.size());
    at = Child(*at, token);
  }
  return at;
}

}  // namespace

const Value* FollowReference(const Value& root, const Value& schema) {
  const Value* found = &schema;
  for (int hop = 0; found != nullptr && hop < kMaxReferences; ++hop) {
    const Value* reference = FindMember(*found, "$ref");
    if (reference == nullptr || !reference->IsString()) {
      return found;
    }
    found = FollowOnce(root, Text(*reference));
  }
  return nullptr;
}

}  // namespace Json
