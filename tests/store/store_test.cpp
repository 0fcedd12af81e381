#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/key_values.h"

#include "store/every_write.h"

#include <chrono>
#include <thread>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class Store : public TestSupport::EveryWrite {
 protected:
  static ConfigStoreObjectId TestId(const char* key, const char* instance = "") {
    return {key, "test", "tarn", instance};
  }
};

TEST_F(Store, TracesItsCallsAndHasNothingOfWhatWasNotSet) {
  EXPECT_EQ(store_->Get(plain_), nullptr);
  EXPECT_EQ(store_->GetRevision(plain_), kDefaultRevision);
  Set(plain_, R"({"name":"a"})");
  EXPECT_EQ(log_.Count("4 Get : comp tarn grp test key plain, context: 1"), 1);
  EXPECT_EQ(log_.Count("3 Set : comp tarn grp test key plain, context: 1"), 1);
}

TEST_F(Store, GivesElementsWithoutAnIdOneThatStays) {
  const auto rules = [&] { return database_.Lines("SELECT UserValue ->> 'rules' FROM Config"); };
  Set(switch_, R"({"name":"s1","rules":[{"allow":"x"}]})");
  const std::string stored = rules();
  EXPECT_NE(stored.find(R"("cs_generated_id":")"), std::string::npos);
  const auto read = store_->Get(switch_);
  EXPECT_EQ(Data(read), R"({"name":"s1","rules":[{"allow":"x"}]})");
  store_->Set(read, EXTERNAL);
  EXPECT_EQ(rules(), stored);
  for (const NamedWrite& each : writes_) {
    if (each.IsOfUser()) {
      each.write(SwitchObject("s1", R"("rules":[{"allow":"new"}])"));
      EXPECT_EQ(rules().find(R"({"allow":"new"})"), std::string::npos) << each.name;
    }
  }
}

TEST_F(Store, ChecksIdentifiersBeforeTheDatabaseIsTouched) {
  using Call = std::function<void(const Id&)>;
  const Call ofOne[] = {
      [&](auto& id) { store_->Get(id); }, [&](auto& id) { store_->GetDefaultConfig(id); },
      [&](auto& id) { store_->GetRevision(id); }, [&](auto& id) { store_->Delete(id); }};
  const Call ofMany[] = {[&](auto& id) { store_->GetInstances(Filter(id)); },
                         [&](auto& id) { store_->GetDefaultConfigInstances(Filter(id)); },
                         [&](auto& id) { store_->GetInstanceIds(id); },
                         [&](auto& id) { store_->GetInstancesRevision(id); },
                         [&](auto& id) { store_->DeleteInstances(Filter(id)); }};
  const std::string singleton = "VE 2000 Singleton object cannot contain instanceId";
  const std::string instance = "VE 2000 Non-Singleton object should contain instanceId";
  const std::string instances = "VE 2000 API called for singleton object, non-singleton expected";
  const std::string noType = "CSE 1037 No schema is installed for comp tarn grp test key such.";
  int asked = 0;
  DBStore::testing::SetHook([&](Operation, std::string_view) { return ++asked; });
  for (const Call& call : ofOne) {
    ExpectRaised({{singleton, [&] { call(TestId("plain", "x")); }},
                  {instance, [&] { call(Switch("")); }},
                  {noType, [&] { call(TestId("such")); }}});
  }
  for (const Call& call : ofMany) {
    ExpectRaised({{instances, [&] { call(plain_); }}, {noType, [&] { call(TestId("such")); }}});
  }
  ExpectOfEach(Object(TestId("plain", "x"), R"({"name":"a"})"),
               [&](auto& each) { return each.IsOfMany() ? instances : singleton; });
  for (const NamedWrite& each : writes_) {
    const auto unnamed = Object(Switch(""), R"({"mtu":1})");
    EXPECT_TRUE(each.IsOfMany() || Raised([&] { each.write(unnamed); }) == instance) << each.name;
  }
  ExpectRaised({{"IAE 2000 Invalid value for namespace.", [] { ConfigStore::GetStore(" "); }}});
  EXPECT_EQ(asked, 0);
  ExpectRaised({{"CSE 2000 GetRevision command failed", [&] { store_->GetRevision(plain_); }}});
}

TEST_F(Store, RefusedWritesChangeNothing) {
  Set(switch_, R"({"name":"s1","mtu":1})");
  const std::string before = database_.Rows();
  ExpectOfEach(SwitchObject("s1", R"("other":1)"), [](auto& each) { return "VE " + each.code; });
  EXPECT_EQ(Raised([&] { Set(plain_, "[]"); }),
            "VE 1089 The object to be set does not fit its type. | /");
  EXPECT_EQ(database_.Rows(), before);
}

TEST_F(Store, HandlesAndEmptyObjectsAreLoggedAndLeftAlone) {
  Set(switch_, R"({"name":"s1","mtu":1})");
  const std::string before = database_.Rows();
  ExpectOfEach(nullptr, [](auto& each) { return each.IsOfMany() ? "IAE 1061" : "nothing"; });
  for (const NamedWrite& each : writes_) {
    EXPECT_EQ(log_.Count("1 [1041] " + each.name + ": The argument is null."), 1) << each.name;
    // Emptiness is asked of what passes the checks of its type: this one has no required member.
    each.write(Object(switch_, each.IsOfUser() ? R"({"name":"s1","ports":[]})" : "{}"));
    EXPECT_EQ(
        log_.Count(each.name == "Update"
                       ? "1 Update called with empty object for " + switch_.toString() +
                             ", deletes are not supported"
                       : "1 " + each.name + ", Configuration object for " + switch_.toString() +
                             " is empty, will not be persisted in the db"),
        1)
        << each.name;
  }
  store_->DeleteInstances(nullptr);
  EXPECT_TRUE(store_->GetInstances(nullptr).empty());
  EXPECT_TRUE(store_->GetDefaultConfigInstances(nullptr).empty());
  EXPECT_EQ(database_.Rows(), before);
  store_->SetVitalData(SwitchObject("s2"));
  EXPECT_EQ(store_->GetRevision(Switch("s2")), 1) << "a vital value may be nothing but an id";
}

TEST_F(Store, BootKeepsOtherThanAutomaticConfigurationOut) {
  InstallType(host_, TestSupport::TypeFile("open", "1", R"({"type":"object",
      "bootAccessible":true,"properties":{"x":{"type":"integer"}}})"));
  SetKeyValue("IS_BOOT", "true");
  const std::string refused = "VE 2000 API cannot be invoked with EXTERNAL context during boot";
  for (const NamedWrite& each : writes_) {
    EXPECT_EQ(Raised([&] { each.write(SwitchObject("s1", each.members)); }),
              each.IsOfUser() ? refused : "nothing")
        << each.name;
  }
  const auto vital = SwitchObject("s1", serial_);
  ExpectRaised({{"nothing", [&] { Set(plain_, R"({"name":"a"})", AUTO_CONFIG); }},
                {"nothing", [&] { store_->Set(vital, EXTERNAL); }},
                {"nothing", [&] { store_->SetInstances({vital}, EXTERNAL); }},
                {"nothing", [&] { Set(TestId("open"), R"({"x":1})"); }}});
  SetUpgradeContext("1");
  ExpectOfEach(SwitchObject("s1", mtu_),
               [](auto& each) { return each.IsOfUser() ? "nothing" : "VE 108"; });
}

// The daemon reads what it finds: the user's value alone is announced before it is written.
TEST_F(Store, AnnouncesEachChangeOnce) {
  std::string steps;
  DBStore::testing::SetHook([&](Operation asked, std::string_view detail) {
    const bool writes = asked == Operation::EXECUTE &&
                        (detail.starts_with("INSERT") || detail.starts_with("DELETE"));
    steps += detail == "NOTIFY_KEELD"     ? "told "
             : asked == Operation::COMMIT ? "committed "
             : writes                     ? "written "
                                          : "";
    return 0;
  });
  const auto stepsOf = [&](const std::function<void()>& call) {
    steps.clear();
    call();
    return steps;
  };
  for (const NamedWrite& each : writes_) {
    const std::string expected = each.name == "SetUserData"    ? "told written "
                                 : each.name == "SetInstances" ? "written written committed told "
                                 : each.IsOfMany() || each.name == "Update"
                                     ? "written committed told "
                                     : "written told ";
    EXPECT_EQ(stepsOf([&] { each.write(SwitchObject("s1", each.members)); }), expected)
        << each.name;
  }
  const auto conditions = Filter(Switch(""), R"({"serial":"x"})");
  EXPECT_EQ(stepsOf([&] { store_->DeleteInstances(conditions); }), "written committed told ");
  EXPECT_EQ(stepsOf([&] { store_->DeleteInstances(Filter(switch_)); }), "written ")
      << "without conditions it announces nothing";
  EXPECT_EQ(stepsOf([&] { store_->Delete(switch_); }), "written told ");
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

}  // namespace
}  // namespace TarnConfigStore
