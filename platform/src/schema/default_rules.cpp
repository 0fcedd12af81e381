#include "schema/default_rules.h"

#include "platform/json_validator.h"
#include "platform/made_once.h"

#include "json/json_doc.h"
#include "json/pointer.h"
#include "json/schema_keywords.h"
#include "json_schema/registration.h"

#include <charconv>
#include <string>
#include <unordered_set>

namespace TypeFiles {
namespace {

using Json::Keyword::kDefinitions;
using Json::Keyword::kProperties;
using TarnConfigStore::JsonDoc;

// What is asked of data that is complete.
constinit MadeOnce<const std::unordered_set<int>> wholeObjectRules;

const std::unordered_set<int>& WholeObjectRules() {
  return wholeObjectRules.Get([] {
    return std::unordered_set<int>{JsonValidator::RULE_DECLARED_MEMBERS,
                                   JsonValidator::RULE_JSON_SCHEMA,
                                   JsonValidator::RULE_INSTANCE_IDS, JsonValidator::RULE_REQUIRED};
  });
}

// A member's name that no property has.
std::string PlaceName(std::size_t index) {
  return '\x01' + std::to_string(index);
}

void AddCopy(Json::Value& object, std::string_view name, const Json::Value& value,
             Json::Allocator& allocator) {
  Json::Value copy;
  copy.CopyFrom(value, allocator);
  object.AddMember(Json::Copy(name, allocator), copy, allocator);
}

// A schema with each default's property beside the others, so that one compilation serves them all.
// What "$ref" can name stays where it was.
void BuildSchema(const Json::Value& schema, const std::vector<AnnotatedDefault>& defaults,
                 JsonDoc& into) {
  Json::Allocator& allocator = into.GetAllocator();
  Json::Value properties(rapidjson::kObjectType);
  const Json::Value* own = Json::FindMember(schema, kProperties);
  if (own != nullptr && own->IsObject()) {
    properties.CopyFrom(*own, allocator);
  }
  for (std::size_t i = 0; i < defaults.size(); ++i) {
    AddCopy(properties, PlaceName(i), *defaults[i].property, allocator);
  }
  Json::Value& root = into.GetJsonValuePtr()->SetObject();
  root.AddMember(Json::Reference(kProperties), properties, allocator);
  for (const char* keyword : {Json::Keyword::kId, kDefinitions}) {
    if (const Json::Value* value = Json::FindMember(schema, keyword)) {
      AddCopy(root, keyword, *value, allocator);
    }
  }
}

// A finding's field "/<place>/rest" becomes the pointer of the default that stands at the place,
// and the rest.
void AddFinding(const Json::Value& result, const std::vector<AnnotatedDefault>& defaults,
                Findings& findings) {
  const std::string_view field = Json::Text(result["field"]);
  std::size_t index = defaults.size();
  if (field.substr(0, 2) != "/\x01") {
    return;
  }
  const auto parsed = std::from_chars(field.data() + 2, field.data() + field.size(), index);
  if (parsed.ec == std::errc() && index < defaults.size()) {
    const std::string_view rest(parsed.ptr,
                                static_cast<std::size_t>(field.data() + field.size() - parsed.ptr));
    findings.Add(defaults[index].pointer + std::string(rest), Json::Text(result["error"]).data());
  }
}

class InstanceIds {
 public:
  InstanceIds(std::string_view idMember, Findings& findings)
      : idMember_(idMember), findings_(findings) {}

  void Check(const std::string& pointer, std::string_view id, const Json::Value& value) {
    const std::string place = pointer + "/instance";
    if (!seen_.insert(std::string(id)).second) {
      findings_.Add(place, "the file brings this instance along twice");
    }
    if (idMember_.empty()) {
      if (!id.empty()) {
        findings_.Add(place, "has to be empty: the type has no instances");
      }
      return;
    }
    if (!Json::IsInstanceId(id)) {
      findings_.Add(place, "an instance id is a text of 1 to 255 bytes without control characters");
    }
    const Json::Value* member = Json::FindMember(value, idMember_);
    if (member != nullptr && member->IsString() && Json::Text(*member) != id) {
      std::string at = pointer + "/value";
      Json::AppendToken(at, idMember_);
      findings_.Add(at, "differs from \"instance\": both hold the instance id");
    }
  }

 private:
  std::string_view idMember_;
  Findings& findings_;
  std::unordered_set<std::string> seen_;
};

}  // namespace

void CheckPropertyDefaults(const Json::Value& schema, const std::vector<AnnotatedDefault>& defaults,
                           Findings& findings) {
  if (defaults.empty()) {
    return;
  }
  JsonDoc builtSchema;
  BuildSchema(schema, defaults, builtSchema);
  JsonDoc values;
  Json::Value& object = values.GetJsonValuePtr()->SetObject();
  for (std::size_t i = 0; i < defaults.size(); ++i) {
    AddCopy(object, PlaceName(i), *defaults[i].value, values.GetAllocator());
  }
  Json::Document results;
  JsonValidator::Validate(*builtSchema.GetJsonValuePtr(), object, results, WholeObjectRules(),
                          std::string());
  for (const Json::Value& result : results.GetArray()) {
    AddFinding(result, defaults, findings);
  }
}

std::vector<ShippedObject> CheckShippedObjects(const Json::Value& file,
                                               const Json::TypeSchemaView& type,
                                               Findings& findings) {
  std::vector<ShippedObject> shipped;
  const Json::Value* defaults = Json::FindMember(file, "defaults");
  if (defaults == nullptr || !defaults->IsArray() || defaults->Empty()) {
    return shipped;
  }
  const JsonValidator::Registration compiledOnce(type);
  InstanceIds ids(type.Root().InstanceIdMember(), findings);
  for (rapidjson::SizeType i = 0; i < defaults->Size(); ++i) {
    const Json::Value* instance = Json::FindMember((*defaults)[i], "instance");
    const Json::Value* value = Json::FindMember((*defaults)[i], "value");
    if (instance == nullptr || !instance->IsString() || value == nullptr || !value->IsObject()) {
      continue;
    }
    const std::string pointer = "/defaults/" + std::to_string(i);
    ids.Check(pointer, Json::Text(*instance), *value);
    findings.Validate(type.Schema(), *value, WholeObjectRules(), pointer + "/value");
    shipped.push_back({std::string(Json::Text(*instance)), value});
  }
  return shipped;
}

}  // namespace TypeFiles
