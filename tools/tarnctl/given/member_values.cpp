#include "given/member_values.h"

#include "failure.h"
#include "given/lost_quotes.h"
#include "given/object_name.h"
#include "json/scan.h"
#include "json/secrets.h"
#include "json/utf8.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::FilterSpecObject;

/// What an argument gives to a member.
struct Assignment {
  std::string member;
  MemberPath path;
  std::string text;
  bool isHidden = false;
};

Assignment Of(const HiddenValue& hidden) {
  if (!Json::Utf8::IsValid(hidden.text)) {
    throw ToolError(ExitCode::INVALID,
                    "the value of the member \"" + hidden.member + "\" is not UTF-8",
                    TarnConfigStore::CS_JSON_PARSE_FAILED);
  }
  return {hidden.member, ParseMember(hidden.member), hidden.text, true};
}

Assignment Split(const std::string& argument) {
  const std::size_t end = argument.find('=');
  if (end == std::string::npos) {
    // The rest of a list that the shell has cut at a blank.
    const bool isRest = argument.ends_with(']') || argument.ends_with('}');
    throw ToolError(ExitCode::USAGE,
                    "\"" + argument + "\" is not of the form MEMBER=VALUE" +
                        (isRest ? " (a VALUE with blanks in it takes single quotes around it)" : ""));
  }
  if (!Json::Utf8::IsValid(argument)) {
    throw ToolError(ExitCode::INVALID, "\"" + argument.substr(0, end) + "=...\" is not UTF-8",
                    TarnConfigStore::CS_JSON_PARSE_FAILED);
  }
  std::string member = argument.substr(0, end);
  MemberPath path = ParseMember(member);
  return {std::move(member), std::move(path), argument.substr(end + 1)};
}

[[noreturn]] void RaiseGivenTwice(const std::string& member) {
  throw ToolError(ExitCode::USAGE, "the member \"" + member + "\" is given twice");
}

// Text that is JSON of such a kind, but not to be kept as it is, must not pass for plain text.
bool IsRefusedJson(const std::string& text, ValueKinds kinds) {
  const std::optional<rapidjson::Type> type = Json::TypeByGrammar(text);
  if (type == rapidjson::kNumberType) {
    return kinds.Meets(ValueKinds::kNumber);
  }
  return type && kinds.Holds(ValueKinds::Of(Json::Value(*type)));
}

std::string QuotingHint(const Assignment& given) {
  return !given.isHidden && HasLostItsQuotes(given.text)
             ? " (if the shell took its quotes away, put single ones around the value: " +
                   given.member + "='...')"
             : "";
}

[[noreturn]] void RaiseUnfit(const Assignment& given, ValueKinds kinds, bool isSecret,
                             const std::string& reason) {
  const std::string pointer = PointerTo(given.path);
  const std::string tail = reason.empty() ? "" : ": " + reason;
  throw ToolError(
      ExitCode::INVALID,
      "the member \"" + given.member + "\" takes " + kinds.Describe() + ", not " +
          (isSecret ? Json::kMask : "\"" + given.text + "\"") + tail + QuotingHint(given),
      TarnConfigStore::CS_INCORRECT_TYPE, {{pointer, "expected " + kinds.Describe() + tail}});
}

// The value at the end of the way is a secret, or lies in one, or holds some.
bool LeadsToSecrets(const MemberPath& path, const TypeSchema& schema) {
  Json::Sight sight(schema.Place());
  for (const std::string& name : path) {
    sight = sight.Member(name);
  }
  return sight.IsSecret() || sight.Place().HoldsSecrets();
}

