#include "faults/operations.h"

#include "platform/db_testing.h"
#include "platform/host_paths.h"

#include "faults/told.h"
#include "support/test_types.h"

#include <sqlite3.h>

#include <cstdio>
#include <filesystem>
#include <ftw.h>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>

namespace Faults {
namespace {

using namespace TarnConfigStore;
using Object = std::shared_ptr<ConfigStoreObject>;

const ConfigStoreObjectId kPlain("plain", "test", "tarn");
const ConfigStoreObjectId kSwitches("switch", "test", "tarn");
const ConfigStoreObjectId kStagedSwitches("many-switch", "test", "tarn");
const ConfigStoreObjectId kKernel("options", "tkernel", "tarn");
const ConfigStoreObjectId kShipped("shipped", "test", "tarn");
const ConfigStoreObjectId kEverything("", "", "");

ConfigStoreObjectId Instance(ConfigStoreObjectId type, const std::string& id) {
  type.instanceId = id;
  return type;
}
ConfigStoreObjectId Switch(const std::string& id) {
  return Instance(kSwitches, id);
}
ConfigStoreObjectId StagedSwitch(const std::string& id) {
  return Instance(kStagedSwitches, id);
}

Object Make(const ConfigStoreObjectId& id, const char* json) {
  auto object = std::make_shared<ConfigStoreObject>(id);
  object->SetData(json);
  return object;
}

std::shared_ptr<FilterSpecObject> Filter(const ConfigStoreObjectId& id, const char* json = "{}") {
  auto filter = std::make_shared<FilterSpecObject>(id);
  filter->SetData(json);
  return filter;
}

constexpr const char* kDocument =
    R"({"format":1,"config":{"tarn":{"test":{
      "plain":{"name":"from a document","tags":["a","b"]},
      "switch":[{"name":"s1","mtu":7,"rules":[{"allow":"y"}]},{"name":"s7","serial":"n"}],
      "many-switch":[{"name":"m1","mtu":3}]}}}})";

// A schema that asks for all that has a memory of its own: patterns, formats, names of many places.
constexpr const char* kCheckedType = R"({
  "component": "tarn", "group": "test", "key": "checked", "version": "1.0",
  "schema": { "type": "object", "properties": {
    "pattern": { "type": "string", "pattern": "^(a|b)*c[^\\d]+$" },
    "regex": { "type": "string", "format": "regex" },
    "host": { "type": "string", "format": "idn-hostname" },
    "either": { "anyOf": [ { "type": "integer" }, { "type": "string", "maxLength": 3 } ] } },
    "patternProperties": { "^x-": { "uniqueItems": true } } } })";
const ConfigStoreObjectId kChecked("checked", "test", "tarn");
constexpr const char* kCheckedData =
    R"({"pattern":"abcx","regex":"^[a-z]{1,3}$","host":"b\u00fccher.example","either":"abc","x-l":[1,2,[3]]})";

constexpr const char* kKernelType = R"({"component":"tarn","group":"tkernel","key":"options",
  "version":"1.0","schema":{"type":"object","rebootRequired":true,"properties":{
  "console":{"type":"string","vital":true},"cpus":{"type":"integer"}}}})";

std::string WithVersion(std::string type, const std::string& version) {
  const std::size_t at = type.find(R"("version": ")") + 12;
  return type.replace(at, 3, version);
}

void Install(const std::string& path, const std::string& type) {
  TestSupport::WriteFile(path, type);
  Told(InstallTypes({path}, {}));
}

void Run(const std::string& sql) {
  sqlite3* database = nullptr;
  sqlite3_open_v2(DBStore::testing::StoreName().c_str(), &database,
                  SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI, nullptr);
  const int code = sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr);
  sqlite3_close(database);
  if (code != SQLITE_OK) {
    throw std::runtime_error("the host of the sweep cannot be made: " + sql);
  }
}

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

void PrepareHost(const std::string& root) {
  const std::string file = root + "/type.json";
  for (
      const std::string& type :
      {std::string(TestSupport::kPlainType), std::string(TestSupport::kSwitchType),
       TestSupport::Staged(TestSupport::kPlainType, "one"),
       TestSupport::Staged(TestSupport::kSwitchType, "many"), std::string(kCheckedType),
       std::string(kKernelType),
       TestSupport::TypeFile(
           "shipped", "1.0", R"({"type":"object","properties":{
            "id":{"type":"string","instanceId":true},"n":{"type":"integer"}}})",
           R"({"instance":"d1","value":{"id":"d1","n":1}},{"instance":"d2","value":{"id":"d2","n":2}})")}) {
    Install(file, type);
  }
  std::filesystem::remove(file);
  // What is installed by an operation: a new type, and a version that moves members to other parts.
  TestSupport::WriteFile(root + "/new/a.json", TestSupport::TypeFile("added", "1.0"));
  TestSupport::WriteFile(root + "/new/b.json", TestSupport::TypeFile("other", "1.0"));
  std::string moved = WithVersion(TestSupport::kSwitchType, "3.0");
  moved.replace(moved.find(R"("mtu": { "type": "integer")"), 26,
                R"("mtu": { "type": "integer", "vital": true)");
  TestSupport::WriteFile(root + "/moved/switch.json", moved);

  Caller caller;
  const auto& store = caller.Store();
  store->Set(Make(kPlain, R"({"name":"first","port":80,"tags":["x"]})"), EXTERNAL);
  for (const char* id : {"s1", "s2", "s3"}) {
    store->Set(Make(Switch(id), (std::string(R"({"name":")") + id +
                                 R"(","mtu":1,"serial":"v","state":{"up":true},
                                 "ports":[{"id":"p1","vlan":1,"mac":"m"}]})")
                                    .c_str()),
               EXTERNAL);
  }
  store->SetUserData(Make(Switch("s1"), R"({"name":"s1","mtu":9})"), AUTO_CONFIG);
  store->Set(Make(StagedSwitch("m1"), R"({"name":"m1","mtu":1})"), EXTERNAL);
  store->Set(Make(StagedSwitch("m2"), R"({"name":"m2","mtu":2})"), EXTERNAL);
  caller.NextBoot().SetInstances({Make(StagedSwitch("m1"), R"({"name":"m1","mtu":5})"),
                                  Make(StagedSwitch("m3"), R"({"name":"m3","mtu":6})")});
  SetKernelOptions(Make(kKernel, R"({"console":"a","cpus":1})"));
  for (const auto& [key, value] : {std::pair("BOOT_INFO", R"({"type":2})"), {"BOOT_MODE", "0"}}) {
    SetKeyValue(key, value);
  }
  Run("UPDATE Config SET DesiredValue='{\"name\":\"m2\",\"mtu\":8}' WHERE Identifier='m2';"
      "UPDATE Config SET UserValue='{\"name\":\"m1\",\"mtu\":3}', "
      "VitalValue='{\"name\":\"m1\",\"serial\":\"w\"}' WHERE Identifier='m1';"
      "UPDATE Config SET Success=0 WHERE Identifier='s3';"
      "UPDATE Config SET Version='1.9' WHERE Identifier='s2'");
  // Changes are announced, to a daemon that is not there.
  TestSupport::WriteFile(root + HostPaths::kNotifyAllowlist,
                         R"(["tarn.test.plain", "tarn.test.switch"])");
  SetKeyValue("NOTIFY_KEELD", "true");
  BackupHost(root + "/host.backup");
  store->Delete(Switch("s2"));
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
