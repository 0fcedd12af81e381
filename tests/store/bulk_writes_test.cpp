#include "support/store_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class BulkWrites : public TestSupport::StoreFixture {
 protected:
  // s1 to s3, each with something in every value, written seven times.
  void PutThree() {
    database_.Run("DELETE FROM Config");
    for (const char* instance : {"s1", "s2", "s3"}) {
      PutRow(Switch(instance), Named(instance, R"("mtu":1)"), "", Named(instance, R"("mtu":2)"),
             Named(instance, R"("serial":"x")"), Named(instance, R"("state":{"up":true})"), 1);
    }
  }
  // "s1:uavc7 s2:...": which values each row has, and its revision.
  std::string Sketch() {
    return database_.Lines(
        "SELECT group_concat(Identifier || ':' || iif(UserValue NOT NULL,'u','') || "
        "iif(AutoConfValue NOT NULL,'a','') || iif(VitalValue NOT NULL,'v','') || iif(CachedValue "
        "NOT NULL,'c','') || Revision, ' ') FROM Config");
  }
  template <class Write>
  std::string After(Write write) {
    PutThree();
    write();
    return Sketch();
  }
  const Objects mtus_ = List(SwitchObject("s2", R"("mtu":9)"), SwitchObject("s4", R"("mtu":9)"));
  const Objects serials_ = List(SwitchObject("s2", R"("serial":"y")"));
  const Objects states_ = List(SwitchObject("s2", R"("state":{"up":false})"));
};

TEST_F(BulkWrites, ReplaceOneValueOfAllInstances) {
  EXPECT_EQ(After([&] { store_->SetUserDataInstances(mtus_, EXTERNAL); }),
            "s1:avc7 s2:uavc8 s3:avc7 s4:u1");
  EXPECT_EQ(After([&] { store_->SetUserDataInstances(mtus_, AUTO_CONFIG); }),
            "s1:uvc7 s2:uavc8 s3:uvc7 s4:a1");
  EXPECT_EQ(After([&] { store_->SetVitalDataInstances(serials_); }), "s1:uac7 s2:uavc8 s3:uac7");
  EXPECT_EQ(After([&] { store_->SetCachedDataInstances(states_); }), "s1:uav7 s2:uavc8 s3:uav7");
  EXPECT_EQ(Data(store_->Get(Switch("s2"))),
            R"({"name":"s2","mtu":1,"state":{"up":false},"serial":"x"})");
}

TEST_F(BulkWrites, SetInstancesReplacesThemAllAndKeepsTheirHistory) {
  const Objects objects =
      List(SwitchObject("s4", R"("mtu":4)"), SwitchObject("s5", R"("ports":[])"),
           SwitchObject("s2", R"("mtu":2,"serial":"y")"));
  EXPECT_EQ(After([&] { store_->SetInstances(objects, EXTERNAL); }), "s2:uv8 s4:u1")
      << "the empty one is left out";
  EXPECT_EQ(
      database_.Lines("SELECT Identifier FROM Config WHERE CreationTime = '2020-01-01 00:00:00'"),
      "s2");
  EXPECT_EQ(store_->GetInstanceIds(switch_), (std::list<std::string>{"s2", "s4"}));
  EXPECT_EQ(store_->GetInstancesRevision(switch_),
            (std::list<std::pair<std::string, std::int32_t>>{{"s2", 8}, {"s4", 1}}));
  EXPECT_EQ(store_->GetRevision(Switch("s3")), kDefaultRevision);
}

TEST_F(BulkWrites, DeleteByFilterNameOrType) {
  PutThree();
  store_->SetUserData(SwitchObject("s2", R"("mtu":7)"), EXTERNAL);
  store_->DeleteInstances(Filter(Switch(""), R"({"mtu":1})"));
  EXPECT_EQ(Sketch(), "s2:uavc8");
  store_->DeleteInstances(Filter(Switch(""), R"({"mtu":99})"));
  EXPECT_EQ(Sketch(), "s2:uavc8") << "conditions that nothing meets delete nothing";
  EXPECT_EQ(After([&] { store_->DeleteInstances(Filter(Switch("s3"))); }), "s1:uavc7 s2:uavc7");
  EXPECT_EQ(After([&] { store_->DeleteInstances(Filter(Switch(""))); }), "-");
}

TEST_F(BulkWrites, BadListsAreRefusedBeforeAnythingIsWritten) {
  PutThree();
  const std::string before = database_.Rows();
  const auto good = SwitchObject("s9");
  const std::pair<Objects, std::string> lists[] = {
      {{}, "IAE 1061"},
      {List(good, Object(plain_, R"({"name":"a"})")), "IAE 1062"},
      {List(good, ObjectHandle(), SwitchObject("s9")),
       "IAE 2000 The instance is listed twice: " + Switch("s9").toString()},
      {List(good, SwitchObject("")), "VE 2000 Non-Singleton object should contain instanceId"}};
  for (const auto& [list, expected] : lists) {
    const Objects& objects = list;
    ExpectRaised({{expected, [&] { store_->SetInstances(objects, EXTERNAL); }},
                  {expected, [&] { store_->SetUserDataInstances(objects, EXTERNAL); }},
                  {expected, [&] { store_->SetVitalDataInstances(objects); }},
                  {expected, [&] { store_->SetCachedDataInstances(objects); }}});
  }
  EXPECT_EQ(database_.Rows(), before);
}

// Everything that an operation asks of the database is made to fail, one thing after the other: the
// store is as it was before each time, and works as soon as the failing ends.
TEST_F(BulkWrites, AFailureAnywhereLeavesTheStoreAsItWas) {
  const std::pair<const char*, std::function<void()>> operations[] = {
      {"SetInstances", [&] { store_->SetInstances(mtus_, EXTERNAL); }},
      {"SetUserDataInstances", [&] { store_->SetUserDataInstances(mtus_, EXTERNAL); }},
      {"automatic", [&] { store_->SetUserDataInstances(mtus_, AUTO_CONFIG); }},
      {"vital", [&] { store_->SetVitalDataInstances(serials_); }},
      {"cached", [&] { store_->SetCachedDataInstances(states_); }},
      {"DeleteInstances", [&] { store_->DeleteInstances(Filter(Switch(""), R"({"mtu":1})")); }},
      {"Update", [&] { store_->Update(mtus_[0], EXTERNAL); }},
  };
  const auto look = [&] { return database_.Lines("SELECT * FROM Config"); };
  for (const auto& [name, operation] : operations) {
    PutThree();
    EXPECT_GE(FailEachStep(name, operation, look), 4)
        << name << ": begin, statements and commit have failed in turn";
  }
  PutThree();
  const std::string before = look();
  {
    ConfigStoreTransaction transaction(store_);
    store_->Delete(Switch("s3"));
    DBStore::testing::SetHook([](Operation asked, std::string_view sql) {
      return asked == Operation::EXECUTE && sql.find("INSERT") != sql.npos ? 1 : 0;
    });
    EXPECT_EQ(Raised([&] { store_->SetInstances(mtus_, EXTERNAL); }),
              "CSE 2000 WriteComplete failed");
    DBStore::testing::SetHook({});
    EXPECT_EQ(store_->GetInstanceIds(switch_), (std::list<std::string>{"s1", "s2"}))
        << "the failed level undid itself alone";
  }
  EXPECT_EQ(look(), before);
}

}  // namespace
}  // namespace TarnConfigStore