Json::Value Read(const Assignment& given, const TypeSchema& schema, Null null, JsonMaker& make) {
  const ValueKinds kinds = schema.KindsOf(given.path);
  if (null == Null::REMOVES && given.text == "null" && !given.isHidden) {
    return Json::Value();
  }
  const ValueKinds justText(ValueKinds::kString);
  std::string reason;
  if (kinds != justText) {
    Json::Document value(&make.GetAllocator());
    const auto parsed = Json::Parse(given.text, value, Json::Origin::OUTSIDE);
    if (parsed && kinds.Holds(ValueKinds::Of(value))) {
      return std::move(static_cast<Json::Value&>(value));
    }
    const bool isSecret = given.isHidden || LeadsToSecrets(given.path, schema);
    const bool isRefused = !parsed && IsRefusedJson(given.text, kinds);
    if (isRefused || (!parsed && given.text.find_first_of("[{") == 0)) {
      reason = isSecret && parsed.forLogs != nullptr ? parsed.forLogs : parsed.Describe(given.text);
    }
    if (isRefused || !kinds.Holds(justText)) {
      RaiseUnfit(given, kinds, isSecret, reason);
    }
  }
  return make.Of(given.text);
}

// The place for a member's value among those that were given before.
Json::Value& Place(Json::Value& data, const Assignment& given, JsonMaker& make) {
  Json::Value* place = &data;
  for (const std::string& name : given.path) {
    const bool isLast = &name == &given.path.back();
    if (!place->IsObject()) {
      throw ToolError(ExitCode::USAGE, "the member \"" + given.member +
                                           "\" lies inside a member that was given as a whole");
    }
    Json::Value* member = Json::FindMember(*place, name);
    if (member == nullptr) {
      place->AddMember(make.Of(name),
                       Json::Value(isLast ? rapidjson::kNullType : rapidjson::kObjectType),
                       make.GetAllocator());
      member = &(place->MemberEnd() - 1)->value;
    } else if (isLast) {
      RaiseGivenTwice(given.member);
    }
    place = member;
  }
  return *place;
}

}  // namespace

Json::Value ReadMembers(const std::vector<std::string>& arguments, const TypeSchema& schema,
                        JsonMaker& make, Null null, const std::vector<HiddenValue>& hidden) {
  std::vector<Assignment> assignments;
  std::transform(arguments.begin(), arguments.end(), std::back_inserter(assignments), Split);
  std::transform(hidden.begin(), hidden.end(), std::back_inserter(assignments), Of);
  Json::Value data(rapidjson::kObjectType);
  std::set<std::string> members;
  for (const Assignment& given : assignments) {
    if (!members.insert(given.member).second) {
      RaiseGivenTwice(given.member);
    }
    Json::Value value = Read(given, schema, null, make);
    Place(data, given, make) = value;
  }
  return data;
}

std::vector<std::string> FindSecretsGiven(const std::vector<std::string>& arguments,
                                          const TypeSchema& schema) {
  std::vector<std::string> members;
  for (const std::string& argument : arguments) {
    Assignment given = Split(argument);
    if (!given.text.empty() && given.text != "null" && LeadsToSecrets(given.path, schema)) {
      members.push_back(std::move(given.member));
    }
  }
  return members;
}

std::shared_ptr<FilterSpecObject> MakeFilter(const ConfigStoreObjectId& type,
                                             const std::vector<std::string>& conditions) {
  const TypeSchema schema(type);
  auto filter = std::make_shared<FilterSpecObject>(type);
  if (conditions.empty()) {
    return filter;
  }
  for (const std::string& member : FindSecretsGiven(conditions, schema)) {
    Say("the secret \"" + member + "\" stood among the arguments, which every user may see");
  }
  JsonMaker make;
  const Json::Value data = ReadMembers(conditions, schema, make);
  // A condition on such a member would quietly match nothing.
  if (Findings unknown = schema.FindUndeclared(data); !unknown.empty()) {
    throw ToolError(ExitCode::INVALID, "the type " + FormatObject(type) + " has no such member",
                    TarnConfigStore::CS_GENERIC, std::move(unknown));
  }
  std::string text;
  Json::Serialize(data, text);
  filter->SetData(text.c_str());
  return filter;
}

}  // namespace tarnctl
