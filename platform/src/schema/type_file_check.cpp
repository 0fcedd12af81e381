#include "platform/json_validator.h"
#include "platform/type_files.h"

#include "json/schema_keywords.h"
#include "json/type_schema_view.h"
#include "json_schema/schema_check.h"
#include "schema/annotation_rules.h"
#include "schema/default_rules.h"
#include "schema/meta_schema.h"
#include "schema/type_file_findings.h"

#include <algorithm>
#include <unordered_set>

namespace TypeFiles {
namespace {

using TarnConfigStore::JsonDoc;

bool IsName(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_';
  });
}

// Reads a text of the file's head. Where it is missing or no text, the meta-schema has said so.
void ReadHead(const Json::Value& file, const char* member, bool (*fits)(std::string_view),
              const char* otherwise, std::string& into, Findings& findings) {
  const Json::Value* value = Json::FindMember(file, member);
  if (value == nullptr || !value->IsString()) {
    return;
  }
  into = Json::Text(*value);
  if (!fits(into)) {
    findings.Add(std::string("/") + member, otherwise);
  }
}

void CheckHead(const Json::Value& file, TypeFile& result, Findings& findings) {
  constexpr const char* kNameRule = "a name is made of letters, digits, \"-\" and \"_\"";
  ReadHead(file, "component", IsName, kNameRule, result.type.name.component, findings);
  ReadHead(file, "group", IsName, kNameRule, result.type.name.group, findings);
  ReadHead(file, "key", IsName, kNameRule, result.type.name.key, findings);
  ReadHead(
      file, "version", [](std::string_view text) { return IsVersion(text); },
      "a version is made of numbers with dots between them, such as \"1.0\"", result.type.version,
      findings);
}

void CheckRoot(const Json::Value& schema, Findings& findings) {
  if (Json::FindMember(schema, Json::Keyword::kReference) != nullptr) {
    findings.Add("/schema/$ref", "the root of the schema has to tell the type's properties itself");
  }
  const Json::Value* type = Json::FindMember(schema, Json::Keyword::kType);
  if (type == nullptr || !type->IsString() || Json::Text(*type) != "object") {
    findings.Add(type == nullptr ? "/schema" : "/schema/type",
                 "objects of a type are JSON objects: the root needs \"type\": \"object\"");
  }
}

void CheckSchemaOf(const Json::Value& file, TypeFile& result, Findings& findings) {
  const Json::Value* schema = Json::FindMember(file, "schema");
  if (schema == nullptr || !schema->IsObject()) {
    return;
  }
  CheckRoot(*schema, findings);
  const Json::TypeSchemaView type(*schema);
  const std::vector<AnnotatedDefault> defaults =
      CheckAnnotations(type, result.type.name.key, findings);
  Json::Document results;
  Json::Document warnings;
  JsonValidator::CheckNewSchema(*schema, results, warnings);
  findings.AddNew(results, "/schema");
  findings.Warn(warnings, "/schema");
  // Nothing can be measured by a schema that is broken itself.
  if (!findings.AnyAtOrUnder("/schema")) {
    CheckPropertyDefaults(*schema, defaults, findings);
    result.shipped = CheckShippedObjects(file, type, findings);
  }
}

}  // namespace

TypeFile Check(std::string path, std::string_view text) {
  TypeFile result;
  result.path = std::move(path);
  auto document = JsonDoc::Make(JsonDoc::CapacityFor(text.size()));
  if (const auto parsed = document->Parse(text, Json::Origin::OUTSIDE); !parsed) {
    result.findings.push_back({"/", parsed.Describe(text)});
    return result;
  }
  const Json::Value& file = *document->GetJsonValuePtr();
  Findings findings;
  findings.Validate(MetaSchema(), file,
                    {JsonValidator::RULE_JSON_SCHEMA, JsonValidator::RULE_REQUIRED}, {});
  CheckHead(file, result, findings);
  CheckSchemaOf(file, result, findings);
  result.findings = findings.Take();
  result.warnings = findings.TakeWarnings();
  if (!result.Good()) {
    result.shipped.clear();
    return result;
  }
  Json::Serialize(file, result.type.text);
  result.document = std::move(document);
  return result;
}

}  // namespace TypeFiles
