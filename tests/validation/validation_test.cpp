#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "objects/document.h"
#include "objects/schema_lookup.h"
#include "support/store_fixture.h"
#include "validation/cleanup.h"
#include "validation/document_validation.h"
#include "validation/guards.h"
#include "validation/object_validation.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class Validation : public TestSupport::StoreFixture {
 protected:
  Validation() {
    for (const char* tag : {"vital", "cached"}) {
      InstallType(host_, R"({"component":"tarn","group":"test","key":")" + std::string(tag) +
                             R"(","version":"1","schema":{"type":"object",")" + tag +
                             R"(":true,"properties":{"x":{"type":"integer"}},"required":["x"]}})");
    }
    InstallType(host_, R"({"component":"tarn","group":"test","key":"kept","version":"1","schema":{
      "type":"object","required":["asked"],"dependencies":{"asked":["also"]},"definitions":{
        "holder":{"type":"object","properties":{"in":{"type":"object","properties":{}}}}},
      "properties":{"name":{"type":"string","instanceId":true},
        "state":{"type":"object","cached":true},"asked":{"type":"object"},"also":{"type":"array"},
        "listed":{"type":"array","default":["a"]},
        "filled":{"type":"object","properties":{"a":{"type":"integer","default":1}}},
        "tuple":{"type":"array","items":[{"type":"array"},{"type":"integer"}]},
        "lists":{"type":"array","items":{"type":"array","items":{"type":"integer"}}},
        "plain":{"type":"array","items":{"$ref":"#/definitions/holder"}},
        "given":{"type":"array","items":{"type":"object","generatedInstanceId":true,"properties":{
          "in":{"type":"object"}}}}}}})");
    InstallType(host_, R"({"component":"tarn","group":"test","key":"linked","version":"1","schema":{
      "type":"object","properties":{"a":{"$ref":"#/definitions/port"}},
      "definitions":{"port":{"type":"integer","maximum":9}}}})");
  }
  static ObjectHandle Object(const std::string& key, const char* json) {
    return StoreFixture::Object(
        Id(key, "test", "tarn", key == "switch" || key == "kept" ? "s" : ""), json);
  }
  static SchemaHandle TypeOf(const ObjectHandle& object) {
    return FindSchema(object->GetConfigStoreObjectId());
  }
  static std::string Fields(const std::vector<ErrorInfo>& errors) {
    std::string text;
    for (const ErrorInfo& error : errors) {
      text += error.field + " ";
    }
    return text;
  }
};

TEST_F(Validation, CleaningTakesOutWhatIsEmptyAndNothingElse) {
  const auto cleaned = [](const char* key, const char* json) {
    const ObjectHandle object = Object(key, json);
    CleanupObject(object, TypeOf(object));
    return std::string(object->GetData());
  };
  EXPECT_EQ(cleaned("plain", R"({"name":"","tags":[],"nested":{"deep":{}}})"), R"({"name":""})");
  EXPECT_EQ(cleaned("plain", R"({"name":"x","tags":["a"],"nested":{"deep":{"leaf":"y"}}})"),
            R"({"name":"x","tags":["a"],"nested":{"deep":{"leaf":"y"}}})");
  EXPECT_EQ(cleaned("vital", R"({"x":[]})"), R"({"x":[]})");
  EXPECT_EQ(cleaned("switch", R"({"name":"s"})"), "{}");
  EXPECT_EQ(cleaned("switch", R"({"name":"s","ports":[{},{"id":"a","policy":{}},{"id":"b"},{}]})"),
            R"({"name":"s","ports":[{"id":"a"},{"id":"b"}]})");
  EXPECT_EQ(cleaned("switch", R"({"name":"s","rules":[{},{"cs_generated_id":"1"}]})"), "{}");
  EXPECT_EQ(log_.Count("2 Erasing empty object prop deep"), 1);
  EXPECT_EQ(log_.Count("2 Erasing empty array element 3"), 1);
  // What would not read back the same: what the type does not know, may ask for, or has a default
  // for, here or below; elements that have a place, or were given something.
  for (const char* kept :
       {R"({"name":"s","unknown":{"x":[]}})", R"({"name":"s","state":{}})",
        R"({"name":"s","asked":{}})", R"({"name":"s","also":[]})", R"({"name":"s","listed":[]})",
        R"({"name":"s","filled":{}})", R"({"name":"s","tuple":[[],1]})",
        R"({"name":"s","lists":[[1],[],[2]]})", R"({"name":"s","plain":[{},{"in":{}}]})",
        R"({"name":"s","given":[{"in":{}}]})"}) {
    EXPECT_EQ(cleaned("kept", kept), kept);
  }
}

