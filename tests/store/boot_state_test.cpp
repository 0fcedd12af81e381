#include "tarnconfigstore/boot_state.h"

#include "tarnconfigstore/diagnostics.h"
#include "tarnconfigstore/kernel_options.h"

#include "persistence/connection.h"
#include "persistence/desired_view.h"
#include "support/next_boot_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class BootState : public TestSupport::NextBootFixture {
 protected:
  // "s1 1 2 0 7 touched|...": user's and pending value, whether confirmed, revision, of each row.
  std::string Rows() {
    return database_.Lines(R"(SELECT group_concat(Identifier || ' ' ||
        ifnull(UserValue ->> 'mtu', '-') || ifnull(DesiredValue ->> 'mtu', '-') || Success ||
        Revision || iif(ModifiedTime > '2020-01-02', ' touched', ' left'), '|') FROM Config)");
  }
  void PutPending() {
    PutRow("s1", R"("mtu":1)", R"("mtu":2)", "", "", 1);
    PutRow("s2", R"("mtu":1)", "", "", "", 0);
    PutRow("s3", R"("mtu":1)", R"("mtu":2)", "", "", 0);
    PutRow("s4", R"("mtu":1)", "", "", "", 1);
  }
};

TEST_F(BootState, BootInfoIsItsTypeOrSaysWhatIsWrong) {
  const auto info = [](const std::string& text) {
    SetKeyValue("BOOT_INFO", text);
    int type = -1;
    const std::string raised = Raised([&] { type = GetBootInfo(); });
    return raised == "nothing" ? std::to_string(type) : raised.substr(0, 47);
  };
  const std::string unreadable = "CSE 2000 Failed to read BOOT_INFO database.";
  EXPECT_EQ(Raised([] { GetBootInfo(); }), unreadable) << "there is no entry";
  EXPECT_EQ(info("{}") + info(R"({"type":2,"more":[]})") + info(R"({"type":-3})"), "02-3");
  for (const char* broken : {"", "{", "text", R"({"type":2} x)", "{\"type\":\"\xff\"}"}) {
    EXPECT_EQ(info(broken), unreadable) << broken;
  }
  for (const char* other : {"[]", "2", "null", R"({"type":"2"})", R"({"type":2.0})",
                            R"({"type":null})", R"({"type":4294967296})"}) {
    EXPECT_EQ(info(other).substr(0, 8), "CSE 1082") << other;
  }
  Fail(Operation::READ_KEY_VALUE, 10);
  EXPECT_EQ(Raised([] { GetBootInfo(); }), unreadable);
}

TEST_F(BootState, StatusConfirmsOrDropsWhatIsPending) {
  const std::string s4 = "|s4 1-17 left";
  PutPending();
  SetBootStatus(Many("s1"), true);
  EXPECT_EQ(Rows(), "s1 2-17 touched|s2 1-07 left|s3 1207 left" + s4);
  SetBootStatus(Many(""), true);
  EXPECT_EQ(Rows(), "s1 2-17 touched|s2 1-17 left|s3 2-17 touched" + s4)
      << "being confirmed changes no value";
  PutPending();
  SetBootStatus(Many("s1"), false);
  EXPECT_EQ(Rows(), "s1 1-17 touched|s2 1-07 left|s3 1207 left" + s4);
  SetBootStatus(Many(""), false);
  EXPECT_EQ(Rows(), "s1 1-17 touched|s2 1-07 left|s3 1-07 touched" + s4);

  PutRow(one_, R"({"name":"a"})", R"({"name":"b"})", "", "", "", 1);
  SetBootStatus(one_, true);
  EXPECT_EQ(Data(store_->Get(one_)), R"({"name":"b"})");
  SetBootStatus({"such", "no", "tarn"}, true);

  const ConfigStoreTransaction transaction(store_);
  ExpectRaised({{"CSE 2000 SetBootStatus: Failed to mark success status for given csoId.",
                 [&] { SetBootStatus(one_, true); }},
                {"CSE 2000 DeleteDesiredValue: Failed to delete DesiredValue for given csoId.",
                 [&] { SetBootStatus(one_, false); }}});
  EXPECT_NE(GetLastStoreError().message.find("transaction"), std::string::npos);
}

