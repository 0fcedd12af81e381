#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/diagnostics.h"
#include "tarnconfigstore/key_values.h"

#include "support/store_fixture.h"

#include <chrono>
#include <thread>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class Store : public TestSupport::StoreFixture {
 protected:
  using Operations = std::vector<std::pair<const char*, std::function<void(const Id&)>>>;
  using Writes = std::vector<std::pair<std::string, std::function<void(const ObjectHandle&)>>>;

  Writes UserWrites() {
    return {{"Set", [&](const auto& o) { store_->Set(o, EXTERNAL); }},
            {"SetUserData", [&](const auto& o) { store_->SetUserData(o, EXTERNAL); }},
            {"SetInstances", [&](const auto& o) { store_->SetInstances({o}, EXTERNAL); }},
            {"SetUserDataInstances",
             [&](const auto& o) { store_->SetUserDataInstances({o}, EXTERNAL); }},
            {"Update", [&](const auto& o) { store_->Update(o, EXTERNAL); }}};
  }
  Writes AllWrites() {
    Writes all = UserWrites();
    all.push_back({"SetVitalData", [&](const auto& o) { store_->SetVitalData(o); }});
    all.push_back({"SetCachedData", [&](const auto& o) { store_->SetCachedData(o); }});
    all.push_back({"SetVitalDataInstances", [&](auto o) { store_->SetVitalDataInstances({o}); }});
    all.push_back({"SetCachedDataInstances", [&](auto o) { store_->SetCachedDataInstances({o}); }});
    return all;
  }
};

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
  for (const auto& [name, write] : UserWrites()) {
    write(SwitchObject("s1", R"("rules":[{"allow":"new"}])"));
    const std::string row = database_.Rows();
    EXPECT_EQ(row.find(R"([{"allow":"new"}])"), std::string::npos) << name << " " << row;
  }
}

