// Rows that are not what they should be: what is found, what is done about it, and where every value
// is afterwards.
#include "tarnconfigstore/host.h"
#include "tarnconfigstore/key_values.h"
#include "tarnconfigstore/listing.h"
#include "tarnconfigstore/next_boot_store.h"

#include "doctor/doctored_host.h"
#include "notify/listener.h"
#include "support/captured_log.h"
#include "support/raised.h"

#include <algorithm>

using namespace TarnConfigStore;
using TestSupport::Database;
using TestSupport::WriteFile;

namespace {

class DamagedRows : public TestSupport::DoctoredHost {
 protected:
  DamagedRows() { Sql("DELETE FROM Config WHERE Identifier <> 's1'"); }

  void Put(const std::string& key, const std::string& id, const std::string& columns,
           const std::string& values) const {
    Sql("INSERT OR REPLACE INTO Config(Component, ConfigGroup, Name, Identifier, Version, "
        "Revision, " +
        columns + ") VALUES('tarn', 'test', '" + key + "', '" + id + "', '2.1', 7, " + values +
        ")");
  }
  void Stage(const std::string& key, const std::string& id, const std::string& action,
             const std::string& value = "NULL") const {
    Sql("PRAGMA ignore_check_constraints=1; INSERT INTO DesiredUserConfig(Component, ConfigGroup, "
        "Name, Identifier, Version, Value, BootAction) VALUES('tarn', 'test', '" +
        key + "', '" + id + "', '1.0', " + value + ", '" + action + "')");
  }
  /// The installed type can no longer be read.
  void Damage(const std::string& key) const {
    Database(types_).Run("UPDATE Types SET Document = '{' WHERE Name = '" + key + "'");
  }
  std::string Row(const std::string& key, const std::string& id) const {
    const std::string rows = Database(host_).Rows();
    const std::string name = "tarn/test/" + key + "/" + id + " ";
    const std::size_t at = rows.find(name);
    return at == std::string::npos
               ? "gone"
               : rows.substr(at + name.size(), rows.find('\n', at) - at - name.size());
  }
  /// Kinds found, what was done, what is found afterwards.
  std::string Repair() {
    const std::string found = Kinds(ExamineHost().findings);
    report_ = RepairHost({});
    EXPECT_EQ(Kinds(report_.before.empty() ? report_.findings : report_.before), found);
    return found + " | " + Actions(report_) + " | " + Kinds(report_.findings);
  }
  bool IsAside(const std::string& text) const {
    return PutAside(report_).find(text) != std::string::npos;
  }