TEST_F(BootState, APartIsConfirmedAndTheRestDropped) {
  PutRow("s1", R"("mtu":1,"ports":[{"id":"p1","vlan":1}])",
         R"("mtu":2,"ports":[{"id":"p1","vlan":2},{"id":"p2","vlan":3}])", "", "", 0);
  const std::string before = State();
  ExpectRaised(
      {{"CSE 2000 partial config being restored is not part of desired config",
        [&] { SetPartialBootStatus(Mtu("s1", 3)); }},
       {"CSE 2000 desired config is empty", [&] { SetPartialBootStatus(Mtu("s9", 3)); }},
       {"VE 1088", [&] { SetPartialBootStatus(ManyObject("s1", R"("serial":"x")")); }},
       {"nothing", [&] { SetPartialBootStatus(nullptr); }},
       {"nothing", [&] { SetPartialBootStatus(Object(Many("s1"), R"({"name":"s1"})")); }}});
  EXPECT_EQ(State(), before);
  const auto restore = [part = ManyObject("s1", R"("ports":[{"id":"p2","vlan":3}])")] {
    SetPartialBootStatus(part);
  };
  EXPECT_GE(FailEachStep("partial", restore, [&] { return State(); }), 6);
  EXPECT_EQ(
      database_.Rows(),
      R"(tarn/test/many-switch/s1 u={"name":"s1","mtu":1,"ports":[{"id":"p1","vlan":1},{"id":"p2","vlan":3}]} )"
      "d=- a=- v=- c=- ok=1 rev=7");
}

TEST_F(BootState, SeveralAreJudgedTogetherOrNotAtAll) {
  PutPending();
  const auto judge = [&] { SetBootStatus({Many("s1"), Many("s3")}, true); };
  EXPECT_EQ(FailEachStep("several", judge, [&] { return State(); }), 6);
  EXPECT_EQ(Rows(), "s1 2-17 touched|s2 1-07 left|s3 2-17 touched|s4 1-17 left");
}

TEST_F(BootState, SharedTypesAreJudgedTogether) {
  InstallType(host_, TestSupport::TypeFile("nic", "1", R"({"type":"object","shared":true})"));
  const Id nic("nic", "test", "tarn");
  const auto status = [](bool accept) { return Raised([=] { SetSharedBootStatus(accept); }); };
  PutPending();
  PutRow(nic, R"({"name":"a"})", R"({"name":"b"})", "", "", "", 1);
  {
    const ConfigStoreTransaction transaction(store_);
    EXPECT_EQ(status(true), "CSE 2000 Begin Transaction failed for: SetSharedBootStatus");
  }
  EXPECT_EQ(status(true), "nothing");
  EXPECT_EQ(Data(store_->Get(nic)), R"({"name":"b"})");
  EXPECT_NE(Rows().find("s1 1217 left"), std::string::npos) << "not shared";
  PutRow(nic, R"({"name":"b"})", R"({"name":"c"})", "", "", "", 1);
  EXPECT_EQ(status(false) + Data(store_->Get(nic)), R"(nothing{"name":"b"})");
  Fail(Operation::ATTACH, 14);
  EXPECT_EQ(status(true), "CSE 2000 Failed to attach schema store");
}

