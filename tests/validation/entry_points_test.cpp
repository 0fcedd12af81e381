#include "tarnconfigstore/config_store.h"

#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "objects/document.h"
#include "objects/schema_lookup.h"
#include "support/captured_log.h"
#include "support/raised.h"
#include "support/test_types.h"
#include "validation/document_validation.h"
#include "validation/object_validation.h"

#include <gtest/gtest.h>

#include <functional>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class EntryPoints : public ::testing::Test {
 protected:
  EntryPoints() {
    InstallType(host_, TestSupport::kPlainType);
    InstallType(host_, TestSupport::kSwitchType);
    for (const char* tag : {"vital", "cached"}) {
      InstallType(host_, R"({"component":"tarn","group":"test","key":")" + std::string(tag) +
                             R"(","version":"1","schema":{"type":"object",")" + tag +
                             R"(":true,"properties":{"x":{"type":"integer"}},"required":["x"]}})");
    }
    InstallType(host_, R"({"component":"tarn","group":"test","key":"linked","version":"1","schema":{
      "type":"object","properties":{"a":{"$ref":"#/definitions/port"}},
      "definitions":{"port":{"type":"integer","maximum":9}}}})");
  }
  static ObjectHandle Object(const std::string& key, const char* json) {
    auto object = std::make_shared<ConfigStoreObject>(
        ConfigStoreObjectId(key, "test", "tarn", key == "switch" ? "s" : ""));
    object->SetData(json);
    return object;
  }
  static std::string Fields(const std::vector<ErrorInfo>& errors) {
    std::string text;
    for (const ErrorInfo& error : errors) {
      text += error.field + " ";
    }
    return text;
  }
  TestSupport::TemporaryHost host_;
  TestSupport::CapturedLog log_;
};

TEST_F(EntryPoints, EachAsksForWhatItsKindOfWriteMayHold) {
  using Validate = void (*)(const SchemaHandle&, const ObjectHandle&);
  struct Entry {
    const char* code;
    Validate validate;
    // Of the objects below: "" where it fits, else where the findings are.
    const char* user;
    const char* vital;
    const char* cached;
    const char* unnamed;
    const char* wrong;
  };
  const Entry entries[] = {
      {"VE 1084", ValidateCachedConfig, " | /mtu", " | /serial", "", "", " | /mtu | /mtu | /extra"},
      {"VE 1086", ValidateVitalConfig, " | /mtu", "", " | /state", "", " | /mtu | /mtu | /extra"},
      {"VE 1087", ValidateUserConfig, "", " | /serial", " | /state", " | /ports/0",
       " | /mtu | /extra"},
      {"VE 1088", ValidatePartialConfig, "", " | /serial", " | /state", " | /ports/0",
       " | /mtu | /extra"},
      {"VE 1089", ValidateSet, "", "", "", " | /ports/0", " | /mtu | /extra"},
      {"VE 1090", ValidateUpdate, "", "", "", "", " | /mtu | /extra"},
  };
  for (const Entry& entry : entries) {
    const auto findings = [&](const char* json) {
      const ObjectHandle object = Object("switch", json);
      const std::string raised =
          Raised([&] { entry.validate(FindSchema(object->GetConfigStoreObjectId()), object); });
      if (raised == "nothing") {
        return std::string();
      }
      EXPECT_EQ(raised.substr(0, 7), entry.code);
      return raised.substr(std::min(raised.find(" | "), raised.size()));
    };
    EXPECT_EQ(findings(R"({"name":"s","mtu":1})"), entry.user) << entry.code;
    EXPECT_EQ(findings(R"({"name":"s","serial":"x"})"), entry.vital) << entry.code;
    EXPECT_EQ(findings(R"({"name":"s","state":{"up":true}})"), entry.cached) << entry.code;
    const char* unnamed = entry.validate == ValidateCachedConfig  ? R"({"state":{"up":true}})"
                          : entry.validate == ValidateVitalConfig ? R"({"serial":"x"})"
                                                                  : R"({"ports":[{"vlan":1}]})";
    EXPECT_EQ(findings(unnamed), entry.unnamed) << entry.code;
    EXPECT_EQ(findings(R"({"name":"s","mtu":"x","extra":1})"), entry.wrong) << entry.code;
  }
}

