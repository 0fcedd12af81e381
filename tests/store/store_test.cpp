#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/diagnostics.h"
#include "tarnconfigstore/key_values.h"

#include "store/every_write.h"

#include <chrono>
#include <thread>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class Store : public TestSupport::EveryWrite {};

TEST_F(Store, SetsAndGetsWithRevisionsThatCountWrites) {
  EXPECT_EQ(store_->Get(plain_), nullptr);
  EXPECT_EQ(store_->GetRevision(plain_), kDefaultRevision);
  Set(plain_, R"({"name":"a","port":1})");
  Set(plain_, R"({"name":"b"})");
  EXPECT_EQ(Data(store_->Get(plain_)), R"({"name":"b"})") << "set replaces the whole object";
  EXPECT_EQ(store_->GetRevision(plain_), 2);
  EXPECT_EQ(store_->Get(plain_)->GetRevision(), 2);
  EXPECT_EQ(store_->Get(plain_)->GetVersion(), "1.0");
  EXPECT_EQ(log_.Count("4 Get : comp tarn grp test key plain, context: 1"), 4);
  EXPECT_EQ(log_.Count("3 Set : comp tarn grp test key plain, context: 1"), 2);
}

TEST_F(Store, DividesAndMergesAcrossContexts) {
  Set(switch_, R"({"name":"s1","mtu":9,"serial":"x","ports":[{"id":"a","vlan":1,"speed":2}]})");
  EXPECT_EQ(
      database_.Rows(),
      R"(tarn/test/switch/s1 u={"name":"s1","mtu":9,"ports":[{"id":"a","vlan":1}]} d=- a=- )"
      R"(v={"name":"s1","serial":"x"} c={"name":"s1","ports":[{"id":"a","speed":2}]} ok=1 rev=1)");
  EXPECT_EQ(Data(store_->Get(switch_)),
            R"({"name":"s1","ports":[{"id":"a","speed":2,"vlan":1}],"serial":"x","mtu":9})");
  Set(switch_, R"({"name":"s1","mtu":9})", AUTO_CONFIG);
  EXPECT_EQ(database_.Rows(),
            R"(tarn/test/switch/s1 u=- d=- a={"name":"s1","mtu":9} v=- c=- ok=1 rev=2)");
  EXPECT_EQ(Data(store_->GetInstances(Filter(Switch("")))), R"(s1{"name":"s1","mtu":9} )");
}

