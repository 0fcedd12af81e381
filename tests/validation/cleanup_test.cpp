#include "validation/cleanup.h"

#include "objects/config_store_object_impl.h"
#include "objects/schema_lookup.h"
#include "support/captured_log.h"
#include "support/test_types.h"

#include <gtest/gtest.h>

namespace TarnConfigStore {
namespace {

TEST(Cleanup, TakesOutWhatIsEmptyAndNothingElse) {
  const TestSupport::TemporaryHost host;
  const TestSupport::CapturedLog log;
  InstallType(host, TestSupport::kPlainType);
  InstallType(host, TestSupport::kSwitchType);
  struct Case {
    const char* key;
    const char* before;
    const char* after;
  };
  const Case cases[] = {
      {"plain", R"({"name":"","tags":[],"nested":{"deep":{}}})", R"({"name":""})"},
      {"plain", R"({"name":"x","tags":["a"],"nested":{"deep":{"leaf":"y"}}})",
       R"({"name":"x","tags":["a"],"nested":{"deep":{"leaf":"y"}}})"},
      {"plain", R"({"unknown":{"x":[]}})", "{}"},
      {"switch", R"({"name":"s"})", "{}"},
      {"switch", R"({"name":"s","ports":[{"id":"a","policy":{}},{"id":"b"},{}]})",
       R"({"name":"s","ports":[{"id":"b"}]})"},
      {"switch", R"({"name":"s","state":{},"serial":"x"})",
       R"({"name":"s","state":{},"serial":"x"})"},
  };
  for (const Case& each : cases) {
    const ConfigStoreObjectId id(each.key, "test", "tarn",
                                 std::string(each.key) == "plain" ? "" : "s");
    const auto object = std::make_shared<ConfigStoreObject>(id);
    object->SetData(each.before);
    CleanupObject(object, FindSchema(id));
    EXPECT_EQ(object->GetData(), each.after) << each.before;
  }
  EXPECT_EQ(log.Count("2 Erasing empty object prop deep"), 1);
  EXPECT_EQ(log.Count("2 Erasing empty array element 0"), 1);
}

}  // namespace
}  // namespace TarnConfigStore
