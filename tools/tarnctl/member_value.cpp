#include "member_value.h"

#include "failure.h"

#include <cstddef>
#include <optional>
#include <set>
#include <stdexcept>

namespace tarnctl {
namespace {

std::optional<Json> ParseAs(const std::string& text, ValueKinds kinds) {
  const ValueKinds justText(ValueKinds::kString);
  if (kinds == justText) {
    return Json(text);
  }
  try {
    Json value = ParseStrictly(text);
    if (kinds == ValueKinds(ValueKinds::kNumber) && value.is_number()) {
      return Json(value.get<double>());  // 5 as 5.0: readers of fractions refuse integers
    }
    if (kinds.Holds(ValueKinds::Of(value))) {
      return value;
    }
  } catch (const std::invalid_argument&) {
    // Not JSON: a text, where the member takes one.
  }
  return kinds.Holds(justText) ? std::optional<Json>(text) : std::nullopt;
}

[[noreturn]] void RaiseUnfit(const std::string& member, const std::string& text, ValueKinds kinds,
                             std::string pointer) {
  std::string message = "the member \"";
  message.append(member).append("\" takes ").append(kinds.Describe());
  message.append(", not \"").append(text).append("\"");
  throw ToolError(ExitCode::INVALID, std::move(message), TarnConfigStore::CS_INCORRECT_TYPE,
                  {{std::move(pointer), "expected " + kinds.Describe()}});
}

Json& Place(Json& data, const MemberPath& path, const std::string& argument) {
  Json* place = &data;
  for (const std::string& name : path) {
    if (!place->is_object() && !place->is_null()) {
      throw ToolError(ExitCode::USAGE,
                      "\"" + argument + "\" lies inside a member that was given as a whole");
    }
    place = &(*place)[name];
  }
  return *place;
}

}  // namespace

void AddMembers(Json& data, const std::vector<std::string>& arguments, const TypeSchema& schema) {
  std::set<std::string> given;
  for (const std::string& argument : arguments) {
    const std::size_t end = argument.find('=');
    if (end == std::string::npos) {
      throw ToolError(ExitCode::USAGE, "\"" + argument + "\" is not of the form MEMBER=VALUE");
    }
    const std::string member = argument.substr(0, end);
    const std::string text = argument.substr(end + 1);
    const MemberPath path = ParseMember(member);
    if (!given.insert(member).second) {
      throw ToolError(ExitCode::USAGE, "the member \"" + member + "\" is given twice");
    }
    const ValueKinds kinds = schema.KindsOf(path);
    std::optional<Json> value = ParseAs(text, kinds);
    if (!value) {
      RaiseUnfit(member, text, kinds, FormatPointer(path));
    }
    Place(data, path, argument) = std::move(*value);
  }
}

}  // namespace tarnctl
