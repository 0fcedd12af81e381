#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/diagnostics.h"
#include "tarnconfigstore/key_values.h"

#include "platform/db_testing.h"

#include "support/store_fixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class Store : public TestSupport::StoreFixture {};

TEST_F(Store, SetsAndGetsWithRevisionsThatCountWrites) {
  EXPECT_EQ(store_->Get(plain_), nullptr);
  EXPECT_EQ(store_->GetRevision(plain_), kDefaultRevision);
  Set(plain_, R"({"name":"a","port":1})");
  Set(plain_, R"({"name":"b"})");
  EXPECT_EQ(store_->Get(plain_)->GetData(), R"({"name":"b"})") << "set replaces the whole object";
  EXPECT_EQ(store_->GetRevision(plain_), 2);
  EXPECT_EQ(store_->Get(plain_)->GetRevision(), 2);
  EXPECT_EQ(store_->Get(plain_)->GetVersion(), "1.0");
}

TEST_F(Store, DividesAndMergesAcrossContexts) {
  Set(switch_, R"({"name":"s1","mtu":9,"serial":"x","ports":[{"id":"a","vlan":1,"speed":2}]})");
  EXPECT_EQ(
      database_.Rows(),
      R"(tarn/test/switch/s1 u={"name":"s1","mtu":9,"ports":[{"id":"a","vlan":1}]} d=- a=- )"
      R"(v={"name":"s1","serial":"x"} c={"name":"s1","ports":[{"id":"a","speed":2}]} ok=1 rev=1)");
  EXPECT_EQ(store_->Get(switch_)->GetData(),
            R"({"name":"s1","ports":[{"id":"a","speed":2,"vlan":1}],"serial":"x","mtu":9})");
  Set(switch_, R"({"name":"s1","mtu":9})", AUTO_CONFIG);
  EXPECT_EQ(database_.Rows(),
            R"(tarn/test/switch/s1 u=- d=- a={"name":"s1","mtu":9} v=- c=- ok=1 rev=2)");
  const auto all = store_->GetInstances(
      std::make_shared<FilterSpecObject>(ConfigStoreObjectId("switch", "test", "tarn")));
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0]->GetConfigStoreObjectId(), switch_);
}