// Who sees which value of a row: user's 1, pending 2, automatic 3, and whether the vital one too.
TEST_F(BootState, EachReaderSeesItsValue) {
  const auto sketch = [](const ObjectHandle& object) {
    return object ? object->GetPath("/mtu").value_or("-") + (object->GetPath("/serial") ? "x" : "")
                  : "none";
  };
  const struct {
    const char* instance;
    const char* user;
    const char* desired;
    int success;
    const char* seen;  // Get outside and inside an upgrade, desired user only, desired with all
  } cases[] = {
      {"confirmed", R"("mtu":1)", "", 1, "1x 1x none -x"},
      {"pending", R"("mtu":1)", R"("mtu":2)", 1, "1x 2x 2 2x"},
      {"unconfirmed", R"("mtu":1)", "", 0, "3x 1x 1 1x"},
      {"both", R"("mtu":1)", R"("mtu":2)", 0, "3x 2x 1 1x"},
      {"neither", "", "", 1, "3x 3x none -x"},
  };
  for (const auto& each : cases) {
    PutRow(each.instance, each.user, each.desired, R"("mtu":3)", R"("serial":"x")", each.success);
    const Id id = Many(each.instance);
    std::string seen = sketch(store_->Get(id));
    SetUpgradeContext("1");
    seen += " " + sketch(store_->Get(id));
    SetUpgradeContext("0");
    for (const FLAG flag : {DESIRED_USER_ONLY, DESIRED_WITH_VITAL_AND_CACHED}) {
      seen += " " + sketch(GetDesiredUserConfig(id, flag));
    }
    EXPECT_EQ(seen, each.seen) << each.instance;
  }
  PutRow("neither", "", "", R"("mtu":3)", "", 1);
  EXPECT_EQ(sketch(GetDesiredUserConfig(Many("neither"), DESIRED_WITH_VITAL_AND_CACHED)), "none");
  const auto list = [&](FLAG flag) {
    std::string text;
    for (const auto& object : GetDesiredUserConfigInstances(Many("any"), flag)) {
      EXPECT_EQ(object->GetRevision(), 7);
      text += object->GetConfigStoreObjectId().instanceId + ":" + sketch(object) + " ";
    }
    return text;
  };
  EXPECT_EQ(list(DESIRED_USER_ONLY), "both:1 pending:2 unconfirmed:1 ");
  EXPECT_EQ(list(DESIRED_WITH_VITAL_AND_CACHED), "both:1x confirmed:-x pending:2x unconfirmed:1x ");
  EXPECT_EQ(GetDesiredUserConfigContents(GetDBStore(DBStore::Type::CURRENT_STORE, true)).size(),
            3U);
}

TEST_F(BootState, ReadsCheckTheirTypeAndReportFailures) {
  EXPECT_EQ(GetSchemaVersion(Many("")) + " " + GetSchemaVersion(plain_), "2.1 1.0");
  EXPECT_EQ(GetSchemaVersion({"such", "no", "tarn"}), "");
  EXPECT_EQ(log_.Count("0 GetSchemaVersion: Schema object not found"), 1);
  Fail(Operation::EXECUTE);
  ExpectRaised({{"VE 2000 Non-Singleton object should contain instanceId",
                 [] { GetDesiredUserConfig(Many(""), DESIRED_USER_ONLY); }},
                {"VE 2000 API called for singleton object, non-singleton expected",
                 [&] { GetDesiredUserConfigInstances(one_, DESIRED_USER_ONLY); }},
                {"CSE 2000 Get failed: " + Many("s1").toString(),
                 [] { GetDesiredUserConfig(Many("s1"), DESIRED_USER_ONLY); }},
                {"CSE 2000 Read Instances failed for: " + Many("").toString(),
                 [] { GetDesiredUserConfigInstances(Many(""), DESIRED_USER_ONLY); }}});
}

class KernelOptions : public TestSupport::NextBootFixture {
 protected:
  KernelOptions() {
    InstallType(host_, R"({"component":"tarn","group":"tkernel","key":"options","version":"1.0",
      "schema":{"type":"object","rebootRequired":true,"properties":{
        "cpus":{"type":"integer"},"console":{"type":"string","vital":true},
        "seen":{"type":"object","cached":true,"properties":{"at":{"type":"string"}}}}}})");
  }
  std::string Row() {
    return database_.Rows().substr(std::string("tarn/tkernel/options/ ").size());
  }
  Id id_{"options", "tkernel", "tarn"};
};

