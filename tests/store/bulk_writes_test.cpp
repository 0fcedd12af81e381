#include "tarnconfigstore/key_values.h"

#include "support/store_fixture.h"

#include <functional>

namespace TarnConfigStore {
namespace {

using DBStore::testing::Operation;
using TestSupport::Raised;
using Objects = std::vector<std::shared_ptr<ConfigStoreObject>>;

class BulkWrites : public TestSupport::StoreFixture {
 protected:
  // s1 to s3, each with something in every value.
  void PutThree() {
    database_.Run("DELETE FROM Config");
    for (const char* instance : {"s1", "s2", "s3"}) {
      store_->SetUserData(SwitchObject(instance, R"("mtu":1)"), EXTERNAL);
      store_->SetUserData(SwitchObject(instance, R"("mtu":2)"), AUTO_CONFIG);
      store_->SetVitalData(SwitchObject(instance, R"("serial":"x")"));
      store_->SetCachedData(SwitchObject(instance, R"("state":{"up":true})"));
    }
  }
  // "s1:uavc4 s2:...": which values each row has, and its revision.
  std::string Sketch() {
    std::string text;
    for (const std::string& row : database_.Run(
             "SELECT Identifier || ':' || iif(UserValue NOT NULL,'u','') || iif(AutoConfValue NOT "
             "NULL,'a','') || iif(VitalValue NOT NULL,'v','') || iif(CachedValue NOT NULL,'c','') "
             "|| Revision FROM Config")) {
      text += (text.empty() ? "" : " ") + row;
    }
    return text;
  }
  static std::shared_ptr<FilterSpecObject> MtuFilter(int mtu) {
    auto filter = std::make_shared<FilterSpecObject>(Switch(""));
    filter->SetValue("mtu", mtu);
    return filter;
  }
};

TEST_F(BulkWrites, ReplaceOneValueOfAllInstances) {
  const Objects mtus = {SwitchObject("s2", R"("mtu":9)"), SwitchObject("s4", R"("mtu":9)")};
  const Objects serials = {SwitchObject("s2", R"("serial":"y")")};
  const Objects states = {SwitchObject("s2", R"("state":{"up":false})")};
  const auto after = [&](const std::function<void()>& write) {
    PutThree();
    write();
    return Sketch();
  };
  EXPECT_EQ(after([&] { store_->SetUserDataInstances(mtus, EXTERNAL); }),
            "s1:avc4 s2:uavc5 s3:avc4 s4:u1");
  EXPECT_EQ(after([&] { store_->SetUserDataInstances(mtus, AUTO_CONFIG); }),
            "s1:uvc4 s2:uavc5 s3:uvc4 s4:a1");
  EXPECT_EQ(after([&] { store_->SetVitalDataInstances(serials); }), "s1:uac4 s2:uavc5 s3:uac4");
  EXPECT_EQ(after([&] { store_->SetCachedDataInstances(states); }), "s1:uav4 s2:uavc5 s3:uav4");
  EXPECT_EQ(store_->Get(Switch("s2"))->GetData(),
            R"({"name":"s2","mtu":1,"state":{"up":false},"serial":"x"})");
}

TEST_F(BulkWrites, SetInstancesReplacesThemAllAndKeepsTheirHistory) {
  PutThree();
  database_.Run("UPDATE Config SET CreationTime = '2020-01-01 00:00:00'");
  store_->SetInstances(
      {SwitchObject("s4", R"("mtu":4)"), SwitchObject("s2", R"("mtu":2,"serial":"y")")}, EXTERNAL);
  EXPECT_EQ(Sketch(), "s2:uv5 s4:u1");
  EXPECT_EQ(
      database_.Run("SELECT Identifier FROM Config WHERE CreationTime = '2020-01-01 00:00:00'"),
      std::vector<std::string>{"s2"});
  EXPECT_EQ(store_->GetInstanceIds(switch_), (std::list<std::string>{"s2", "s4"}));
  EXPECT_EQ(store_->GetInstancesRevision(switch_),
            (std::list<std::pair<std::string, std::int32_t>>{{"s2", 5}, {"s4", 1}}));
  EXPECT_EQ(store_->GetRevision(Switch("s3")), kDefaultRevision);
}

TEST_F(BulkWrites, DeleteByFilterNameOrType) {
  PutThree();
  store_->SetUserData(SwitchObject("s2", R"("mtu":7)"), EXTERNAL);
  store_->DeleteInstances(MtuFilter(1));
  EXPECT_EQ(Sketch(), "s2:uavc5");
  store_->DeleteInstances(MtuFilter(99));
  EXPECT_EQ(Sketch(), "s2:uavc5") << "conditions that nothing meets delete nothing";
  PutThree();
  store_->DeleteInstances(std::make_shared<FilterSpecObject>(Switch("s3")));
  EXPECT_EQ(Sketch(), "s1:uavc4 s2:uavc4");
  store_->DeleteInstances(nullptr);
  store_->DeleteInstances(std::make_shared<FilterSpecObject>(Switch("")));
  EXPECT_EQ(Sketch(), "");
}

TEST_F(BulkWrites, BadListsAreRefusedBeforeAnythingIsWritten) {
  PutThree();
  const std::string before = database_.Rows();
  const auto each = [&](const Objects& objects) {
    const std::string text = Raised([&] { store_->SetInstances(objects, EXTERNAL); });
    EXPECT_EQ(Raised([&] { store_->SetUserDataInstances(objects, EXTERNAL); }), text);
    EXPECT_EQ(Raised([&] { store_->SetVitalDataInstances(objects); }), text);
    EXPECT_EQ(Raised([&] { store_->SetCachedDataInstances(objects); }), text);
    return text;
  };
  EXPECT_EQ(each({}).substr(0, 8), "IAE 1061");
  EXPECT_EQ(each({nullptr, nullptr}).substr(0, 8), "IAE 1061");
  EXPECT_EQ(log_.Count("1 [1041] SetInstances: The argument is null."), 2);
  const auto good = SwitchObject("s9");
  EXPECT_EQ(each({good, Object(plain_, R"({"name":"a"})")}).substr(0, 8), "IAE 1062");
  EXPECT_EQ(each({good, nullptr, SwitchObject("s9")}),
            "IAE 2000 The instance is listed twice: " + Switch("s9").toString());
  EXPECT_EQ(each({good, SwitchObject("")}),
            "VE 2000 Non-Singleton object should contain instanceId");
  EXPECT_EQ(each({Object(plain_, R"({"name":"a"})")}),
            "VE 2000 API called for singleton object, non-singleton expected");
  const auto other = SwitchObject("s8", R"("other":1)");
  EXPECT_EQ(Raised([&] { store_->SetInstances({good, other}, EXTERNAL); }).substr(0, 7), "VE 1089");
  EXPECT_EQ(Raised([&] {
              store_->SetUserDataInstances({good, other}, EXTERNAL);
            }).substr(0, 7),
            "VE 1087");
  EXPECT_EQ(Raised([&] { store_->SetVitalDataInstances({good, other}); }).substr(0, 7), "VE 1086");
  EXPECT_EQ(Raised([&] { store_->SetCachedDataInstances({good, other}); }).substr(0, 7), "VE 1084");
  store_->SetInstances({SwitchObject("s1", R"("ports":[])")}, EXTERNAL);
  SetKeyValue("IS_BOOT", "true");
  const std::string closed = "VE 2000 API cannot be invoked with EXTERNAL context during boot";
  const auto user = SwitchObject("s9", R"("mtu":1)");
  EXPECT_EQ(Raised([&] { store_->SetInstances({user}, EXTERNAL); }), closed);
  EXPECT_EQ(Raised([&] { store_->SetUserDataInstances({user}, EXTERNAL); }), closed);
  EXPECT_EQ(database_.Rows(), before);
}

TEST_F(BulkWrites, EmptyObjectsAloneAreLeftOut) {
  store_->SetInstances({SwitchObject("s1", R"("ports":[])"), SwitchObject("s2", R"("mtu":2)")},
                       EXTERNAL);
  EXPECT_EQ(Sketch(), "s2:u1");
  EXPECT_EQ(
      log_.Count("1 SetInstances, Configuration object for comp tarn grp test key switch id s1 "
                 "is empty, will not be persisted in the db"),
      1);
}

// Everything that an operation asks of the database is made to fail, one thing after the other: the
// store is as it was before each time, and works as soon as the failing ends.
TEST_F(BulkWrites, AFailureAnywhereLeavesTheStoreAsItWas) {
  const Objects changed = {SwitchObject("s2", R"("mtu":9)"), SwitchObject("s4", R"("mtu":9)")};
  const std::pair<const char*, std::function<void()>> operations[] = {
      {"SetInstances", [&] { store_->SetInstances(changed, EXTERNAL); }},
      {"SetUserDataInstances", [&] { store_->SetUserDataInstances(changed, EXTERNAL); }},
      {"automatic", [&] { store_->SetUserDataInstances(changed, AUTO_CONFIG); }},
      {"vital", [&] { store_->SetVitalDataInstances({SwitchObject("s2", R"("serial":"y")")}); }},
      {"cached",
       [&] { store_->SetCachedDataInstances({SwitchObject("s2", R"("state":{"up":true})")}); }},
      {"DeleteInstances", [&] { store_->DeleteInstances(MtuFilter(1)); }},
      {"Update", [&] { store_->Update(SwitchObject("s2", R"("mtu":9)"), EXTERNAL); }},
  };
  for (const auto& [name, operation] : operations) {
    PutThree();
    const int failures =
        FailEachStep(name, operation, [&] { return database_.Lines("SELECT * FROM Config"); });
    EXPECT_GE(failures, 4) << name << ": begin, statements and commit have failed in turn";
  }
}

TEST_F(BulkWrites, NestInTheCallersTransaction) {
  PutThree();
  const std::string before = database_.Rows();
  {
    ConfigStoreTransaction transaction(store_);
    store_->Delete(Switch("s3"));
    DBStore::testing::SetHook([](Operation asked, std::string_view sql) {
      return asked == Operation::EXECUTE && sql.find("INSERT") != std::string_view::npos ? 1 : 0;
    });
    EXPECT_EQ(Raised([&] { store_->SetInstances({SwitchObject("s1", R"("mtu":5)")}, EXTERNAL); }),
              "CSE 2000 WriteComplete failed");
    DBStore::testing::SetHook({});
    EXPECT_EQ(store_->GetInstanceIds(switch_), (std::list<std::string>{"s1", "s2"}))
        << "the failed level undid itself alone";
  }
  EXPECT_EQ(database_.Rows(), before);
}

}  // namespace
}  // namespace TarnConfigStore