TEST_F(Store, GivesElementsWithoutAnIdOneThatStays) {
  Set(switch_, R"({"name":"s1","rules":[{"allow":"x"}]})");
  const std::string stored = database_.Rows();
  EXPECT_NE(stored.find(R"("cs_generated_id":")"), std::string::npos);
  const auto read = store_->Get(switch_);
  EXPECT_EQ(Data(read), R"({"name":"s1","rules":[{"allow":"x"}]})");
  store_->Set(read, EXTERNAL);
  EXPECT_EQ(stored.substr(0, stored.size() - 1), database_.Rows().substr(0, stored.size() - 1));
  for (const NamedWrite& each : ofUser_) {
    each.write(SwitchObject("s1", R"("rules":[{"allow":"new"}])"));
    EXPECT_EQ(database_.Rows().find(R"([{"allow":"new"}])"), std::string::npos) << each.name;
  }
}

TEST_F(Store, ChecksIdentifiersBeforeTheDatabaseIsTouched) {
  const std::function<void(const Id&)> ofOne[] = {
      [&](const Id& id) { store_->Get(id); },
      [&](const Id& id) { store_->GetDefaultConfig(id); },
      [&](const Id& id) { store_->GetRevision(id); },
      [&](const Id& id) { store_->Delete(id); },
  };
  const std::function<void(const Id&)> ofMany[] = {
      [&](const Id& id) { store_->GetInstances(Filter(id)); },
      [&](const Id& id) { store_->GetDefaultConfigInstances(Filter(id)); },
      [&](const Id& id) { store_->GetInstanceIds(id); },
      [&](const Id& id) { store_->GetInstancesRevision(id); },
      [&](const Id& id) { store_->DeleteInstances(Filter(id)); },
  };
  const Id unknown("such", "no", "tarn");
  const Id withId("plain", "test", "tarn", "x");
  const std::string singleton = "VE 2000 Singleton object cannot contain instanceId";
  const std::string instance = "VE 2000 Non-Singleton object should contain instanceId";
  const std::string instances = "VE 2000 API called for singleton object, non-singleton expected";
  const std::string noType = "CSE 1037 No schema is installed for comp tarn grp no key such.";
  int asked = 0;
  DBStore::testing::SetHook([&](Operation, std::string_view) { return ++asked; });
  for (const auto& each : ofOne) {
    const auto& call = each;
    ExpectRaised({{singleton, [&] { call(withId); }},
                  {instance, [&] { call(Switch("")); }},
                  {noType, [&] { call(unknown); }}});
  }
  for (const auto& each : ofMany) {
    const auto& call = each;
    ExpectRaised({{instances, [&] { call(plain_); }}, {noType, [&] { call(unknown); }}});
  }
  for (const auto* writes : {&ofUser_, &ofParts_}) {
    ExpectOfEach(*writes, Object(withId, R"({"name":"a"})"),
                 [&](const auto& each) { return IsOfMany(each) ? instances : singleton; });
  }
  for (const NamedWrite& each : {ofUser_[0], ofUser_[1], ofUser_[4], ofParts_[0]}) {
    const auto unnamed = Object(Switch(""), R"({"mtu":1})");
    EXPECT_EQ(Raised([&] { each.write(unnamed); }), instance) << each.name;
  }
  ExpectRaised({{"IAE 2000 Invalid value for namespace.", [] { ConfigStore::GetStore(" "); }}});
  EXPECT_EQ(asked, 0);
  ExpectRaised({{"CSE 2000 GetRevision command failed", [&] { store_->GetRevision(plain_); }}});
}

TEST_F(Store, RefusedWritesNameEveryFaultAndChangeNothing) {
  Set(plain_, R"({"name":"a"})");
  Set(switch_, R"({"name":"s1","mtu":1})");
  const std::string before = database_.Rows();
  const std::string expected = "VE 1089 The object to be set does not fit its type. | /";
  auto binary = Object(plain_, R"({"name":"a"})");
  binary->SetValue("name", "\xff");
  ExpectRaised(
      {{expected + " | /port | /tags/0 | /extra",
        [&] { Set(plain_, R"({"port":70000,"tags":[1],"extra":true})"); }},
       {expected + "name", [&] { Set(plain_, R"({"name":7})"); }},
       {expected + "name", [&] { store_->Set(binary, EXTERNAL); }},
       {expected + "ports/1/id",
        [&] { Set(switch_, R"({"name":"s1","ports":[{"id":"a"},{"id":"a","vlan":1}]})"); }},
       {expected, [&] { Set(plain_, "[]"); }}});
  for (const auto* writes : {&ofUser_, &ofParts_}) {
    ExpectOfEach(*writes, SwitchObject("s1", R"("other":1)"),
                 [](const auto& each) { return "VE " + each.code; });
  }
  EXPECT_EQ(database_.Rows(), before);
}

TEST_F(Store, HandlesAndEmptyObjectsAreLoggedAndLeftAlone) {
  Set(switch_, R"({"name":"s1","mtu":1})");
  const std::string before = database_.Rows();
  for (const auto* writes : {&ofUser_, &ofParts_}) {
    ExpectOfEach(*writes, nullptr,
                 [](const auto& each) { return IsOfMany(each) ? "IAE 1061" : "nothing"; });
    for (const auto& [name, code, write] : *writes) {
      EXPECT_EQ(log_.Count("1 [1041] " + name + ": The argument is null."), 1) << name;
      // Emptiness is asked of what passes the checks of its type: this one has no required member.
      write(Object(switch_, writes == &ofUser_ ? R"({"name":"s1","ports":[]})" : "{}"));
      EXPECT_EQ(log_.Count(name == "Update"
                               ? "1 Update called with empty object for " + switch_.toString() +
                                     ", deletes are not supported"
                               : "1 " + name + ", Configuration object for " + switch_.toString() +
                                     " is empty, will not be persisted in the db"),
                1)
          << name;
    }
  }
  store_->DeleteInstances(nullptr);
  EXPECT_TRUE(store_->GetInstances(nullptr).empty());
  EXPECT_TRUE(store_->GetDefaultConfigInstances(nullptr).empty());
  EXPECT_EQ(database_.Rows(), before);
}

TEST_F(Store, BootKeepsOtherThanAutomaticConfigurationOut) {
  InstallType(host_, R"({"component":"tarn","group":"test","key":"open","version":"1",
    "schema":{"type":"object","bootAccessible":true,"properties":{"x":{"type":"integer"}}}})");
  SetKeyValue("IS_BOOT", "true");
  const auto user = SwitchObject("s1", R"("mtu":1)");
  ExpectOfEach(ofUser_, user, [](const auto&) {
    return "VE 2000 API cannot be invoked with EXTERNAL context during boot";
  });
  EXPECT_EQ(database_.Rows(), "");
  const auto vital = SwitchObject("s1", R"("serial":"x")");
  ExpectRaised({{"nothing", [&] { Set(plain_, R"({"name":"a"})", AUTO_CONFIG); }},
                {"nothing", [&] { store_->Set(vital, EXTERNAL); }},
                {"nothing", [&] { store_->SetInstances({vital}, EXTERNAL); }},
                {"nothing", [&] { Set(Id("open", "test", "tarn"), R"({"x":1})"); }}});
  SetUpgradeContext("1");
  ExpectOfEach(ofUser_, user, [](const auto&) { return "nothing"; });
}

TEST_F(Store, NeverOpensOrPreparesTwice) {
  // A schema store that was written a moment ago is looked into until its time stamp can be
  // trusted.
  std::this_thread::sleep_for(std::chrono::milliseconds(150));
  const auto use = [&] {
    (void)store_->Get(plain_);
    Set(plain_, R"({"name":"a"})");
    (void)store_->GetRevision(plain_);
  };
  use();
  const auto before = DBStore::testing::GetCounters();
  const ConfigStoreTransaction transaction(store_);
  for (int i = 0; i < 300; ++i) {
    use();
  }
  EXPECT_EQ(DBStore::testing::GetCounters().opens, before.opens);
  EXPECT_EQ(DBStore::testing::GetCounters().prepares, before.prepares);
}

TEST_F(Store, ALostStoreIsAnErrorAndNeverAnEmptyOne) {
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
