// The text of an object: parsed, printed, validated against a type, divided among parts and merged.
// An input is a type on a line, and the text.
#include "fuzz_target.h"
#include "json/equality.h"
#include "json/print.h"
#include "objects/access.h"
#include "objects/division.h"
#include "objects/merge.h"
#include "objects/schema_lookup.h"
#include "support/random_objects.h"
#include "test_host.h"
#include "validation/object_validation.h"

#include <string>

namespace Fuzz {
namespace {

using namespace TarnConfigStore;
using TestSupport::Canonical;
using TestSupport::Parsed;

std::string Serialized(const Json::Value& value) {
  std::string text;
  Require(Json::Serialize(value, text), "what was parsed can be written");
  return text;
}

void RequireReadsBack(const Json::Value& value, const std::string& text) {
  Json::Document again;
  Require(bool(Json::Parse(text, again, Json::Origin::OUTSIDE)), "what is written is read", text);
  Require(Json::Equal(value, again), "what is read back is equal", text);
}

// A value that came from outside comes back from every way of writing it.
bool SurvivesWriting(std::string_view text) {
  Json::Document value;
  const Json::ParseResult result = Json::Parse(text, value, Json::Origin::OUTSIDE);
  if (!result) {
    Require(value.IsNull() && result.offset <= text.size() && !result.message.empty(),
            "a failed parse says what is wrong and where");
    Require(result.PlaceIn(text).line >= 1, "a fault has a line");
    return false;
  }
  const std::string compact = Serialized(value);
  RequireReadsBack(value, compact);
  Require(Serialized(Parsed(compact)) == compact, "written again, it is the same", compact);
  for (const Json::Layout layout : {Json::Layout::ONE_LINE, Json::Layout::INDENTED}) {
    std::string printed;
    Require(Json::Print(value, layout, Json::BadText::REFUSED, printed), "it can be printed");
    RequireReadsBack(value, printed);
  }
  return value.IsObject();
}

ObjectHandle Object(const ConfigStoreObjectId& id, const std::string& json) {
  auto object = std::make_shared<ConfigStoreObject>(id);
  object->SetData(json.c_str());
  return object;
}

// Merging the parts of an object gives back the object.
void CheckLaw(const ConfigStoreObjectId& id, const ObjectHandle& object, const SchemaHandle& schema,
              const USERDATA_CONTEXT& context) {
  GiveGeneratedIds(*object, *schema);
  const ColumnValues parts = DivideObject(*object, *schema, context).values;
  const auto layer = [&](const std::optional<std::string>& text) {
    return text ? Object(id, *text) : nullptr;
  };
  const auto merged = MergeConfig(layer(parts.automatic), layer(parts.cached), layer(parts.vital),
                                  layer(parts.user), schema->GetSchemaPlace());
  const std::string before = Canonical(Internal::Access::Of(*object).GetRoot());
  const std::string after = merged ? Canonical(Internal::Access::Of(*merged).GetRoot()) : "{}";
  Require(before == after, "merging the parts gives back the object", before + "\n" + after);
}

void Run(std::string_view input) {
  const ConfigStoreObjectId& id = TestHost::Get().Type(TakeLine(input));
  const SchemaHandle schema = FindSchema(id);
  const std::string text(input.substr(0, input.find('\0')));
  if (!SurvivesWriting(text)) {
    return;
  }
  const ObjectHandle object = Object(id, text);
  std::vector<ErrorInfo> errors;
  if (ValidateObjectData(schema, object, SetRules(), errors, false)) {
    for (const USERDATA_CONTEXT context : {EXTERNAL, AUTO_CONFIG}) {
      CheckLaw(id, Object(id, text), schema, context);
    }
  }
  for (const ErrorInfo& error : errors) {
    Require(!error.error.empty() && !error.field.empty(), "a finding has a place and a reason");
  }
  try {
    ValidateSet(schema, object);
  } catch (const ValidationException& refused) {
    Require(!refused.GetErrors().empty(), "a refusal has findings");
    Require(Canonical(Internal::Access::Of(*object).GetRoot()) == Canonical(Parsed(text)),
            "a refused object is as it was", text);
    return;
  }
  const std::string cleaned = Internal::Access::Of(*object).GetSerializedData();
  ValidateSet(schema, object);
  Require(Internal::Access::Of(*object).GetSerializedData() == cleaned,
          "what is ready to be stored does not change again", cleaned);
}

const Target target("object_text", Run);

}  // namespace
}  // namespace Fuzz
