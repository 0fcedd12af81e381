#include "faults/operations.h"

#include "faults/prepared_objects.h"
#include "faults/told.h"

#include <cstdio>
#include <filesystem>
#include <ftw.h>
#include <sys/stat.h>
#include <thread>

namespace Faults {
namespace {

constexpr const char* kDocument =
    R"({"format":1,"config":{"tarn":{"test":{
      "plain":{"name":"from a document","tags":["a","b"]},
      "switch":[{"name":"s1","mtu":7,"rules":[{"allow":"y"}]},{"name":"s7","serial":"n"}],
      "many-switch":[{"name":"m1","mtu":3}]}}}})";

constexpr const char* kCheckedData =
    R"({"pattern":"abcx","regex":"^[a-z]{1,3}$","host":"b\u00fccher.example","either":"abc","x-l":[1,2,[3]]})";

// A row of the table, whose call tells something or does not.
#define TELLS(call) [](Caller& caller) { return static_cast<void>(caller), Told(call); }
#define RUNS(call) [](Caller& caller) { return static_cast<void>(caller), call, Told(); }

std::string GetInAThread(Caller& caller) {
  std::string text;
  std::exception_ptr failure;
  std::thread([&] {
    try {
      text = Told(caller.Store()->Get(kPlain));
    } catch (...) {
      failure = std::current_exception();
    }
  }).join();
  if (failure) {
    std::rethrow_exception(failure);
  }
  return text;
}

std::string AddShipped(Caller& /*caller*/) {
  std::vector<Object> list;
  AddDefaultConfigInstances(kShipped, list);
  return Told(list);
}

std::string ChangeObject(Caller& /*caller*/) {
  const Object object = Make(Switch("s1"), R"({"name":"s1"})");
  for (int i = 0; i < 20; ++i) {
    object->SetValue(("member" + std::to_string(i)).c_str(), "a text that needs room of its own");
  }
  object->CreateSubObject(SubObjectId("ports", "p1"))->SetValue("vlan", 4);
  return Told(object);
}

std::string Commit(Caller& caller) {
  ConfigStoreTransaction transaction(caller.Store());
  caller.Store()->Delete(kPlain);
  caller.Store()->Delete(Switch("s1"));
  return Told(transaction.Commit());
}

std::string Cancel(Caller& caller) {
  ConfigStoreTransaction transaction(caller.Store());
  caller.Store()->Delete(kPlain);
  transaction.Cancel();
  return Told(caller.Store()->Get(kPlain));
}

std::string CancelInside(Caller& caller) {
  ConfigStoreTransaction outer(caller.Store());
  caller.Store()->Delete(kPlain);
  {
    const ConfigStoreTransaction inner(caller.Store());
    caller.Store()->DeleteInstances(Filter(kSwitches));
  }
  return Told(outer.Commit());
}

std::string WriteOverWhatWasRead(Caller& caller) {
  ConfigStore& store = *caller.Store();
  const ObjectForChange read = GetForChange(store, Switch("s1"));
  const auto changed = WriteIfUnchanged(store, {read.state}, [&store] {
    UnsetMembers(store, Switch("s1"), {"/mtu"});
    store.Delete(kPlain);
  });
  return Told(read.object) + std::to_string(changed.size());
}

std::string ApplyNextBoot(Caller& /*caller*/) {
  const ApplyResult result = ApplyNextBootConfig({.bootModeWhenDone = "0"});
  return Told(result.applied) + Told(result.staged);
}

std::string ApplyMerged(Caller& /*caller*/) {
  const ApplyResult result = ApplyNextBootConfig({.bootModeWhenDone = "0",
                                                  .merge = ApplyMerge::MERGE,
                                                  .conflicts = ConflictDecision::CURRENT});
  return Told(result.applied) + Told(result.staged);
}

std::string MakeHost(Caller& /*caller*/) {
  SetHostRoot(GetHostRoot() + "/made");
  return Told(InitializeHost().storePath);
}

std::string BackUp(Caller& /*caller*/) {
  return std::to_string(BackupHost(GetHostRoot() + "/made.backup").content.objects);
}

std::string Restore(Caller& /*caller*/) {
  return std::to_string(
      RestoreHost(GetHostRoot() + "/host.backup", {.force = true}).content.objects);
}

// What is written to the copy is lost with it. What differs is read by what other operations do.
std::string Rehearse(Caller& /*caller*/) {
  const std::string directory = GetHostRoot() + "-copy";
  nftw(
      directory.c_str(),
      [](const char* path, const struct stat*, int, struct FTW*) { return std::remove(path); }, 8,
      FTW_DEPTH | FTW_PHYS);
  mkdir(directory.c_str(), S_IRWXU);
  const Rehearsal rehearsal(directory);
  SetKeyValue("rehearsed", "1");
  return GetKeyValue("rehearsed") + rehearsal.WhyNotWritable();
}

}  // namespace

std::shared_ptr<ConfigStore>& Caller::Store() {
  if (!store_) {
    store_ = ConfigStore::GetStore("");
  }
  return store_;
}

