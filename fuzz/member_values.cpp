// MEMBER=VALUE arguments. An input is a type on a line, a byte for what null means, and an argument on
// each line.
#include "given/member_values.h"

#include "failure.h"
#include "fuzz_target.h"
#include "json/json.h"
#include "test_host.h"

#include <string>
#include <vector>

namespace Fuzz {
namespace {

using namespace tarnctl;

void CheckMember(const std::string& argument, const Json::Value& data, const TypeSchema& schema,
                 Null null) {
  const std::size_t end = argument.find('=');
  const MemberPath path = ParseMember(argument.substr(0, end));
  const Json::Value* value = &data;
  for (const std::string& name : path) {
    value = Json::FindMember(*value, name);
    Require(value != nullptr, "every argument gives its member", argument);
  }
  const std::string text = argument.substr(end + 1);
  if (null == Null::REMOVES && text == "null") {
    Require(value->IsNull(), "null removes", argument);
    return;
  }
  const ValueKinds kinds = schema.KindsOf(path);
  Require(kinds.Holds(ValueKinds::Of(*value)), "a value is of a kind that its member takes",
          argument);
  if (kinds == ValueKinds(ValueKinds::kString)) {
    Require(Json::Text(*value) == text, "a text is kept as it is", argument);
  }
}

void Run(std::string_view input) {
  TestHost& host = TestHost::Get();
  const TypeSchema schema(host.Type(TakeLine(input)));
  const Null null = TakeByte(input) % 2 == 0 ? Null::OF_TYPE : Null::REMOVES;
  std::vector<std::string> arguments;
  while (!input.empty()) {
    const std::string_view line = TakeLine(input);
    arguments.emplace_back(line.substr(0, line.find('\0')));
  }
  JsonMaker make;
  try {
    const Json::Value data = ReadMembers(arguments, schema, make, null);
    std::string text;
    Require(Json::Serialize(data, text), "what is given can be written");
    for (const std::string& argument : arguments) {
      CheckMember(argument, data, schema, null);
    }
    (void)schema.FindUndeclared(data);
  } catch (const ToolError& error) {
    Require(*error.what() != '\0', "a refusal has a reason");
  }
}

const Target target("member_values", Run);

}  // namespace
}  // namespace Fuzz
