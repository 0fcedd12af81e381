// Whatever a type is like, what is read after a Set is what was given, up to members that read the same
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

  std::string Properties(int depth, const std::string& idMember) {
    std::vector<std::string> properties;
    std::vector<std::string> required;
    if (!idMember.empty()) {
      properties.push_back("\"" + idMember + R"(":{"type":"string","instanceId":true})");
    }
    for (char letter = 'a'; letter < 'f'; ++letter) {
      const std::string name = letter + std::to_string(depth);
      if (!OneIn(3)) {
        properties.push_back("\"" + name + "\":" + Schema(depth - 1));
        if (OneIn(6)) {
          required.push_back("\"" + name + '"');
        }
      }
    }
    const std::string asked = R"("required":[)" + Joined(required) + "]";
    return R"("properties":{)" + Joined(properties) + "}," +
           (OneIn(4) ? R"("allOf":[{)" + asked + "}]" : asked) +
           (OneIn(4) ? R"(,"additionalProperties":{})" : "");
  }

  std::string Schema(int depth) {
    const std::string tag = OneIn(8) ? R"("vital":true,)" : OneIn(8) ? R"("cached":true,)" : "";
    switch (random_.Below(depth > 0 ? 7 : 3)) {
      case 0:
        return "{" + tag + R"("type":["integer","null"]})";
      case 1:
        return "{" + tag + R"("type":"number")" + (OneIn(3) ? R"(,"default":4})" : "}");
      case 2:
        return "{" + tag + R"("type":"array","items":{"type":"integer"})" +
               (OneIn(3) ? R"(,"default":[7]})" : "}");
      case 3:
        return R"({"type":"object",)" + Properties(depth, "") + "}";
      case 4:
        return R"({"type":"array","items":{"type":"object",)" + Properties(depth, "id") + "}}";
      case 5:
        return std::string(R"({"type":"array","items":)") +
               (OneIn(2) ? "[{},{}]" : R"({"type":"array","items":{"type":"integer"}})") + "}";
      default:
        return R"({"type":"array","items":{"type":"object","properties":{"p":{"type":"object"}}}})";
    }
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

TEST_F(WrittenAsGiven, WhateverTheTypeIsLike) {
  CSLogger::SetLevel(0);
  int stored = 0;
  const Id id("any", "test", "tarn");
  for (int type = 1; type <= TestSupport::Rounds(150); ++type) {
    const std::string schema = R"({"type":"object",)" + Properties(3, "") + "}";
    if (type > 1) {
      store_->Delete(id);  // which would have to fit the next version
    }
    InstallType(host_, TestSupport::TypeFile("any", std::to_string(type), schema));
    const SchemaHandle installed = FindSchema(id);
    const Json::SchemaPlace place = installed->GetSchemaPlace();
    const Json::Document parsed = TestSupport::Parsed(schema);
    for (int i = 0; i < 12; ++i) {
      const std::string given = Value(parsed);
      SCOPED_TRACE(schema + "\n" + given + "\nseed " + std::to_string(random_.Seed()));
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
  EXPECT_GT(stored, TestSupport::Rounds(150) / 2);
}

}  // namespace
}  // namespace TarnConfigStore
