#include "tarnconfigstore/kernel_options.h"

#include "tarnconfigstore/boot_state.h"

#include "support/next_boot_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

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
