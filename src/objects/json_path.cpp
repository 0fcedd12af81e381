#include "objects/json_path.h"

#include "platform/generated_instance_id.h"

#include "objects/argument_errors.h"

#include <charconv>
#include <string_view>

namespace TarnConfigStore {
namespace {

void CheckPointer(const std::string& pointer) {
  bool valid = pointer.empty() || pointer.front() == '/';
  for (std::size_t at = pointer.find('~'); at != std::string::npos;
       at = pointer.find('~', at + 1)) {
    valid = valid && at + 1 < pointer.size() && (pointer[at + 1] == '0' || pointer[at + 1] == '1');
  }
  if (!valid) {
    ThrowArgument("Not a JSON Pointer: " + pointer);
  }
}

std::string Unescaped(std::string_view token) {
  std::string name;
  name.reserve(token.size());
  for (std::size_t i = 0; i < token.size(); ++i) {
    name += token[i] != '~' ? token[i] : token[++i] == '0' ? '~' : '/';
  }
  return name;
}

const Json::Value* Element(const Json::Value& array, std::string_view token) {
  const bool canonical = token == "0" || token.front() != '0';
  rapidjson::SizeType index = 0;
  const char* end = token.data() + token.size();
  const auto parsed = std::from_chars(token.data(), end, index);
  const bool isIndex = canonical && parsed.ec == std::errc() && parsed.ptr == end;
  return isIndex && index < array.Size() ? &array[index] : nullptr;
}

const Json::Value* Child(const Json::Value& node, std::string_view token) {
  if (node.IsArray()) {
    return token.empty() ? nullptr : Element(node, token);
  }
  const std::string name = Unescaped(token);
  return name == kGeneratedInstanceIdMember ? nullptr : Json::FindMember(node, name);
}

}  // namespace

const Json::Value* FindPath(const Json::Value& root, const std::string& pointer) {
  CheckPointer(pointer);
  const Json::Value* at = &root;
  std::string_view rest = pointer;
  while (at != nullptr && !rest.empty()) {
    rest.remove_prefix(1);
    const std::string_view token = rest.substr(0, rest.find('/'));
    rest.remove_prefix(token.size());
    at = Child(*at, token);
  }
  return at;
}

}  // namespace TarnConfigStore