TEST_F(Validation, UserDataAreToldByTheirLeaves) {
  const auto isUser = [&](const char* json) {
    return isUserType(Object("switch", json), FindSchema(switch_));
  };
  EXPECT_FALSE(isUser(R"({"name":"s"})"));
  EXPECT_FALSE(isUser(R"({"name":"s","serial":"x","state":{"up":true}})"));
  EXPECT_TRUE(isUser(R"({"name":"s","mtu":1})"));
  EXPECT_FALSE(isUser(R"({"ports":[{"id":"a","mac":"m"},{"id":"b","speed":1}]})"));
  EXPECT_TRUE(isUser(R"({"ports":[{"id":"a","mac":"m"},{"id":"b","vlan":1}]})"));
  EXPECT_FALSE(isUser(R"({"ports":[{"id":"a","policy":{"seen":1}}]})"));
  EXPECT_FALSE(isUser("{}"));
}

TEST_F(Validation, EachEntryAsksForWhatItsKindOfWriteMayHold) {
  const char* const user = R"({"ports":[{"vlan":1}]})";
  const struct {
    const char* code;
    void (*validate)(const SchemaHandle&, const ObjectHandle&);
    const char* unnamed;
    const char* found;  // of each object, in the order below
  } entries[] = {
      {"VE 1084", ValidateCachedConfig, R"({"state":{"up":true}})",
       " | /mtu; | /serial;;; | /mtu | /mtu | /extra; | /port;"},
      {"VE 1086", ValidateVitalConfig, R"({"serial":"x"})",
       " | /mtu;; | /state;; | /mtu | /mtu | /extra; | /port;"},
      {"VE 1087", ValidateUserConfig, user,
       "; | /serial; | /state; | /ports/0; | /mtu | /extra; | /;"},
      {"VE 1088", ValidatePartialConfig, user,
       "; | /serial; | /state; | /ports/0; | /mtu | /extra;;"},
      {"VE 1089", ValidateSet, user, ";;; | /ports/0; | /mtu | /extra; | /;"},
      {"VE 1090", ValidateUpdate, user, ";;;; | /mtu | /extra;;"},
  };
  for (const auto& entry : entries) {
    std::string found;
    for (const auto& [key, json] : {std::pair("switch", R"({"name":"s","mtu":1})"),
                                    {"switch", R"({"name":"s","serial":"x"})"},
                                    {"switch", R"({"name":"s","state":{"up":true}})"},
                                    {"switch", entry.unnamed},
                                    {"switch", R"({"name":"s","mtu":"x","extra":1})"},
                                    {"plain", R"({"port":1})"}}) {
      const ObjectHandle object = Object(key, json);
      const std::string raised = Raised([&] { entry.validate(TypeOf(object), object); });
      EXPECT_EQ(raised.substr(0, 7), raised == "nothing" ? "nothing" : entry.code);
      found += raised.substr(std::min(raised.find(" | "), raised.size())) + ";";
    }
    EXPECT_EQ(found, entry.found) << entry.code;
  }
}

