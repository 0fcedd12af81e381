#include "platform/db_testing.h"
#include "platform/host_paths.h"

#include "faults/operations.h"
#include "faults/prepared_objects.h"
#include "faults/told.h"
#include "support/test_types.h"

#include <sqlite3.h>

#include <filesystem>
#include <stdexcept>

namespace Faults {
namespace {

// A schema that asks for all that has a memory of its own: patterns, formats, names of many places.
constexpr const char* kCheckedType = R"({
  "component": "tarn", "group": "test", "key": "checked", "version": "1.0",
  "schema": { "type": "object", "properties": {
    "pattern": { "type": "string", "pattern": "^(a|b)*c[^\\d]+$" },
    "regex": { "type": "string", "format": "regex" },
    "host": { "type": "string", "format": "idn-hostname" },
    "either": { "anyOf": [ { "type": "integer" }, { "type": "string", "maxLength": 3 } ] } },
    "patternProperties": { "^x-": { "uniqueItems": true } } } })";
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

}  // namespace

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

}  // namespace Faults
