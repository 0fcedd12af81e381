#include "schema/type_file_findings.h"

#include "platform/json_validator.h"

#include <algorithm>

namespace TypeFiles {
namespace {

std::string_view TextOf(const Json::Value& result, const char* name) {
  const Json::Value* text = Json::FindMember(result, name);
  return text != nullptr && text->IsString() ? Json::Text(*text) : std::string_view();
}

// The validator calls the root "/", which in the middle of a pointer would be a member without a
// name.
std::string Join(std::string_view pointer, std::string_view field) {
  std::string joined(pointer);
  if (field != "/") {
    joined.append(field);
  }
  return joined;
}

}  // namespace

void Findings::Validate(const Json::Value& schema, const Json::Value& value,
                        const std::unordered_set<int>& rules, std::string_view pointer) {
  Json::Document results;
  JsonValidator::Validate(schema, value, results, rules, std::string());
  for (const Json::Value& result : results.GetArray()) {
    Add(Join(pointer, TextOf(result, "field")), std::string(TextOf(result, "error")));
  }
}

void Findings::AddNew(const Json::Value& results, std::string_view pointer) {
  for (const Json::Value& result : results.GetArray()) {
    const std::string place = Join(pointer, TextOf(result, "field"));
    if (!AnyAt(place)) {
      Add(place, std::string(TextOf(result, "error")));
    }
  }
}

void Findings::Warn(const Json::Value& results, std::string_view pointer) {
  for (const Json::Value& result : results.GetArray()) {
    warnings_.push_back(
        {Join(pointer, TextOf(result, "field")), std::string(TextOf(result, "error"))});
  }
}

bool Findings::AnyAt(std::string_view pointer) const {
  return std::any_of(all_.begin(), all_.end(),
                     [&](const Finding& finding) { return finding.field == pointer; });
}

bool Findings::AnyAtOrUnder(std::string_view pointer) const {
  return std::any_of(all_.begin(), all_.end(), [&](const Finding& finding) {
    const std::string_view field = finding.field;
    return field.substr(0, pointer.size()) == pointer &&
           (field.size() == pointer.size() || field[pointer.size()] == '/');
  });
}

}  // namespace TypeFiles