NextBootStore& Caller::NextBoot() {
  if (!nextBoot_) {
    nextBoot_ = Store()->GetNextBootStore();
  }
  return *nextBoot_;
}

const std::vector<OperationGroup>& Groups() {
  static const std::vector<OperationGroup> groups = {
      {"Reads",
       {{"Get", TELLS(caller.Store()->Get(Switch("s1")))},
        {"GetStore", TELLS(ConfigStore::GetStore("")->Get(kPlain))},
        {.name = "GetInAThread", .run = GetInAThread, .startsAThread = true},
        {"GetDefaultConfig", TELLS(caller.Store()->GetDefaultConfig(Instance(kShipped, "d1")))},
        {"GetDefaultConfigInstances",
         TELLS(caller.Store()->GetDefaultConfigInstances(Filter(kShipped)))},
        {"GetInstanceIds", TELLS(caller.Store()->GetInstanceIds(kSwitches))},
        {"GetInstances", TELLS(caller.Store()->GetInstances(Filter(kSwitches, R"({"mtu":9})")))},
        {"GetRevision", TELLS(caller.Store()->GetRevision(kPlain))},
        {"GetInstancesRevision", TELLS(caller.Store()->GetInstancesRevision(kSwitches))},
        {"Validate", TELLS(caller.Store()->Validate(Make(kChecked, kCheckedData)))},
        {"FindingsOfWrite", TELLS(FindingsOfWrite(Make(kPlain, R"({"port":0})"), WriteKind::SET))},
        {"GetConfigOfGroup", TELLS(GetConfigOfGroup("tarn", "test").objects)},
        {"GetConfigDuringBoot", TELLS(GetConfigDuringBoot(kPlain, EXTERNAL))},
        {"AddDefaultConfigInstances", AddShipped},
        {"Objects", ChangeObject}}},
      {"Writes",
       {{"Set",
         RUNS(caller.Store()->Set(Make(kPlain, R"({"name":"second","nested":{}})"), EXTERNAL))},
        {"SetChecked", RUNS(caller.Store()->Set(Make(kChecked, kCheckedData), EXTERNAL))},
        {"SetInstance",
         RUNS(caller.Store()->Set(
             Make(Switch("s1"), R"({"name":"s1","mtu":3,"state":{"up":false},"serial":"w"})"),
             AUTO_CONFIG))},
        {"SetUserData", RUNS(caller.Store()->SetUserData(
                            Make(Switch("s1"), R"({"name":"s1","mtu":4})"), EXTERNAL))},
        {"SetVitalData",
         RUNS(caller.Store()->SetVitalData(Make(Switch("s1"), R"({"name":"s1","serial":"z"})")))},
        {"SetCachedData", RUNS(caller.Store()->SetCachedData(
                              Make(Switch("s1"), R"({"name":"s1","state":{"up":false}})")))},
        {"Update",
         RUNS(caller.Store()->Update(
             Make(Switch("s1"), R"({"name":"s1","mtu":6,"ports":[{"id":"p2","vlan":2}]})"),
             EXTERNAL))},
        {"Delete", RUNS(caller.Store()->Delete(Switch("s1")))}}},
      {"Bulk",
       {{"DeleteInstances",
         RUNS(caller.Store()->DeleteInstances(Filter(kSwitches, R"({"mtu":1})")))},
        {"SetInstances",
         RUNS(caller.Store()->SetInstances({Make(Switch("s1"), R"({"name":"s1","mtu":5})"),
                                            Make(Switch("s9"), R"({"name":"s9","serial":"9"})")},
                                           EXTERNAL))},
        {"SetUserDataInstances", RUNS(caller.Store()->SetUserDataInstances(
                                     {Make(Switch("s3"), R"({"name":"s3","mtu":5})")}, EXTERNAL))},
        {"SetCachedDataInstances", RUNS(caller.Store()->SetCachedDataInstances({Make(
                                       Switch("s3"), R"({"name":"s3","state":{"up":false}})")}))},
        {"SetVitalDataInstances", RUNS(caller.Store()->SetVitalDataInstances(
                                      {Make(Switch("s3"), R"({"name":"s3","serial":"q"})")}))},
        {"Transaction", Commit},
        {"TransactionCancelled", Cancel},
        {"TransactionInside", CancelInside},
        {"WriteIfUnchanged", WriteOverWhatWasRead}}},
      {"NextBoot",
       {{"GetNextBootStore", TELLS(caller.Store()->GetNextBootStore() != nullptr)},
        {"NextBootGet", TELLS(caller.NextBoot().Get(StagedSwitch("m1")))},
        {"NextBootGetInstances", TELLS(caller.NextBoot().GetInstances(Filter(kStagedSwitches)))},
        {"NextBootSet",
         RUNS(caller.NextBoot().Set(Make(StagedSwitch("m2"), R"({"name":"m2","mtu":4})")))},
        {"NextBootDelete", RUNS(caller.NextBoot().Delete(StagedSwitch("m1")))},
        {"NextBootReset", RUNS(caller.NextBoot().Reset(kStagedSwitches))},
        {"NextBootSetInstances", RUNS(caller.NextBoot().SetInstances(
                                     {Make(StagedSwitch("m4"), R"({"name":"m4","mtu":4})")}))},
        {"NextBootDeleteInstances",
         RUNS(caller.NextBoot().DeleteInstances(Filter(kStagedSwitches, R"({"mtu":1})")))},
        {"UpdateNextBoot", TELLS(UpdateNextBoot(Make(StagedSwitch("m1"),
                                                     R"({"name":"m1","serial":"u","mtu":null})")))},
        {"ListPendingChanges", TELLS(ListPendingChanges({}))},
        {"ApplyNextBootConfig", ApplyNextBoot},
        {"ApplyMerged", ApplyMerged}}},
      {"Boot",
       {{"SetKeyValue", RUNS(SetKeyValue("some", "entry"))},
        {"GetKeyValue", TELLS(GetKeyValue("BOOT_INFO"))},
        {"IsBoot", TELLS(IsBoot())},
        {"GetBootInfo", TELLS(GetBootInfo())},
        {"GetUpgradeContext", TELLS(GetUpgradeContext())},
        {"AcceptBootStatus", RUNS(SetBootStatus(StagedSwitch("m2"), true))},
        {"RejectBootStatus", RUNS(SetBootStatus(StagedSwitch("m2"), false))},
        {"SetBootStatuses", RUNS(SetBootStatus({Switch("s3"), kStagedSwitches}, true))},
        {"SetSharedBootStatus", RUNS(SetSharedBootStatus(true))},
        {"SetPartialBootStatus",
         RUNS(SetPartialBootStatus(Make(StagedSwitch("m2"), R"({"name":"m2","mtu":8})")))},
        {"GetDesiredUserConfig",
         TELLS(GetDesiredUserConfig(StagedSwitch("m2"), DESIRED_USER_ONLY))},
        {"GetDesiredUserConfigInstances",
         TELLS(GetDesiredUserConfigInstances(kStagedSwitches, DESIRED_WITH_VITAL_AND_CACHED))},
        {"GetSchemaVersion", TELLS(GetSchemaVersion(kPlain))},
        {"GetKernelOptions", TELLS(GetKernelOptions(kKernel))},
        {"SetKernelOptions", RUNS(SetKernelOptions(Make(kKernel, R"({"console":"b","cpus":2})")))},
        {"ListStored", TELLS(ListStored(kEverything))},
        {"ListOutdated", TELLS(ListOutdated(kEverything))},
        {"ListStaged", TELLS(ListStaged(kEverything))}}},
      {"Documents",
       {{"CreateObjects", TELLS(CreateObjects(kDocument))},
        {"ExportConfig",
         TELLS(ExportConfigText(kEverything, {.allParts = true, .metadata = true}))},
        {"ImportConfig", TELLS(ImportConfig(kDocument, {}))},
        {"ImportReplacing", TELLS(ImportConfig(kDocument, {.mode = ImportMode::REPLACE_ALL}))},
        {"ApplyConfig", TELLS(ApplyConfig(kDocument, {.prune = true, .stage = true}))},
        {"CheckConfig", TELLS(ApplyConfig(kDocument, {.prune = true, .check = true}))},
        {"ComputeDrift", TELLS(ComputeDrift(kDocument, {.complete = true}))},
        {"ComputeDriftFrom", TELLS(ComputeDriftFrom(ReferenceState::NEXT_BOOT, {}))}}},
      {"Members",
       {{"ExplainObject", TELLS(ExplainObject(Switch("s1")).members)},
        {"DescribeType", TELLS(DescribeType(kChecked).members)},
        {"GetEffectiveConfig", TELLS(GetEffectiveConfig(kPlain).object)},
        {"UnsetMembers", TELLS(UnsetMembers(Switch("s1"), {"/mtu"}).members)},
        {"ResetObject",
         TELLS(static_cast<int>(
             ResetObject(Instance(kShipped, "d1"), ResetTarget::SHIPPED).outcome))}}},
      {"Types",
       {{"InstallTypes", TELLS(InstallTypes({GetHostRoot() + "/new"}, {})), true},
        {"InstallMovingMembers", TELLS(InstallTypes({GetHostRoot() + "/moved/switch.json"}, {})),
         true},
        {"CheckTypes", TELLS(CheckTypes({GetHostRoot() + "/moved", GetHostRoot() + "/new"}))},
        {"ListTypes", TELLS(ListTypes())},
        {"GetTypeFile", TELLS(GetTypeFile("tarn", "test", "plain"))},
        {"ExportDocumentSchema", TELLS(ExportDocumentSchema())},
        {"UpgradeRows", TELLS(UpgradeRows("tarn", "test", "switch", false))},
        {"RemoveType", RUNS(RemoveType("tarn", "test", "checked", false))}}},
      {"Hosts",
       {{"InitializeHost", TELLS(InitializeHost().created.size() == 0)},
        {"MakeHost", MakeHost, true, true}}},
      {"Backups", {{"BackupHost", BackUp}, {"RestoreHost", Restore, true}}},
      {"Rehearsals", {{"Rehearsal", Rehearse}}}};
  return groups;
}

}  // namespace Faults