TEST_F(KernelOptions, WaitInTheRowUntilTheBootIsConfirmed) {
  EXPECT_EQ(Data(GetKernelOptions(id_)), "none");
  PutRow(id_, R"({"cpus":1})", "", "", R"({"console":"a"})", "", 1);
  EXPECT_EQ(Data(GetKernelOptions(id_)), R"({"console":"a","cpus":1})");
  const auto wanted = Object(id_, R"({"cpus":2,"console":"b"})");
  const auto set = [&] { SetKernelOptions(wanted); };
  EXPECT_GE(FailEachStep("set", set, [&] { return State(); }), 4);
  EXPECT_EQ(Row(), R"(u={"cpus":1} d={"cpus":2} a=- v={"console":"b"} c=- ok=1 rev=8)");
  EXPECT_EQ(store_->Get(id_)->GetCreationTime(), "2020-01-01 00:00:00");
  EXPECT_EQ(Data(GetKernelOptions(id_)), R"({"console":"b","cpus":2})");
  EXPECT_EQ(Data(store_->Get(id_)), R"({"console":"b","cpus":1})");
  SetBootStatus(id_, true);
  EXPECT_EQ(Row(), R"(u={"cpus":2} d=- a=- v={"console":"b"} c=- ok=1 rev=8)");
  SetKernelOptions(nullptr);
  SetKernelOptions(Object(id_, "{}"));
  EXPECT_EQ(store_->GetRevision(id_), 8);
}

TEST_F(KernelOptions, ComeFromWhatIsStagedWhileTheHostIsRemediated) {
  const auto staged = Object(id_, R"({"cpus":8,"console":"s"})");
  nextBoot_->Set(staged);
  EXPECT_EQ(Data(GetKernelOptions(id_)), "none");
  SetKeyValue("BOOT_MODE", "1");
  EXPECT_EQ(Data(GetKernelOptions(id_)), R"({"cpus":8})") << "vital options are the current row's";
  Set(id_, R"({"cpus":1,"console":"a"})");
  EXPECT_EQ(Data(GetKernelOptions(id_)), R"({"console":"a","cpus":8})");
  EXPECT_EQ(GetKernelOptions(id_)->GetVersion(), "1.0");
  const std::string before = State();
  EXPECT_EQ(Raised([&] { SetKernelOptions(staged); }),
            "CSE 2000 Tarn host is being remediated by ORC, cannot set next-boot configuration.");
  EXPECT_EQ(State(), before);
  database_.Run("DELETE FROM DesiredUserConfig");
  EXPECT_EQ(Data(GetKernelOptions(id_)), R"({"console":"a"})");
  Fail(Operation::READ_KEY_VALUE, 10);
  EXPECT_EQ(Raised([&] { GetKernelOptions(id_); }), "CSE 2000 Failed to read value from database.");
}

TEST_F(KernelOptions, AreOneObjectOfOneType) {
  const std::string other = "VE 2000 API should only be invoked for Kernel options configuration.";
  for (const Id& id : {Id("Options", "tkernel", "tarn"), Id("options", "test", "tarn"),
                       Id("options", "tkernel", "Tarn")}) {
    EXPECT_EQ(Raised([&] { GetKernelOptions(id); }), other) << id.toString();
  }
  const Id withId("options", "tkernel", "tarn", "x");
  ExpectRaised({{other, [&] { SetKernelOptions(Object(plain_, R"({"name":"a"})")); }},
                {"VE 2000 Singleton object cannot contain", [&] { GetKernelOptions(withId); }},
                {"VE 1089", [&] { SetKernelOptions(Object(id_, R"({"cpus":"x"})")); }},
                // There is no place for them.
                {"VE 1089 The object to be set does not fit its type. | /seen",
                 [&] { SetKernelOptions(Object(id_, R"({"cpus":1,"seen":{"at":"x"}})")); }}});
  RemoveType("tarn", "tkernel", "options", false);
  EXPECT_EQ(Raised([&] { GetKernelOptions(id_); }).substr(0, 8), "CSE 1037");
}

}  // namespace
}  // namespace TarnConfigStore
