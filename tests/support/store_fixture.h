// A host with the test types installed, and a store on it.
#pragma once

#include "tarnconfigstore/config_store.h"

#include "platform/db_testing.h"

#include "support/captured_log.h"
#include "support/database.h"
#include "support/raised.h"
#include "support/test_types.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

namespace TestSupport {

class StoreFixture : public ::testing::Test {
 protected:
  using ObjectHandle = std::shared_ptr<TarnConfigStore::ConfigStoreObject>;

  StoreFixture() : database_(host_) {
    InstallType(host_, kPlainType);
    InstallType(host_, kSwitchType);
    store_ = TarnConfigStore::ConfigStore::GetStore("");
  }
  ~StoreFixture() override { DBStore::testing::SetHook({}); }

  static ObjectHandle Object(const TarnConfigStore::ConfigStoreObjectId& id, const char* json) {
    auto object = std::make_shared<TarnConfigStore::ConfigStoreObject>(id);
    object->SetData(json);
    return object;
  }
  static TarnConfigStore::ConfigStoreObjectId Switch(const std::string& instance) {
    return {"switch", "test", "tarn", instance};
  }
  /// An instance of the switch type: its id, and these members.
  static ObjectHandle SwitchObject(const std::string& instance, const std::string& members = "") {
    const std::string rest = members.empty() ? "" : "," + members;
    return Object(Switch(instance), (R"({"name":")" + instance + "\"" + rest + "}").c_str());
  }
  void Set(const TarnConfigStore::ConfigStoreObjectId& id, const char* json,
           TarnConfigStore::USERDATA_CONTEXT context = TarnConfigStore::EXTERNAL) {
    store_->Set(Object(id, json), context);
  }
  void SetUpgradeContext(const char* text) const {
    const std::filesystem::path file = host_.Path(HostPaths::kUpgradeContext);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::trunc) << text;
  }

  /// Makes everything that an operation asks of the database to write by fail, one thing after the
  /// other, and at last nothing. What `look` sees is as it was after each failure, and another after
  /// the success. Answers how often it failed.
  static int FailEachStep(const char* name, const std::function<void()>& operation,
                          const std::function<std::string()>& look) {
    using DBStore::testing::Operation;
    const std::string before = look();
    int failures = 0;
    for (bool failed = true; failed;) {
      failed = false;
      int countdown = failures;
      DBStore::testing::SetHook([&](Operation asked, std::string_view detail) {
        const bool counts = asked == Operation::BEGIN || asked == Operation::PREPARE ||
                            asked == Operation::EXECUTE || asked == Operation::COMMIT ||
                            detail == "BOOT_MODE";
        const bool fails = counts && countdown-- == 0;
        failed = failed || fails;
        return fails ? 1 : 0;
      });
      const std::string raised = Raised(operation);
      DBStore::testing::SetHook({});
      if (failed) {
        EXPECT_EQ(raised.substr(0, 8), "CSE 2000") << name << " " << failures << ": " << raised;
        EXPECT_EQ(look(), before) << name << " " << failures;
        ++failures;
      } else {
        EXPECT_EQ(raised, "nothing") << name;
        EXPECT_NE(look(), before) << name;
      }
    }
    return failures;
  }

  TemporaryHost host_;
  Database database_;
  CapturedLog log_;
  TarnConfigStore::ConfigStoreObjectId plain_{"plain", "test", "tarn"};
  TarnConfigStore::ConfigStoreObjectId switch_{Switch("s1")};
  std::shared_ptr<TarnConfigStore::ConfigStore> store_;
};

}  // namespace TestSupport
