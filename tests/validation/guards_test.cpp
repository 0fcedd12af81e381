#include "validation/guards.h"

#include "objects/schema_lookup.h"
#include "support/captured_log.h"
#include "support/raised.h"
#include "support/test_types.h"
#include "validation/object_validation.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class Guards : public ::testing::Test {
 protected:
  Guards() {
    InstallType(host_, TestSupport::kPlainType);
    InstallType(host_, TestSupport::kSwitchType);
    InstallType(host_, R"({"component":"tarn","group":"test","key":"staged","version":"1",
      "schema":{"type":"object","rebootRequired":true,"properties":{"x":{"type":"integer"}}}})");
    plain_ = FindSchema(plainId_);
    switch_ = FindSchema(switchId_);
  }
  ObjectHandle Object(const ConfigStoreObjectId& id, const char* json) const {
    auto object = std::make_shared<ConfigStoreObject>(id);
    object->SetData(json);
    return object;
  }
  TestSupport::TemporaryHost host_;
  TestSupport::CapturedLog log_;
  ConfigStoreObjectId plainId_{"plain", "test", "tarn"};
  ConfigStoreObjectId switchId_{"switch", "test", "tarn", "s"};
  SchemaHandle plain_;
  SchemaHandle switch_;
};

TEST_F(Guards, HoldIdentifiersAgainstTheirType) {
  const ConfigStoreObjectId withId("plain", "test", "tarn", "x");
  const ConfigStoreObjectId without("switch", "test", "tarn");
  const ConfigStoreObjectId unknown("such", "no", "tarn");
  EXPECT_EQ(Raised([&] {
              ValidateCsoId(plainId_, plain_);
              ValidateCsoId(switchId_, switch_);
            }),
            "nothing");
  EXPECT_EQ(Raised([&] { ValidateCsoId(withId, plain_); }),
            "VE 2000 Singleton object cannot contain instanceId");
  EXPECT_EQ(Raised([&] { ValidateCsoId(without, switch_); }),
            "VE 2000 Non-Singleton object should contain instanceId");
  EXPECT_EQ(Raised([&] { ValidateCsoId(unknown, nullptr); }),
            "CSE 1037 No schema is installed for comp tarn grp no key such.");
  EXPECT_EQ(Raised([&] { ValidateCsoIdInstances(unknown, nullptr); }).substr(0, 8), "CSE 1037");
  EXPECT_EQ(Raised([&] { ValidateCsoIdInstances(plainId_, plain_); }),
            "VE 2000 API called for singleton object, non-singleton expected");
  EXPECT_EQ(Raised([&] {
              ValidateCsoIdInstances(switchId_, switch_);
              ValidateCsoIdInstances(without, switch_);
            }),
            "nothing");
}

TEST_F(Guards, HoldObjectsAndContextsAgainstTheOperation) {
  EXPECT_EQ(
      Raised([&] { ValidateRebootRequiredConfig(plain_); }),
      "VE 2000 API should only be invoked for configurations tagged @rebootRequiredConfigStore.");
  EXPECT_EQ(
      Raised([&] {
        ValidateRebootRequiredConfig(FindSchema(ConfigStoreObjectId("staged", "test", "tarn")));
      }),
      "nothing");
  EXPECT_EQ(
      Raised([&] { ValidateEmptyObject(Object(plainId_, "{}")); }),
      "VE 2000 Empty object cannot be set for configurations tagged @rebootRequiredConfigStore.");
  EXPECT_EQ(Raised([] {
              ValidateKernelOptionsCsoId({"options", "tkernel", "tarn", "any"});
            }),
            "nothing");
  EXPECT_EQ(Raised([] {
              ValidateKernelOptionsCsoId({"Options", "tkernel", "tarn"});
            }),
            "VE 2000 API should only be invoked for Kernel options configuration.");
  EXPECT_EQ(Raised([] { checkUserContext(true, EXTERNAL); }),
            "VE 2000 API cannot be invoked with EXTERNAL context during boot");
  EXPECT_EQ(Raised([] {
              checkUserContext(false, EXTERNAL);
              checkUserContext(true, AUTO_CONFIG);
            }),
            "nothing");
  const std::filesystem::path file = host_.Path(HostPaths::kUpgradeContext);
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file) << "1";
  EXPECT_EQ(Raised([] { checkUserContext(true, EXTERNAL); }), "nothing")
      << "an upgrade lifts the rule";
}

TEST_F(Guards, LogEmptyHandlesAndEmptyObjects) {
  EXPECT_TRUE(IsNull(ObjectHandle(), "Set"));
  EXPECT_FALSE(IsNull(Object(plainId_, "{}"), "Set"));
  EXPECT_EQ(log_.Count("1 [1041] Set: The argument is null."), 1);
  EXPECT_TRUE(ObjIsEmpty(Object(plainId_, "{}"), "Set"));
  EXPECT_EQ(
      log_.Count(
          "1 Set, Configuration object for comp tarn grp test key plain is empty, will not be "
          "persisted in the db"),
      1);
}

TEST_F(Guards, TellUserDataByItsLeaves) {
  const std::pair<const char*, bool> cases[] = {
      {R"({"name":"s"})", false},
      {R"({"name":"s","serial":"x","state":{"up":true}})", false},
      {R"({"name":"s","mtu":1})", true},
      {R"({"ports":[{"id":"a","mac":"m"},{"id":"b","speed":1}]})", false},
      {R"({"ports":[{"id":"a","mac":"m"},{"id":"b","vlan":1}]})", true},
      {R"({"ports":[{"id":"a","policy":{"seen":1}}]})", false},
      {"{}", false},
  };
  for (const auto& [json, expected] : cases) {
    EXPECT_EQ(isUserType(Object(switchId_, json), switch_), expected) << json;
  }
}

TEST_F(Guards, FindingsAreReportedAndLoggedOnce) {
  EXPECT_EQ(Raised([&] { ValidateSet(plain_, Object(plainId_, R"({"port":0,"tags":[1]})")); }),
            "VE 1089 The object to be set does not fit its type. | / | /port | /tags/0");
  long findings = 0;
  for (const std::string& line : log_.Lines()) {
    findings += line.rfind("0 [1083] Validation: /", 0) == 0 ? 1 : 0;
  }
  EXPECT_EQ(findings, 3);
  EXPECT_EQ(Raised([&] { ValidateSet(plain_, Object(plainId_, "[]")); }).substr(0, 7), "VE 1089");
  Json::Document malformed;
  malformed.Parse(R"([{"field":"/x"}])");
  std::vector<ErrorInfo> errors;
  EXPECT_EQ(Raised([&] { ConvertFindings(malformed, errors, true); }).substr(0, 8), "CSE 1082");
}

}  // namespace
}  // namespace TarnConfigStore
