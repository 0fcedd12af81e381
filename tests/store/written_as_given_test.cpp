// What is read after a Set is what was given, up to members that read the same
// without them; and what is refused is refused in the words of a dry run, and changes nothing.
#include "tarnconfigstore/dry_run.h"

#include "objects/access.h"
#include "objects/schema_lookup.h"
#include "support/random_objects.h"
#include "support/sanitized.h"
#include "support/store_fixture.h"
#include "validation/cleanup.h"

namespace TarnConfigStore {
namespace {

// Members of every kind, and of each some that are required, have defaults or belong to other parts.
constexpr const char* kEveryKind = R"({"type":"object","required":["r"],
  "allOf":[{"required":["v"]}],"properties":{
  "r":{"type":["integer","null"]},"v":{"vital":true,"type":"number"},"f":{"type":"number","default":4},
  "c":{"cached":true,"type":"array","items":{"type":"integer"}},
  "l":{"type":"array","items":{"type":"integer"},"default":[7]},
  "o":{"type":"object","required":["x"],"properties":{"x":{"type":["integer","null"]},
    "y":{"type":"array","items":{"type":"integer"}},"n":{"type":"object","additionalProperties":{},
      "properties":{"w":{"type":"number","default":1},"u":{"type":"object","properties":{
        "t":{"type":"integer"}}}}}}},
  "p":{"type":"object","allOf":[{"required":["q"]}],"properties":{"q":{"type":"object","properties":{
    "m":{"type":"array","items":{"type":"integer"}}}},"k":{"vital":true,"type":"integer"}}},
  "e":{"type":"array","items":{"type":"object","required":["a"],"properties":{
    "id":{"type":"string","instanceId":true},"a":{"type":"integer"},"b":{"type":"object","properties":{
      "g":{"cached":true,"type":"number"}}},"h":{"type":"array","items":{"type":"integer"}}}}},
  "tuple":{"type":"array","items":[{},{}]},
  "lists":{"type":"array","items":{"type":"array","items":{"type":"integer"}}},
  "plain":{"type":"array","items":{"type":"object","properties":{"p":{"type":"object"}}}}}@})";

class WrittenAsGiven : public TestSupport::StoreFixture {
 protected:
  bool OneIn(unsigned long count) { return random_.OneIn(count); }

  static std::string Joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts) {
      text += (text.empty() ? "" : ",") + part;
    }
    return text;
  }

  // Mostly what the schema asks for; else anything.
  std::string Value(const Json::Value& schema) {
    const Json::Value* type = Json::FindMember(schema, "type");
    const std::string kind = type == nullptr || OneIn(30)
                                 ? std::array{"integer", "object", "array"}[random_.Below(3)]
                             : type->IsArray() ? (OneIn(3) ? "null" : "integer")
                                               : type->GetString();
    std::vector<std::string> parts;
    if (kind == "object") {
      if (const Json::Value* properties = Json::FindMember(schema, "properties")) {
        for (const auto& property : properties->GetObject()) {
          if (!OneIn(3) || Json::Text(property.name) == "id") {
            parts.push_back("\"" + std::string(Json::Text(property.name)) + "\":" +
                            (Json::IsTrue(property.value, "instanceId")
                                 ? "\"" + std::to_string(++ids_) + '"'
                                 : Value(property.value)));
          }
        }
      }
      if (OneIn(12)) {
        parts.push_back(OneIn(2) ? R"("z":[])" : R"("z":{"y":{}})");
      }
      return "{" + Joined(parts) + "}";
    }
    if (kind == "array") {
      const Json::Value* items = Json::FindMember(schema, "items");
      for (unsigned long i = random_.Below(4); items != nullptr && i > 0; --i) {
        parts.push_back(items->IsArray() ? std::string(OneIn(2) ? "[]" : "1") : Value(*items));
      }
      return "[" + Joined(parts) + "]";
    }
    return kind == "null" ? kind
                          : std::to_string(random_.Below(9)) + (OneIn(2)   ? ".0"
                                                                : OneIn(5) ? ".5"
                                                                           : "");
  }

  // Without what reads the same when it is absent, going by the schema's own words.
  std::string Essence(const Json::Value& value, Json::SchemaPlace place) {
    Json::Document kept;
    kept.CopyFrom(value, kept.GetAllocator());
    Strip(kept, place);
    return TestSupport::Canonical(kept);
  }
  static void Strip(Json::Value& value, Json::SchemaPlace place) {
    if (value.IsNumber()) {
      value.SetDouble(value.GetDouble());
    } else if (value.IsArray()) {
      for (Json::Value& element : value.GetArray()) {
        Strip(element, place.Items());
      }
    } else if (value.IsObject()) {
      for (auto member = value.MemberBegin(); member != value.MemberEnd();) {
        const Json::SchemaPlace property = place.Property(Json::Text(member->name));
        Strip(member->value, property);
        const bool isEmpty = (member->value.IsArray() && member->value.Empty()) ||
                             (member->value.IsObject() && member->value.ObjectEmpty());
        member = isEmpty && property && !property.HoldsDefaults() ? value.EraseMember(member)
                                                                  : member + 1;
      }
    }
  }

  TestSupport::Random random_;
  int ids_ = 0;
};

TEST_F(WrittenAsGiven, WhateverIsGiven) {
  CSLogger::SetLevel(0);
  int stored = 0;
  const Id id("any", "test", "tarn");
  for (const char* open : {"", R"(,"additionalProperties":{})"}) {
    std::string schema = kEveryKind;
    schema.replace(schema.find('@'), 1, open);
    InstallType(host_, TestSupport::TypeFile("any", *open == '\0' ? "1" : "2", schema));
    const SchemaHandle installed = FindSchema(id);
    const Json::SchemaPlace place = installed->GetSchemaPlace();
    const Json::Document parsed = TestSupport::Parsed(schema);
    for (int i = 0; i < TestSupport::Rounds(1500); ++i) {
      const std::string given = Value(parsed);
      SCOPED_TRACE(given + "\nseed " + std::to_string(random_.Seed()));
      const auto object = Object(id, given);
      const std::string before = database_.Rows();
      const auto findings = FindingsOfWrite(object, WriteKind::SET);
      ASSERT_EQ(object->GetData(), Object(id, given)->GetData());
      try {
        store_->Set(object, EXTERNAL);
        ASSERT_EQ(findings.empty(), !object->IsEmpty());
        if (!object->IsEmpty()) {
          ++stored;
          ASSERT_EQ(Essence(Internal::Access::Of(*store_->Get(id)).GetRoot(), place),
                    Essence(TestSupport::Parsed(given), place));
        }
      } catch (const ValidationException& refused) {
        ASSERT_EQ(object->GetData(), Object(id, given)->GetData());
        ASSERT_EQ(database_.Rows(), before);
        ASSERT_EQ(refused.GetErrors().size(), findings.size());
        for (std::size_t at = 0; at < findings.size(); ++at) {
          ASSERT_EQ(refused.GetErrors()[at].field, findings[at].field);
          ASSERT_EQ(refused.GetErrors()[at].error, findings[at].error);
        }
      }
    }
  }
  EXPECT_GT(stored, TestSupport::Rounds(1500) / 20);
}

}  // namespace
}  // namespace TarnConfigStore
