// A host with the test types installed, and a store on it.
#pragma once

#include "tarnconfigstore/config_store.h"

#include "platform/db_testing.h"

#include "support/captured_log.h"
#include "support/database.h"
#include "support/raised.h"
#include "support/test_types.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace TestSupport {

/// A host without types.
class HostFixture : public ::testing::Test {
 protected:
  using Operation = DBStore::testing::Operation;

  void TearDown() override { DBStore::testing::SetHook({}); }

  void SetUpgradeContext(const char* text) const {
    WriteFile(host_.Path(HostPaths::kUpgradeContext), text);
  }
  /// From now on, one kind of operation of the database fails.
  static void Fail(Operation operation, int status = 1) {
    DBStore::testing::SetHook(
        [=](Operation asked, std::string_view) { return asked == operation ? status : 0; });
  }
  /// Calls, each with what it raises or how that begins.
  static void ExpectRaised(
      std::initializer_list<std::pair<std::string, std::function<void()>>> cases) {
    int number = 0;
    for (const auto& [expected, call] : cases) {
      EXPECT_EQ(Raised(call).substr(0, expected.size()), expected) << "call " << ++number;
    }
  }

  /// Makes everything that an operation asks of the database to write by fail, one thing after the
  /// other, and at last nothing. What `look` sees is as it was after each failure, and another after
  /// the success. Answers how often it failed.
  static int FailEachStep(const char* name, const std::function<void()>& operation,
                          const std::function<std::string()>& look) {
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
      EXPECT_EQ(raised.substr(0, 8), failed ? "CSE 2000" : "nothing") << name << " " << failures;
      EXPECT_EQ(look() == before, failed) << name << " " << failures << ": " << look();
      failures += failed ? 1 : 0;
    }
    return failures;
  }

  TemporaryHost host_;
  Database database_{host_};
  CapturedLog log_;
};

class StoreFixture : public HostFixture {
 protected:
  using Id = TarnConfigStore::ConfigStoreObjectId;
  using ObjectHandle = std::shared_ptr<TarnConfigStore::ConfigStoreObject>;
  using Objects = std::vector<ObjectHandle>;

  StoreFixture() {
    InstallType(host_, kPlainType);
    InstallType(host_, kSwitchType);
    store_ = TarnConfigStore::ConfigStore::GetStore("");
  }

  static ObjectHandle Object(const Id& id, const std::string& json) {
    auto object = std::make_shared<TarnConfigStore::ConfigStoreObject>(id);
    object->SetData(json.c_str());
    return object;
  }
  static Id Switch(const std::string& instance) { return {"switch", "test", "tarn", instance}; }
  /// The data of an instance: its id, and these members.
  static std::string Named(const std::string& instance, const std::string& members = "") {
    return R"({"name":")" + instance + (members.empty() ? "\"}" : "\"," + members + "}");
  }
  static ObjectHandle SwitchObject(const std::string& instance, const std::string& members = "") {
    return Object(Switch(instance), Named(instance, members));
  }
  template <class... Handles>
  static Objects List(const Handles&... objects) {
    return {objects...};
  }
  static std::shared_ptr<TarnConfigStore::FilterSpecObject> Filter(const Id& id,
                                                                   const char* json = "{}") {
    auto filter = std::make_shared<TarnConfigStore::FilterSpecObject>(id);
    filter->SetData(json);
    return filter;
  }
  void Set(const Id& id, const char* json,
           TarnConfigStore::USERDATA_CONTEXT context = TarnConfigStore::EXTERNAL) {
    store_->Set(Object(id, json), context);
  }
  /// A row that was written seven times and long ago; an empty text makes a NULL.
  void PutRow(const Id& id, const std::string& user, const std::string& desired,
              const std::string& automatic, const std::string& vital, const std::string& cached,
              int success) {
    std::string values;
    for (const std::string& value : {user, desired, automatic, vital, cached}) {
      values += (value.empty() ? "NULL" : "'" + value + "'") + ",";
    }
    database_.Run(
        "INSERT OR REPLACE INTO Config (Component, ConfigGroup, Name, Identifier, Version, "
        "UserValue, DesiredValue, AutoConfValue, VitalValue, CachedValue, Success, CreationTime, "
        "ModifiedTime, Revision) VALUES ('" +
        id.component + "','" + id.group + "','" + id.key + "','" + id.instanceId + "','1'," +
        values + std::to_string(success) + ",'2020-01-01 00:00:00','2020-01-01 00:00:00',7)");
  }
  /// "none", or the data.
  static std::string Data(const ObjectHandle& object) {
    return object ? object->GetData() : "none";
  }
  /// The instance ids and data of all of them: "a{..} none b{..} ".
  static std::string Data(const Objects& objects) {
    std::string text;
    for (const ObjectHandle& object : objects) {
      text += (object ? object->GetConfigStoreObjectId().instanceId : "") + Data(object) + " ";
    }
    return text;
  }

  Id plain_{"plain", "test", "tarn"};
  Id switch_{Switch("s1")};
  std::shared_ptr<TarnConfigStore::ConfigStore> store_;
};

}  // namespace TestSupport
