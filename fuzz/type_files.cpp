// Type files: checked, loaded, looked at from every side, and their objects validated.
#include "platform/type_files.h"

#include "platform/json_validator.h"

#include "admin/plain_schema.h"
#include "fuzz_target.h"
#include "json/pointer.h"
#include "json/value_place.h"
#include "members/defaults.h"
#include "members/type_walk.h"
#include "objects/division.h"
#include "validation/rule_sets.h"

#include <string>

namespace Fuzz {
namespace {

using namespace TarnConfigStore;
using TarnSchemaStore::SchemaObject;

// Every place of a type, as deep as one would care to look: types may lead back to themselves.
void Look(Json::SchemaPlace place, Json::ValuePlace values, int depth) {
  if (!place || depth == 0) {
    return;
  }
  (void)place.Kinds();
  (void)place.HoldsDefaults();
  (void)place.KindOfNumbers();
  (void)values.Kinds();
  int left = 8;
  place.ForEachProperty([&](std::string_view name, Json::SchemaPlace property) {
    Require(bool(place.Property(name)), "a property that is told of is found", name);
    if (--left > 0) {
      Look(property, values.Member(name), depth - 1);
    }
  });
  Look(place.Items(), values.Element(0), depth - 1);
}

void Validate(const SchemaObject& type, const Json::Value& value) {
  Json::Document result;
  JsonValidator::Validate(type.GetSchemaDocument(), value, result, SetRules(), {});
  Require(result.IsArray(), "a validation comes to an end");
}

void CheckPlainSchema(const SchemaObject& type) {
  Json::Document definitions(rapidjson::kObjectType);
  PlainSchema plain("t", type.GetSchemaDocument(), definitions, definitions.GetAllocator());
  (void)plain.Add(type.IsNonSingleton());
  std::string text;
  Require(Json::Serialize(definitions, text), "an exported schema can be written");
}

// What is told of a type is found where it is said to be.
void Describe(const SchemaObject& type, const Json::Value& value) {
  try {
    int left = 20;
    for (const MemberDescription& member : DescribeMembers(type, {}, false)) {
      if (--left == 0) {
        break;
      }
      Require(!DescribeMembers(type, member.pointer, true).empty(), "a member is found again",
              member.pointer);
    }
    Json::Document filled;
    filled.CopyFrom(value, filled.GetAllocator());
    FillDefaults(filled, type.GetSchemaPlace(), filled.GetAllocator());
  } catch (const ConfigStoreException&) {
    // There may be more than anybody can hold.
  }
}

void Run(std::string_view input) {
  const TypeFiles::TypeFile file = TypeFiles::Check("type.json", input);
  for (const auto& list : {file.findings, file.warnings}) {
    for (const TypeFiles::Finding& finding : list) {
      Require(Json::ParsePointer(finding.field) && !finding.error.empty(),
              "a finding has a place and a reason", finding.field);
    }
  }
  if (!file.Good()) {
    return;
  }
  const TypeFiles::TypeFile again = TypeFiles::Check("again.json", file.type.text);
  Require(again.Good() && again.type.text == file.type.text, "a good type stays as it is kept",
          file.type.text);
  const auto type = TypeFiles::Load(file.type);
  Require(type->GetKey() == file.type.name.key && type->GetVersion() == file.type.version,
          "a kept type is the one that was checked");
  const Json::SchemaReferences references(type->GetSchemaDocument());
  Json::ValuePlaces places(references, type->GetSchemaDocument());
  Look(type->GetSchemaPlace(), places.Root(), 6);
  CheckPlainSchema(*type);
  Describe(*type, *file.document->GetJsonValuePtr());
  for (const TypeFiles::ShippedObject& shipped : file.shipped) {
    Validate(*type, *shipped.value);
    (void)DivideValue(*shipped.value, *type, EXTERNAL);
  }
  // The file itself is a value with a bit of everything.
  Validate(*type, *file.document->GetJsonValuePtr());
  (void)DivideValue(*file.document->GetJsonValuePtr(), *type, EXTERNAL);
}

const Target target("type_files", Run);

}  // namespace
}  // namespace Fuzz