TEST_F(Store, ChecksIdentifiersBeforeTheDatabaseIsTouched) {
  const Operations ofOne = {
      {"Get", [&](const Id& id) { store_->Get(id); }},
      {"GetDefaultConfig", [&](const Id& id) { store_->GetDefaultConfig(id); }},
      {"GetRevision", [&](const Id& id) { store_->GetRevision(id); }},
      {"Delete", [&](const Id& id) { store_->Delete(id); }},
      {"Set", [&](const Id& id) { store_->Set(Object(id, "{}"), EXTERNAL); }},
      {"SetUserData", [&](const Id& id) { store_->SetUserData(Object(id, "{}"), EXTERNAL); }},
      {"SetVitalData", [&](const Id& id) { store_->SetVitalData(Object(id, "{}")); }},
      {"Update", [&](const Id& id) { store_->Update(Object(id, R"({"mtu":1})"), EXTERNAL); }},
  };
  const Operations ofMany = {
      {"GetInstances", [&](const Id& id) { store_->GetInstances(Filter(id)); }},
      {"GetDefaultConfigInstances",
       [&](const Id& id) { store_->GetDefaultConfigInstances(Filter(id)); }},
      {"GetInstanceIds", [&](const Id& id) { store_->GetInstanceIds(id); }},
      {"GetInstancesRevision", [&](const Id& id) { store_->GetInstancesRevision(id); }},
      {"DeleteInstances", [&](const Id& id) { store_->DeleteInstances(Filter(id)); }},
  };
  const Id unknown("such", "no", "tarn");
  int asked = 0;
  DBStore::testing::SetHook([&](Operation, std::string_view) { return ++asked; });
  for (const auto& [name, operation] : ofOne) {
    SCOPED_TRACE(name);
    ExpectRaised({{"VE 2000 Singleton object cannot contain instanceId",
                   [&, &call = operation] { call(Id("plain", "test", "tarn", "x")); }},
                  {"VE 2000 Non-Singleton object should contain instanceId",
                   [&, &call = operation] { call(Switch("")); }},
                  {"CSE 1037 No schema is installed for comp tarn grp no key such.",
                   [&, &call = operation] { call(unknown); }}});
  }
  for (const auto& [name, operation] : ofMany) {
    SCOPED_TRACE(name);
    ExpectRaised({{"VE 2000 API called for singleton object, non-singleton expected",
                   [&, &call = operation] { call(plain_); }},
                  {"CSE 1037", [&, &call = operation] { call(unknown); }}});
  }
  for (const auto& [name, write] : AllWrites()) {
    if (name.find("Instances") != std::string::npos) {
      EXPECT_EQ(Raised([&, &call = write] { call(Object(plain_, R"({"name":"a"})")); }),
                "VE 2000 API called for singleton object, non-singleton expected")
          << name;
    }
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
  const std::map<std::string, std::string> codes = {
      {"Set", "9"},           {"SetInstances", "9"},
      {"SetUserData", "7"},   {"SetUserDataInstances", "7"},
      {"SetVitalData", "6"},  {"SetVitalDataInstances", "6"},
      {"SetCachedData", "4"}, {"SetCachedDataInstances", "4"}};
  for (const auto& [name, write] : AllWrites()) {
    const auto code = codes.find(name);
    EXPECT_EQ(Raised([&, &call = write] { call(SwitchObject("s1", R"("other":1)")); }).substr(0, 7),
              code == codes.end() ? "VE 1090" : "VE 108" + code->second)
        << name;
  }
  EXPECT_EQ(database_.Rows(), before);
}

TEST_F(Store, HandlesAndEmptyObjectsAreLoggedAndLeftAlone) {
  Set(switch_, R"({"name":"s1","mtu":1})");
  const std::string before = database_.Rows();
  for (const auto& [name, write] : AllWrites()) {
    const bool ofMany = name.find("Instances") != std::string::npos;
    EXPECT_EQ(Raised([&, &call = write] { call(nullptr); }).substr(0, 8),
              ofMany ? "IAE 1061" : "nothing");
    EXPECT_EQ(log_.Count("1 [1041] " + name + ": The argument is null."), 1) << name;
    // Emptiness is asked of what passes the checks of its type: this one has no required member.
    const bool cleans = name.find("Vital") == std::string::npos && name.find("Cached") == name.npos;
    write(Object(switch_, cleans ? R"({"name":"s1","ports":[]})" : "{}"));
    EXPECT_EQ(log_.Count(name == "Update"
                             ? "1 Update called with empty object for " + switch_.toString() +
                                   ", deletes are not supported"
                             : "1 " + name + ", Configuration object for " + switch_.toString() +
                                   " is empty, will not be persisted in the db"),
              1)
        << name;
  }
  store_->DeleteInstances(nullptr);
  EXPECT_TRUE(store_->GetInstances(nullptr).empty());
  EXPECT_TRUE(store_->GetDefaultConfigInstances(nullptr).empty());
  for (const char* name : {"DeleteInstances", "GetInstances", "GetDefaultConfigInstances"}) {
    EXPECT_EQ(log_.Count("1 [1041] " + std::string(name) + ": The argument is null."), 1) << name;
  }
  EXPECT_EQ(database_.Rows(), before);
}

TEST_F(Store, BootKeepsOtherThanAutomaticConfigurationOut) {
  InstallType(host_, R"({"component":"tarn","group":"test","key":"open","version":"1",
    "schema":{"type":"object","bootAccessible":true,"properties":{"x":{"type":"integer"}}}})");
  SetKeyValue("IS_BOOT", "true");
  for (const auto& [name, write] : UserWrites()) {
    EXPECT_EQ(Raised([&, &call = write] { call(SwitchObject("s1", R"("mtu":1)")); }),
              "VE 2000 API cannot be invoked with EXTERNAL context during boot")
        << name;
  }
  EXPECT_EQ(database_.Rows(), "");
  const auto vital = SwitchObject("s1", R"("serial":"x")");
  ExpectRaised({{"nothing", [&] { Set(plain_, R"({"name":"a"})", AUTO_CONFIG); }},
                {"nothing", [&] { store_->Set(vital, EXTERNAL); }},
                {"nothing", [&] { store_->SetInstances({vital}, EXTERNAL); }},
                {"nothing", [&] { Set(Id("open", "test", "tarn"), R"({"x":1})"); }}});
  SetUpgradeContext("1");
  for (const auto& [name, write] : UserWrites()) {
    EXPECT_EQ(Raised([&, &call = write] { call(SwitchObject("s1", R"("mtu":1)")); }), "nothing")
        << name;
  }
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