TEST_F(Store, GivesElementsWithoutAnIdOneThatStays) {
  Set(switch_, R"({"name":"s1","rules":[{"allow":"x"}]})");
  const std::string stored = database_.Rows();
  EXPECT_NE(stored.find(R"("cs_generated_id":")"), std::string::npos);
  const auto read = store_->Get(switch_);
  EXPECT_EQ(read->GetData(), R"({"name":"s1","rules":[{"allow":"x"}]})");
  store_->Set(read, EXTERNAL);
  EXPECT_EQ(stored.substr(0, stored.size() - 1), database_.Rows().substr(0, stored.size() - 1));
}

TEST_F(Store, RefusedWritesNameEveryFaultAndChangeNothing) {
  Set(plain_, R"({"name":"a"})");
  const std::string before = database_.Rows();
  const std::string expected = "VE 1089 The object to be set does not fit its type.";
  EXPECT_EQ(Raised([&] { Set(plain_, R"({"port":70000,"tags":[1],"extra":true})"); }),
            expected + " | / | /port | /tags/0 | /extra");
  EXPECT_EQ(Raised([&] { Set(plain_, R"({"name":7})"); }), expected + " | /name");
  auto binary = Object(plain_, R"({"name":"a"})");
  binary->SetValue("name", "\xff");
  EXPECT_EQ(Raised([&] { store_->Set(binary, EXTERNAL); }), expected + " | /name");
  EXPECT_EQ(Raised([&] {
              Set(switch_, R"({"name":"s1","ports":[{"id":"a"},{"id":"a","vlan":1}]})");
            }).substr(0, expected.size()),
            expected);
  EXPECT_EQ(Raised([&] {
              Set({"plain", "test", "tarn"}, "[]");
            }).substr(0, expected.size()),
            expected);
  EXPECT_EQ(database_.Rows(), before);
}

TEST_F(Store, HandlesAndEmptyObjectsAreLoggedAndLeftAlone) {
  store_->Set(nullptr, EXTERNAL);
  EXPECT_EQ(log_.Count("1 [1041] Set: The argument is null."), 1);
  EXPECT_TRUE(store_->GetInstances(nullptr).empty());
  EXPECT_EQ(log_.Count("1 [1041] GetInstances: The argument is null."), 1);
  // Emptiness is asked of what passes the checks of its type: this one has no required member.
  store_->Set(Object(switch_, R"({"name":"s1","ports":[]})"), EXTERNAL);
  EXPECT_EQ(
      log_.Count(
          "1 Set, Configuration object for comp tarn grp test key switch id s1 is empty, will "
          "not be persisted in the db"),
      1);
  EXPECT_EQ(database_.Rows(), "");
}

TEST_F(Store, TracesItsCalls) {
  (void)store_->Get(plain_);
  Set(plain_, R"({"name":"a"})", AUTO_CONFIG);
  EXPECT_EQ(log_.Count("4 Get : comp tarn grp test key plain, context: 1"), 1);
  EXPECT_EQ(log_.Count("3 Set : comp tarn grp test key plain, context: 0"), 1);
}

TEST_F(Store, BadIdentifiersFailBeforeTheDatabaseIsTouched) {
  DBStore::testing::SetHook([](DBStore::testing::Operation operation, std::string_view) {
    return operation == DBStore::testing::Operation::EXECUTE ||
                   operation == DBStore::testing::Operation::PREPARE
               ? 1
               : 0;
  });
  EXPECT_EQ(Raised([&] { (void)store_->Get({"such", "no", "tarn"}); }).substr(0, 8), "CSE 1037");
  EXPECT_EQ(Raised([&] {
              (void)store_->GetRevision({"plain", "test", "tarn", "x"});
            }),
            "VE 2000 Singleton object cannot contain instanceId");
  EXPECT_EQ(Raised([&] { (void)store_->GetInstances(std::make_shared<FilterSpecObject>(plain_)); }),
            "VE 2000 API called for singleton object, non-singleton expected");
  EXPECT_EQ(Raised([] { ConfigStore::GetStore(" "); }), "IAE 2000 Invalid value for namespace.");
  EXPECT_EQ(Raised([&] { (void)store_->GetRevision(plain_); }),
            "CSE 2000 GetRevision command failed");
}

TEST_F(Store, BootKeepsOtherThanAutomaticConfigurationOut) {
  SetKeyValue("IS_BOOT", "true");
  const std::string closed = "VE 2000 API cannot be invoked with EXTERNAL context during boot";
  EXPECT_EQ(Raised([&] { Set(plain_, R"({"name":"a"})"); }), closed);
  EXPECT_EQ(Raised([&] { Set(plain_, R"({"name":"a"})", AUTO_CONFIG); }), "nothing");
  EXPECT_EQ(Raised([&] { Set(switch_, R"({"name":"s1","serial":"x"})"); }), "nothing")
      << "vital data is no user data";
  InstallType(host_, R"({"component":"tarn","group":"test","key":"open","version":"1",
    "schema":{"type":"object","bootAccessible":true,"properties":{"x":{"type":"integer"}}}})");
  EXPECT_EQ(Raised([&] { Set({"open", "test", "tarn"}, R"({"x":1})"); }), "nothing");
  SetUpgradeContext("1");
  EXPECT_EQ(Raised([&] { Set(plain_, R"({"name":"a"})"); }), "nothing");
}

TEST_F(Store, NeverOpensOrPreparesTwice) {
  // A schema store that was written a moment ago is looked into until its time stamp can be
  // trusted.
  std::this_thread::sleep_for(std::chrono::milliseconds(150));
  Set(plain_, R"({"name":"a"})");
  (void)store_->Get(plain_);
  (void)store_->GetRevision(plain_);
  const auto before = DBStore::testing::GetCounters();
  const ConfigStoreTransaction transaction(store_);
  for (int i = 0; i < 1000; ++i) {
    (void)store_->Get(plain_);
    Set(plain_, R"({"name":"a"})");
    (void)store_->GetRevision(plain_);
  }
  const auto after = DBStore::testing::GetCounters();
  EXPECT_EQ(after.opens - before.opens, 0U);
  EXPECT_EQ(after.prepares - before.prepares, 0U);
}

TEST_F(Store, ALostStoreIsAnErrorAndNeverAnEmptyOne) {
  Set(plain_, R"({"name":"a"})");
  store_.reset();
  const std::string path = host_.Path(HostPaths::kStore);
  for (const char* suffix : {"", "-wal", "-shm"}) {
    std::filesystem::remove(path + suffix);
  }
  ClearLastStoreError();
  EXPECT_EQ(Raised([] { ConfigStore::GetStore(""); }), "CSE 2000 Failed to connect to database");
  EXPECT_EQ(GetLastStoreError().kind, StoreErrorKind::MISSING);
  ClearLastStoreError();
  EXPECT_EQ(Raised([] { (void)IsBoot(); }), "CSE 2000 Failed to read value from database.");
  EXPECT_EQ(GetLastStoreError().kind, StoreErrorKind::MISSING) << "and not that there is no handle";
  EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
}  // namespace TarnConfigStore