  Report report_;
  TestSupport::CapturedLog log_;
};

TEST_F(DamagedRows, ThatAreNotJsonArePutAsideValueByValue) {
  Put("switch", "a", "UserValue, VitalValue, CachedValue",
      R"('{"name":"a","mtu":', '{"name":"a","serial":"x"}', '[1]')");
  Put("gone", "", "UserValue, AutoConfValue", R"('{', X'7b22ff')");
  EXPECT_EQ(Repair(),
            "row-not-json row-not-json row-unknown-type row-not-json row-not-json | backup "
            "row-not-json row-not-json row-not-json row-not-json | ");
  EXPECT_EQ(Row("switch", "a"), R"(u=- d=- a=- v={"name":"a","serial":"x"} c=- ok=1 rev=7)");
  EXPECT_TRUE(IsAside(R"("UserValue": "{\"name\":\"a\",\"mtu\":")"));
  EXPECT_TRUE(IsAside(R"("CachedValue": "[1]")"));
  EXPECT_TRUE(IsAside("base64"));
  // The others of the type can be read again, and the backup has all as it was.
  EXPECT_EQ(ListStored({"switch", "test", "tarn"}).size(), 2U);
  EXPECT_TRUE(std::filesystem::exists(report_.keepingPlace + "/backup"));
}

TEST_F(DamagedRows, WithTheIdOfAnotherInstanceGetTheirOwn) {
  Put("switch", "a", "UserValue, VitalValue",
      R"('{"mtu":1500,"name":"b"}', '{"name":"b","serial":"x"}')");
  EXPECT_EQ(Repair(), "row-other-id row-other-id | backup row-other-id row-other-id | ");
  EXPECT_EQ(Row("switch", "a"),
            R"(u={"mtu":1500,"name":"a"} d=- a=- v={"name":"a","serial":"x"} c=- ok=1 rev=7)");
  EXPECT_TRUE(IsAside(R"({\"mtu\":1500,\"name\":\"b\"})"));
}

TEST_F(DamagedRows, WithMembersInTheWrongPartAreDividedAgain) {
  Put("switch", "a", "UserValue, DesiredValue",
      R"('{"name":"a","serial":"x","mtu":1500}', '{"name":"a","serial":"x","mtu":9000}')");
  EXPECT_EQ(Repair(), "row-parts | backup row-parts | ");
  EXPECT_EQ(
      Row("switch", "a"),
      R"(u={"name":"a","mtu":1500} d={"name":"a","mtu":9000} a=- v={"name":"a","serial":"x"} )"
      "c=- ok=1 rev=7");
}

TEST_F(DamagedRows, ThatDoNotFitOrWhoseTypeIsMissingStayAsTheyAre) {
  Put("switch", "a", "UserValue", R"('{"name":"a","mtu":"wide","other":1}')");
  Put("plain", "", "UserValue, Success", R"('{"name":"p"}', 0)");
  Put("unknown", "u", "UserValue", R"('{"id":"u"}')");
  const Rows before = Look();
  EXPECT_EQ(Repair(),
            "row-misfit row-misfit row-unknown-type |  | row-misfit row-misfit row-unknown-type");
  EXPECT_EQ(Look(), before);
  EXPECT_TRUE(report_.keepingPlace.empty()) << "nothing was to be done";
  const auto misfit =
      std::find_if(report_.findings.begin(), report_.findings.end(),
                   [](const DoctorFinding& found) { return found.kind == "row-misfit"; });
  EXPECT_EQ(misfit->object.instanceId + misfit->pointer, "a/mtu");
  // A note: it waits for the upgrade to be confirmed.
  EXPECT_NE(report_.ToJson().find("row-unconfirmed"), std::string::npos);
  const std::string file = host_.Root() + "/unknown.json";
  WriteFile(file,
            TestSupport::TypeFile(
                "unknown", "1.0",
                R"({"type":"object","properties":{"id":{"type":"string","instanceId":true}}})"));
  EXPECT_EQ(Kinds(RepairHost({{file}}).findings), "row-misfit row-misfit");
  EXPECT_EQ(Look(), before);
}

TEST_F(DamagedRows, ThatAreStagedAndCanNeverBeApplied) {
  Stage("staged-plain", "", "SET", R"('{"name":5}')");
  Stage("gone", "", "SET", R"('{"name":"kept"}')");
  Stage("switch", "x", "DELETE_INSTANCE");
  Stage("plain", "", "REPLACE", R"('{"name":"odd"}')");
  EXPECT_NE(TestSupport::Raised([] { ListStaged({"", "", ""}); }), "nothing");
  // While the host is remediated, what is staged is not ours.
  SetKeyValue("BOOT_MODE", "1");
  EXPECT_EQ(Repair(),
            "staged-orphan staged-unknown-action staged-misfit staged-orphan |  | staged-orphan "
            "staged-unknown-action staged-misfit staged-orphan");
  SetKeyValue("BOOT_MODE", "4");
  EXPECT_EQ(
      Repair(),
      "staged-orphan staged-unknown-action staged-misfit staged-orphan | backup staged-orphan "
      "staged-unknown-action staged-orphan | staged-misfit");
  EXPECT_EQ(Database(host_).Staged(), R"(tarn/test/staged-plain/ SET u={"name":5} v=- c=- 1.0)");
  for (const char* text :
       {R"({\"name\":\"kept\"})", "REPLACE", R"({\"name\":\"odd\"})", "DELETE_INSTANCE"}) {
    EXPECT_TRUE(IsAside(text)) << text;
  }
  // With objects of the type stored, its type file is what is missing, and it stays; so does what is
  // staged of a type that is only damaged.
  Damage("staged-plain");
  EXPECT_EQ(Repair(), "type-damaged staged-unknown-type |  | type-damaged staged-unknown-type");
  WriteFile(host_.Root() + "/staged.json", TestSupport::Staged(TestSupport::kPlainType, "staged"));
  EXPECT_EQ(Actions(RepairHost({{host_.Root() + "/staged.json"}})), "backup type-installed");
  Put("lost", "", "UserValue", "'{}'");
  Stage("lost", "", "SET", "'{}'");
  EXPECT_EQ(Repair(),
            "row-unknown-type staged-unknown-type staged-misfit |  | row-unknown-type "
            "staged-unknown-type staged-misfit");
}

TEST_F(DamagedRows, ThatTypesBringAlongAreWrittenAgain) {
  const Rows before = Look();
  Sql("UPDATE DefaultConfig SET Value = '{\"a\":2}'");
  EXPECT_EQ(Repair(), "defaults-differ | backup defaults-differ | ");
  EXPECT_EQ(Look(), before);
  Sql("INSERT INTO DefaultConfig(Component, ConfigGroup, Name, Identifier, Version) VALUES('tarn', "
      "'test', 'nobody', '', '1')");
  EXPECT_EQ(Repair(), "defaults-unknown-type |  | defaults-unknown-type");
}

TEST_F(DamagedRows, NoSecretIsToldByAFinding) {
  InstallType(host_, TestSupport::TypeFile("vault", "1.0",
                                           R"({"type":"object","properties":{"id":{"type":"string",
      "instanceId":true},"key":{"type":"string","secret":true,"maxLength":4}}})"));
  Put("vault", "a", "UserValue", R"('{"id":"a","key":"geheimnis"}')");
  Put("vault", "b", "UserValue", R"('{"id":"b","key":"geheimnis",}')");
  Repair();
  EXPECT_EQ(report_.ToJson().find("geheimnis"), std::string::npos);
  EXPECT_EQ(Kinds(report_.findings), "row-misfit");
  EXPECT_TRUE(IsAside("geheimnis")) << "put aside it is kept, for the owner alone";
}

TEST_F(DamagedRows, AFailureInTheMiddleLeavesThemAsTheyWere) {
  Put("switch", "a", "UserValue", R"('{"name":"a",')");
  Stage("gone", "", "SET", "'{}'");
  const Rows before = Look();
  for (int step = 0; step < 3; ++step) {
    int countdown = step;
    DBStore::testing::SetHook([&](DBStore::testing::Operation asked, std::string_view sql) {
      const bool writes = sql.rfind("UPDATE", 0) == 0 || sql.rfind("DELETE", 0) == 0;
      return ((asked == DBStore::testing::Operation::EXECUTE && writes) ||
              asked == DBStore::testing::Operation::COMMIT) &&
                     countdown-- == 0
                 ? 1
                 : 0;
    });
    const Report report = RepairHost({});
    DBStore::testing::SetHook({});
    EXPECT_EQ(Actions(report), "backup rows!") << step;
    EXPECT_EQ(Look(), before);
  }
  EXPECT_EQ(Kinds(RepairHost({}).findings), "");
}

TEST_F(DamagedRows, TheSurroundingsAreLookedAt) {
  const std::string allowlist = host_.Path(HostPaths::kNotifyAllowlist);
  const auto find = [](const std::string& kind) {
    const Report report = ExamineHost();
    for (const DoctorFinding& finding : report.findings) {
      if (finding.kind == kind) {
        return finding.message;
      }
    }
    return std::string("-");
  };
  WriteFile(allowlist, R"(["tarn.test.plain", "tarn.test.*", "tarn.none.*", "odd"])");
  EXPECT_NE(find("allowlist-unknown-type").find("odd"), std::string::npos);
  EXPECT_EQ(find("nobody-listens"), "-") << "nobody asked for notifications";
  SetKeyValue("NOTIFY_KEELD", "true");
  EXPECT_NE(find("nobody-listens"), "-");
  std::filesystem::current_path(host_.Root());
  TestSupport::Listener daemon("kslLocalSocketKeeldNotifyWisp");
  EXPECT_EQ(find("nobody-listens"), "-");
  EXPECT_EQ(daemon.Receive(), "") << "nothing is announced";
  std::filesystem::current_path("/");
  for (const char* text : {"[", "{}", "[1]"}) {
    WriteFile(allowlist, text);
    EXPECT_NE(find("allowlist-broken"), "-") << text;
  }
}

}  // namespace