TEST_F(Validation, CollectsQuietlyByTheTypesOwnRules) {
  const auto collect = [](const SchemaHandle& schema, const ObjectHandle& object) {
    std::vector<ErrorInfo> errors;
    ValidateCSO(schema, object, errors);
    return errors;
  };
  const ObjectHandle plain = Object("plain", R"({"name":"a"})");
  EXPECT_EQ(collect(nullptr, plain).at(0).error, "No schema is installed for /tarn/test/plain.");
  EXPECT_EQ(
      collect(FindSchema(switch_), plain).at(0).error,
      "No object is found at /tarn/test/plain; where there are instances, one has to be named.");
  EXPECT_EQ(collect(TypeOf(plain), Object("switch", "{}")).at(0).error,
            "No instance is found at /tarn/test/switch; where there are no instances, none can be "
            "named.");
  const auto fields = [&](const char* key, const char* json) {
    return Fields(store_->Validate(Object(key, json)));
  };
  EXPECT_EQ(fields("plain", R"({"port":0,"tags":[1,2]})"), "/ /port /tags/0 /tags/1 ");
  EXPECT_EQ(fields("vital", "{}"), "") << "nothing is required of what is vital as a whole";
  EXPECT_EQ(fields("cached", R"({"x":"y"})"), "/x ");
  EXPECT_TRUE(store_->Validate(nullptr).empty());
  EXPECT_EQ(log_.Count("3 Validate : comp tarn grp test key plain, context: 1"), 1);
  const auto isFinding = [](const std::string& line) {
    return line.starts_with("0 [1083] Validation: /");
  };
  EXPECT_EQ(std::count_if(log_.Lines().begin(), log_.Lines().end(), isFinding), 0);
  EXPECT_EQ(Raised([&] { ValidateSet(TypeOf(plain), Object("plain", R"({"tags":[1]})")); }),
            "VE 1089 The object to be set does not fit its type. | / | /tags/0");
  EXPECT_EQ(std::count_if(log_.Lines().begin(), log_.Lines().end(), isFinding), 2)
      << "what is raised is logged, once";
  Json::Document malformed;
  malformed.Parse(R"([{"field":"/x"}])");
  std::vector<ErrorInfo> errors;
  EXPECT_EQ(Raised([&] { ConvertFindings(malformed, errors, true); }).substr(0, 8), "CSE 1082");
}

TEST_F(Validation, ActionsThatWriteNoDataNeedNone) {
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

TEST_F(Validation, WholeDocumentsAreCheckedTypeByType) {
  const auto wrong = [](const char* json) {
    std::vector<ErrorInfo> errors;
    const bool good = ValidateImportDocument(*CreateDocumentFromString(json), errors);
    EXPECT_EQ(good, errors.empty());
    return Fields(errors);
  };
  EXPECT_EQ(wrong(R"({"tarn":{"test":{"plain":{"name":"a"},"linked":{"a":1},
           "switch":[{"name":"a","mtu":1},{"name":"b","rules":[{"allow":"x"}]}]}}})"),
            "");
  EXPECT_EQ(wrong(R"({"tarn":{"test":{"linked":{"a":10}}}})"), "/tarn/test/linked/a ");
  EXPECT_EQ(wrong(R"({"tarn":{"test":{"linked":[{"a":1},{"a":10}]}}})"), "/tarn/test/linked/1/a ");
  EXPECT_EQ(
      wrong(
          R"({"tarn":{"test":{"switch":[{"name":"a","serial":"x"},{"name":"a","mtu":"x"},{"mtu":1}]}}})"),
      "/tarn/test/switch/1/name /tarn/test/switch/1/mtu /tarn/test/switch/2 ");
  EXPECT_EQ(wrong(R"({"tarn":{"test":{"such":{}},"no":1},"other":{"x":{"y":{}}}})"),
            "/tarn/test/such /tarn/no /other/x/y ");
  EXPECT_EQ(wrong("[]"), "/ ");
  std::vector<ErrorInfo> errors;
  const ObjectHandle object = Object("plain", R"({"tarn":{"test":{"switch":[
    {"name":"a","serial":"x"},{"name":"b","rules":[{"allow":"x"}]}]}}})");
  EXPECT_FALSE(ValidateDocument(object, errors)) << "user configuration holds nothing vital";
  EXPECT_EQ(Fields(errors), "/tarn/test/switch/0/serial ");
  EXPECT_NE(Internal::Access::Of(*object).GetSerializedData().find("cs_generated_id"),
            std::string::npos);
  const auto schema =
      CreateDocumentFromString(R"({"properties":{"a":{"readOnly":true},"b":{}},"required":["b"]})");
  EXPECT_EQ(Raised([&] {
              ValidateApplyFile(*CreateDocumentFromString(R"({"a":1})")->GetJsonValuePtr(),
                                *schema->GetJsonValuePtr());
            }),
            "VE 1091 The file to be applied does not fit its types. | / | /a");
}

}  // namespace
}  // namespace TarnConfigStore