TEST_F(EntryPoints, CollectQuietlyByTheTypesOwnRules) {
  const auto collect = [](const SchemaHandle& schema, const ObjectHandle& object) {
    std::vector<ErrorInfo> errors;
    ValidateCSO(schema, object, errors);
    return errors;
  };
  const auto errors = [&](const std::string& key, const char* json) {
    const ObjectHandle object = Object(key, json);
    return Fields(collect(FindSchema(object->GetConfigStoreObjectId()), object));
  };
  EXPECT_EQ(errors("plain", R"({"port":0})"), "/ /port ");
  EXPECT_EQ(errors("vital", "{}"), "") << "nothing is required of what is vital as a whole";
  EXPECT_EQ(errors("cached", R"({"x":"y"})"), "/x ");
  const ObjectHandle plain = Object("plain", R"({"name":"a"})");
  const SchemaHandle instances = FindSchema(ConfigStoreObjectId("switch", "test", "tarn"));
  EXPECT_EQ(collect(nullptr, plain).at(0).error, "No schema is installed for /tarn/test/plain.");
  EXPECT_EQ(collect(instances, plain).at(0).error,
            "The object needs an instance id: /tarn/test/plain");
  EXPECT_EQ(
      collect(FindSchema(plain->GetConfigStoreObjectId()), Object("switch", "{}")).at(0).error,
      "The object cannot have an instance id: /tarn/test/switch");
  for (const std::string& line : log_.Lines()) {
    EXPECT_EQ(line.find("[1083]"), std::string::npos) << line;
  }
  auto store = ConfigStore::GetStore("");
  EXPECT_TRUE(store->Validate(nullptr).empty());
  EXPECT_TRUE(store->Validate(plain).empty());
  EXPECT_EQ(Fields(store->Validate(Object("plain", R"({"tags":[1,2]})"))), "/ /tags/0 /tags/1 ");
  EXPECT_EQ(log_.Count("3 Validate : comp tarn grp test key plain, context: 1"), 2);
}

TEST_F(EntryPoints, ActionsThatWriteNoDataNeedNoValidation) {
  std::vector<ErrorInfo> errors;
  const ObjectHandle wrong = Object("plain", R"({"port":0})");
  EXPECT_TRUE(validateObject(wrong, ACTION_DELETE, errors, ""));
  EXPECT_TRUE(validateObject(wrong, ACTION_RESET, errors, ""));
  EXPECT_FALSE(validateObject(wrong, ACTION_UPDATE, errors, ""));
  EXPECT_EQ(Fields(errors), "/ /port ");
  EXPECT_EQ(log_.Count("0 validate completed with errors"), 1);
  EXPECT_EQ(log_.Count("2 validate completed successfully"), 2);
  RemoveType("tarn", "test", "plain", true);
  errors.clear();
  EXPECT_FALSE(validateObject(wrong, ACTION_RESET, errors, ""));
  EXPECT_EQ(errors.at(0).field + ": " + errors.at(0).error, "tarn/plain: Schema not found.");
}

TEST_F(EntryPoints, WholeDocumentsAreCheckedTypeByType) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"tarn":{"test":{"plain":{"name":"a"},"linked":{"a":1},
           "switch":[{"name":"a","mtu":1},{"name":"b","rules":[{"allow":"x"}]}]}}})",
       ""},
      {R"({"tarn":{"test":{"linked":{"a":10}}}})", "/tarn/test/linked/a "},
      {R"({"tarn":{"test":{"linked":[{"a":1},{"a":10}]}}})", "/tarn/test/linked/1/a "},
      {R"({"tarn":{"test":{"switch":[{"name":"a","mtu":1},{"name":"a","mtu":"x"},{"mtu":1}]}}})",
       "/tarn/test/switch/1/mtu /tarn/test/switch/2 /tarn/test/switch/1/name "},
      {R"({"tarn":{"test":{"such":{}},"no":1},"other":{"x":{"y":{}}}})",
       "/tarn/test/such /tarn/no /other/x/y "},
      {"[]", "/ "},
  };
  for (const auto& [json, expected] : cases) {
    const auto document = CreateDocumentFromString(json);
    std::vector<ErrorInfo> errors;
    EXPECT_EQ(ValidateImportDocument(*document, errors), *expected == '\0') << json;
    std::string fields = Fields(errors);
    EXPECT_EQ(fields.size(), std::string(expected).size()) << json << "\n" << fields;
    for (const ErrorInfo& error : errors) {
      EXPECT_NE(std::string(expected).find(error.field + " "), std::string::npos) << error.field;
    }
  }
  std::vector<ErrorInfo> errors;
  const ObjectHandle object = Object("plain", R"({"tarn":{"test":{"switch":[
    {"name":"a","serial":"x"},{"name":"b","rules":[{"allow":"x"}]}]}}})");
  EXPECT_FALSE(ValidateDocument(object, errors)) << "user configuration holds nothing vital";
  EXPECT_EQ(Fields(errors), "/tarn/test/switch/0/serial ");
  EXPECT_NE(Internal::Access::Of(*object).GetSerializedData().find("cs_generated_id"),
            std::string::npos);
  EXPECT_EQ(Raised([] {
              const auto schema = CreateDocumentFromString(
                  R"({"properties":{"a":{"readOnly":true},"b":{}},"required":["b"]})");
              ValidateApplyFile(*CreateDocumentFromString(R"({"a":1})")->GetJsonValuePtr(),
                                *schema->GetJsonValuePtr());
            }),
            "VE 1091 The file to be applied does not fit its types. | / | /a");
}

}  // namespace
}  // namespace TarnConfigStore
