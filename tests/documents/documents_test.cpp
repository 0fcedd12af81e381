#include "tarnconfigstore/documents.h"

#include "tarnconfigstore/drift.h"

#include "support/child_process.h"
#include "support/next_boot_fixture.h"

#include <sstream>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

// All of tarn/test/secrets is the user's: a secret text, secrets in lists with and without ids, and a
// secret that is an object.
constexpr const char* kSecretType = R"({
  "component": "tarn", "group": "test", "key": "secrets", "version": "1.0",
  "schema": { "type": "object", "properties": {
    "password": { "type": "string", "secret": true, "maxLength": 8 }, "n": { "type": "integer" },
    "users": { "type": "array", "items": { "type": "object", "properties": {
      "id": { "type": "string", "instanceId": true },
      "token": { "type": "object", "secret": true, "additionalProperties": true } } } },
    "plain": { "type": "array", "items": { "type": "object", "properties": {
      "name": { "type": "string" }, "key": { "type": "string", "secret": true } } } } } }
})";

class Documents : public TestSupport::NextBootFixture {
 protected:
  Documents() { TestSupport::InstallType(host_, kSecretType); }

  static std::string Export(ExportOptions options = {}, const Id& prefix = {"", "", ""}) {
    return ExportConfigText(prefix, options);
  }
  static std::string WithoutBlanks(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
    return text;
  }
  static std::string Config(const std::string& types) {
    return R"({"format":1,"config":{"tarn":{"test":{)" + types + "}}}}";
  }
  std::string Rows() {
    return database_.Lines(
        "SELECT Name, Identifier, Version, ifnull(UserValue,'-'), ifnull(AutoConfValue,'-'), "
        "ifnull(VitalValue,'-'), ifnull(CachedValue,'-'), ifnull(DesiredValue,'-'), Success, "
        "Revision, CreationTime FROM Config ORDER BY Component, ConfigGroup, Name, Identifier");
  }
  static constexpr int kKilled = 42;
  static std::string Import(const std::string& document, ImportMode mode = ImportMode::MERGE,
                            bool check = false) {
    return ImportConfig(document, {.mode = mode, .check = check}).ToJson();
  }
};

TEST_F(Documents, ExportIsIndentedAndInOrder) {
  Set(plain_, R"({"name":"x","tags":["1"],"nested":{"deep":{"leaf":"a\"b\\"}}})");
  Set(Switch("s2"), R"({"name":"s2","mtu":2,"serial":"s","rules":[{"allow":"a"}]})");
  Set(Switch("s1"), R"({"name":"s1","mtu":1})");
  EXPECT_EQ(Export(), R"({
  "format": 1,
  "config": {
    "tarn": {
      "test": {
        "plain": {
          "name": "x",
          "tags": [
            "1"
          ],
          "nested": {
            "deep": {
              "leaf": "a\"b\\"
            }
          }
        },
        "switch": [
          {
            "name": "s1",
            "mtu": 1
          },
          {
            "name": "s2",
            "mtu": 2,
            "rules": [
              {
                "allow": "a"
              }
            ]
          }
        ]
      }
    }
  }
}
)");
  EXPECT_EQ(WithoutBlanks(Export({}, Switch("s1"))), Config(R"("switch":[{"name":"s1","mtu":1}])"));
  EXPECT_EQ(WithoutBlanks(Export({}, {"", "", "other"})), R"({"format":1,"config":{}})");
}

TEST_F(Documents, RowsThatADocumentLeavesOutAreNamed) {
  PutRow(Switch("s1"), Named("s1", R"("mtu":1)"), "", "", "", "", 0);
  PutRow({"gone", "test", "tarn"}, "{}", "", "", "", "", 1);
  EXPECT_EQ(Raised([] { Export(); }).substr(0, 8), "CSE 1037");
  const auto ignore = [](std::string_view /*piece*/) {};
  const ExportReport report = ExportConfig({"", "", ""}, {.skipUnknown = true}, ignore);
  ASSERT_EQ(report.unknown.size(), 1U);
  EXPECT_EQ(report.unknown[0].key, "gone");
  ASSERT_EQ(report.unconfirmed.size(), 1U);
  EXPECT_EQ(report.unconfirmed[0].instanceId, "s1");
  const std::pair<Id, const char*> misplaced[] = {
      {{"plain", "test", "tarn", "x"}, "with an instance id that its type has not"},
      {{"switch", "test", "tarn"}, "without the instance id that its type has"}};
  for (const auto& [id, reason] : misplaced) {
    PutRow(id, R"({"name":"x"})", "", "", "", "", 1);
    const std::string raised = Raised([&id] { Export({.allParts = true}, id); });
    EXPECT_NE(raised.find(reason), std::string::npos) << raised;
    const ExportOptions skipping{.allParts = true, .skipUnknown = true};
    EXPECT_EQ(ExportConfig(id, skipping, ignore).unknown.size(), 1U);
  }
  PutRow(plain_, "{", "", "", "", "", 1);
  EXPECT_EQ(Raised([] { Export({.skipUnknown = true}); }).substr(0, 8), "IAE 1080");
}

TEST_F(Documents, AllPartsComeBackAsTheyWere) {
  PutRow(plain_, R"({"name":"x"})", R"({"name":"y"})", "", "", "", 1);
  PutRow(Switch("s1"), Named("s1", R"("mtu":1,"rules":[{"allow":"a","cs_generated_id":"g1"}])"),
         Named("s1", R"("mtu":2)"), Named("s1", R"("mtu":3)"), Named("s1", R"("serial":"old")"),
         Named("s1", R"("state":{"up":false},"rules":[{"cs_generated_id":"g1","hits":4}])"), 0);
  PutRow(Switch("s2"), "", "", "", "", Named("s2", R"("state":{"up":true})"), 1);
  nextBoot_->Set(Mtu("m1", 4));
  nextBoot_->Delete(Many("m2"));
  nextBoot_->Delete(one_);
  Set({"secrets", "test", "tarn"}, R"({"password":"top"})");
  database_.Run("UPDATE Config SET Version = '2.1' WHERE Name = 'switch'");
  database_.Run("UPDATE Config SET Version = '1.0' WHERE Name <> 'switch'");
  const std::string rows = Rows() + database_.Staged();
  const std::string all = Export({.allParts = true, .reveal = true});
  database_.Run("DELETE FROM Config");
  database_.Run("DELETE FROM DesiredUserConfig");
  ImportConfig(all, {.mode = ImportMode::REPLACE_ALL});
  EXPECT_EQ(Rows() + database_.Staged(), rows);
  EXPECT_EQ(Export({.allParts = true, .reveal = true}), all);
  EXPECT_FALSE(ImportConfig(all, {.mode = ImportMode::REPLACE_ALL}).Changes());
  EXPECT_EQ(Raised([&] { ImportConfig(all, {}); }).substr(0, 7), "VE 1089");  // no merging
  // What the document speaks of and does not have, goes.
  const std::string empty = Export({.allParts = true}, {"", "", "other"});
  ImportConfig(empty, {.mode = ImportMode::REPLACE_ALL});
  EXPECT_EQ(Rows() + database_.Staged(), "");
}

TEST_F(Documents, ModesReplaceMoreAndMore) {
  const auto reset = [this] {
    database_.Run("DELETE FROM Config");
    PutRow(plain_, R"({"name":"x","port":1})", "", "", "", "", 1);
    PutRow(Switch("s1"), Named("s1", R"("mtu":1,"ports":[{"id":"p","vlan":1}])"),
           Named("s1", R"("mtu":2)"), Named("s1", R"("mtu":3)"), "", "", 1);
    PutRow(Switch("s2"), Named("s2", R"("mtu":1)"), "", "", "", Named("s2", R"("state":{})"), 1);
    PutRow(Switch("s3"), Named("s3", R"("mtu":1)"), "", "", "", "", 1);
  };
  const std::string document = Config(
      R"("plain":{"port":2,"name":"x"},"switch":[{"name":"s1","ports":[{"id":"q"},{"id":"p"}]},)"
      R"({"name":"new","mtu":9,"serial":"s"}])");
  const auto short_ = [this] {
    return database_.Lines(
        "SELECT Identifier, ifnull(UserValue,'-'), ifnull(AutoConfValue ->> 'mtu','-'), "
        "ifnull(VitalValue,'-'), ifnull(DesiredValue ->> 'mtu','-'), Revision FROM Config ORDER BY "
        "Name, Identifier");
  };
  struct Case {
    ImportMode mode;
    std::string rows;
  };
  const std::string made = R"(new {"name":"new","mtu":9} - {"name":"new","serial":"s"} - 1)";
  const Case cases[] = {{ImportMode::MERGE,
                         R"( {"name":"x","port":2} - - - 8
)" + made + R"(
s1 {"name":"s1","mtu":1,"ports":[{"id":"p","vlan":1},{"id":"q"}]} 3 - - 8
s2 {"name":"s2","mtu":1} - - - 7
s3 {"name":"s3","mtu":1} - - - 7)"},
                        {ImportMode::REPLACE_NAMED,
                         R"( {"port":2,"name":"x"} - - - 8
)" + made + R"(
s1 {"name":"s1","ports":[{"id":"q"},{"id":"p"}]} 3 - - 8
s2 {"name":"s2","mtu":1} - - - 7
s3 {"name":"s3","mtu":1} - - - 7)"},
                        {ImportMode::REPLACE_ALL,
                         R"( {"port":2,"name":"x"} - - - 8
)" + made + R"(
s1 {"name":"s1","ports":[{"id":"q"},{"id":"p"}]} 3 - - 8
s2 - - - - 8)"}};
  for (const Case& each : cases) {
    reset();
    const std::string before = Rows();
    const std::string said = Import(document, each.mode, true);
    EXPECT_EQ(Rows(), before);
    EXPECT_EQ(Import(document, each.mode), said);
    EXPECT_EQ(short_(), each.rows);
    reset();
    EXPECT_GT(FailEachStep(
                  "import", [&] { Import(document, each.mode); }, [this] { return Rows(); }),
              8);
  }
}

TEST_F(Documents, EveryFaultIsNamedWithItsPlaceAndNothingIsWritten) {
  Set(plain_, R"({"name":"x"})");
  const std::string before = Rows();
  struct Case {
    std::string document;
    std::string findings;
  };
  const Case cases[] = {
      {"[]", "/: INCORRECT"},
      {R"({"config":{}})", "/: has no \"format\""},
      {R"({"format":2,"config":{}})", "/format: is not 1"},
      {R"({"format":1})", "/: has no \"config\""},
      {R"({"format":1,"config":{},"conifg":{}})", "/conifg: is no member"},
      {R"({"format":1,"config":{},"vital":{}})", "/vital: does not belong"},
      {R"({"format":1,"config":{"tarn":{"test":[]}}})", "/config/tarn/test: INCORRECT"},
      {R"({"format":1,"config":{},"metadata":{"parts":["user","all"],"by":1}})",
       "/metadata/by: is not known|/metadata/parts/1: is none of"},
      {Config(R"("gone":{},"plain":[],"switch":{})"),
       "/config/tarn/test/gone: |/config/tarn/test/plain: expected an object|"
       "/config/tarn/test/switch: expected a list"},
      {Config(R"("switch":[{"mtu":1},{"name":"a","mtu":1},{"name":"a","mtu":1},{"name":""},7])"),
       "/config/tarn/test/switch/0/name: is missing|/config/tarn/test/switch/2/name: is the id of "
       "element 1|/config/tarn/test/switch/3/name: is no instance id|"
       "/config/tarn/test/switch/4: INCORRECT"},
      {Config(R"("plain":{"name":1,"x":2},"switch":[{"name":"a","mtu":1},{"name":"b","mtu":"c"},)"
              R"({"name":"c"}])"),
       "/config/tarn/test/plain/name: |/config/tarn/test/plain/x: |/config/tarn/test/switch/1/mtu: "
       "|"
       "/config/tarn/test/switch/2: the object holds no data"},
      {Config(R"("switch":[{"name":"a","mtu":1,"rules":[{"allow":"x"},{}],"ports":[{"id":"1"}]}])"),
       "/config/tarn/test/switch/0/rules/1: holds nothing"},
      {R"({"format":1,"config":{},"metadata":{"objects":{"tarn":{"test":{"plain":{"revision":"x"}}}}}})",
       "/metadata/objects/tarn/test/plain: is of no object"},
  };
  // Each finding, by how it begins.
  const auto begins = [](const std::string& raised, const std::string& wanted) {
    std::istringstream findings(raised);
    std::istringstream beginnings(wanted);
    std::string finding;
    std::string beginning;
    std::getline(findings, finding, '|');
    bool matches = finding.starts_with("VE 1089");
    while (std::getline(findings, finding, '|')) {
      matches = matches && std::getline(beginnings, beginning, '|') &&
                finding.starts_with(" " + beginning);
    }
    return matches && !std::getline(beginnings, beginning, '|');
  };
  for (const Case& each : cases) {
    for (const ImportMode mode : {ImportMode::MERGE, ImportMode::REPLACE_ALL}) {
      const std::string raised = Raised([&] { ImportConfig(each.document, {.mode = mode}); }, true);
      EXPECT_TRUE(begins(raised, each.findings)) << each.document << "\n" << raised;
      EXPECT_FALSE(ImportConfig(each.document, {.mode = mode, .check = true}).Fits());
    }
  }
  ExpectRaised(
      {{"IAE 1080", [] { Import(R"({"format":1,"config":{)"); }},
       {"IAE 1080", [] { Import(R"({"format":1,"format":1,"config":{}})"); }},
       {"IAE 2000", [] { ImportConfig(R"({"format":1,"config":{}})", {.longest = 10}); }}});
  EXPECT_EQ(Rows(), before);
}

TEST_F(Documents, MasksAreNeverStored) {
  const Id id("secrets", "test", "tarn");
  const std::string data =
      R"({"password":"top","users":[{"id":"a","token":{"t":1}},{"id":"b","token":{"t":2}}],)"
      R"("plain":[{"name":"x","key":"kx"},{"name":"y","key":"ky"}]})";
  Set(id, data.c_str());
  const std::string masked = Export();
  EXPECT_EQ(masked.find("top"), std::string::npos);
  EXPECT_EQ(masked.find("kx"), std::string::npos);
  EXPECT_FALSE(ApplyConfig(masked, {}).Changes());
  // Elements are found by id or by what is shown of them, wherever they stand.
  std::string changed = WithoutBlanks(masked);
  const auto replace = [&changed](const std::string& what, const std::string& with) {
    ASSERT_NE(changed.find(what), std::string::npos) << what;
    changed.replace(changed.find(what), what.size(), with);
  };
  replace(R"({"id":"a","token":"***"},{"id":"b","token":"***"})",
          R"({"id":"b","token":"***"},{"id":"a","token":"***"})");
  replace(R"({"name":"x","key":"***"},{"name":"y","key":"***"})",
          R"({"name":"y","key":"***"},{"name":"z","key":"new"})");
  replace("\"***\"", "\"new\"");
  ApplyConfig(changed, {});
  EXPECT_EQ(Data(store_->Get(id)),
            R"({"password":"new","users":[{"id":"b","token":{"t":2}},{"id":"a","token":{"t":1}}],)"
            R"("plain":[{"name":"y","key":"ky"},{"name":"z","key":"new"}]})");
  // Without its list of masks, or where nothing is stored, there is nothing to put in their place.
  const std::string before = Rows();
  EXPECT_NE(
      Raised([&] { Import(Config(R"("secrets":{"password":"***"})")); }, true).find("not listed"),
      std::string::npos);
  store_->Delete(id);
  EXPECT_EQ(Raised([&] { Import(masked); }).substr(0, 7), "VE 1089");
  EXPECT_EQ(Rows(), "");
}

TEST_F(Documents, ApplyingWritesWhatDiffersAndNothingElse) {
  TestSupport::InstallType(host_,
                           R"({"component":"tarn","group":"test","key":"fixed","version":"1.0",
      "schema":{"type":"object","required":["by"],"properties":{
        "id":{"type":"string","instanceId":true},"by":{"type":"string","readOnly":true},
        "n":{"type":"number"},"list":{"type":"array","items":{"type":"object","properties":{
          "id":{"type":"string","instanceId":true},"made":{"type":"integer","readOnly":true}}}}}}})");
  const auto fixed = [](const std::string& instance, const std::string& rest) {
    return R"({"id":")" + instance + R"(","by":"x")" + rest + "}";
  };
  for (const char* instance : {"a", "b", "c"}) {
    Set({"fixed", "test", "tarn", instance},
        fixed(instance, R"(,"n":1,"list":[{"id":"1","made":1},{"id":"2","made":2}])").c_str());
  }
  PutRow({"fixed", "test", "tarn", "auto"}, "", "", R"({"id":"auto","by":"y"})", "", "", 1);
  const auto revisions = [this] {
    return database_.Lines("SELECT Identifier || Revision FROM Config ORDER BY 1");
  };
  // Numbers and orders that say the same are the same; elements are told apart by their ids.
  const std::string a = fixed("a", R"(,"list":[{"made":1,"id":"1"},{"id":"2","made":2}],"n":1.0)");
  const std::string b = fixed("b", R"(,"list":[{"id":"2","made":2},{"id":"3"}])");
  const std::string document = Config("\"fixed\":[" + a + "," + b + "]");
  EXPECT_EQ(ApplyConfig(document, {.check = true}).ToJson(),
            R"([{"object":"tarn/test/fixed/a","outcome":"unchanged"},)"
            R"({"object":"tarn/test/fixed/b","outcome":"replaced"}])");
  EXPECT_EQ(revisions(), "a1\nauto7\nb1\nc1");
  ApplyConfig(document, {});
  EXPECT_EQ(revisions(), "a1\nauto7\nb2\nc1");
  EXPECT_FALSE(ApplyConfig(document, {}).Changes());
  // An instance that automatic configuration made is no document's to name.
  ApplyConfig(document, {.prune = true});
  EXPECT_EQ(revisions(), "a1\nauto7\nb2");
  EXPECT_FALSE(ApplyConfig(document, {.prune = true}).Changes());
  ApplyConfig(Config("\"fixed\":[]"), {.prune = true});
  EXPECT_EQ(revisions(), "auto7");

  Set({"fixed", "test", "tarn", "a"}, fixed("a", R"(,"list":[{"id":"2","made":2}])").c_str());
  const std::string before = Rows();
  EXPECT_EQ(
      Raised([&] {
        ApplyConfig(Config(R"("fixed":[{"id":"a","by":"z","list":[{"id":"1","made":2},)"
                           R"({"id":"2","made":2}]},)" +
                           fixed("new", "") + "]"),
                    {});
      }),
      "VE 1091 The file to be applied does not fit its types. | /config/tarn/test/fixed/0/by | "
      "/config/tarn/test/fixed/0/list/0/made | /config/tarn/test/fixed/1/by");
  EXPECT_EQ(Rows(), before);
}

TEST_F(Documents, ChangesOfTypesThatNeedARebootAreStagedOnRequest) {
  PutRow("a", R"("mtu":1)", "", R"("mtu":7)", R"("serial":"s")", 1);
  PutRow("b", R"("mtu":1)", "", "", "", 1);
  const std::string document = R"({"format":1,"config":{"tarn":{"test":{"many-switch":[)" +
                               Named("a", R"("mtu":2)") + "]}}}}";
  const auto apply = [&](bool prune, bool check = false) {
    return ApplyConfig(document, {.prune = prune, .stage = true, .check = check}).ToJson();
  };
  const std::string before = State();
  const std::string said = apply(true, true);
  EXPECT_EQ(State(), before);
  EXPECT_EQ(apply(true), said);
  // The other parts of the object go along: applying replaces all of them.
  EXPECT_EQ(
      database_.Staged(),
      R"(tarn/test/many-switch/a SET u={"name":"a","mtu":2} v={"name":"a","serial":"s"} c=- 2.1)"
      "\ntarn/test/many-switch/b DELETE_INSTANCE u=- v=- c=- 2.1");
  EXPECT_EQ(said, R"([{"object":"tarn/test/many-switch/a","outcome":"staged"},)"
                  R"({"object":"tarn/test/many-switch/b","outcome":"staged"}])");
  EXPECT_EQ(apply(true), R"([{"object":"tarn/test/many-switch/a","outcome":"unchanged"},)"
                         R"({"object":"tarn/test/many-switch/b","outcome":"unchanged"}])");
  ApplyNextBootConfig({});
  EXPECT_EQ(database_.Rows(),
            R"(tarn/test/many-switch/a u={"name":"a","mtu":2} d=- a={"name":"a","mtu":7} )"
            R"(v={"name":"a","serial":"s"} c=- ok=1 rev=8)");
  EXPECT_EQ(apply(false), R"([{"object":"tarn/test/many-switch/a","outcome":"unchanged"}])");
  // Staged changes of the host's own come back to what the document says.
  nextBoot_->Set(Mtu("a", 5));
  EXPECT_EQ(apply(false), R"([{"object":"tarn/test/many-switch/a","outcome":"staged"}])");
}

TEST_F(Documents, AKillAtAnyStepLeavesBeforeOrAfter) {
  const std::string stored = Config(
      R"("plain":{"name":"x"},"switch":[{"name":"a","mtu":1,"serial":"s"},{"name":"b","mtu":1}])");
  const std::string wanted = R"({"format":1,"config":{"tarn":{"test":{"plain":{"name":"y"},)"
                             R"("switch":[{"name":"a","mtu":2},{"name":"c","mtu":3}],)"
                             R"("many-switch":[{"name":"m","mtu":4}]}}}})";
  const std::vector<std::function<void()>> calls = {
      [&] { ImportConfig(wanted, {.mode = ImportMode::REPLACE_ALL}); },
      [&] { ApplyConfig(wanted, {.prune = true, .stage = true}); }};
  for (const auto& call : calls) {
    ImportConfig(stored, {.mode = ImportMode::REPLACE_ALL});
    database_.Run("DELETE FROM DesiredUserConfig");
    const auto state = [this] { return database_.Rows() + "|" + database_.Staged(); };
    std::vector<std::string> seen = {state()};
    int kills = 0;
    for (int status = kKilled; status == kKilled; ++kills) {
      status = TestSupport::InChild([&] {
        int countdown = kills;
        DBStore::testing::SetHook([&](Operation /*asked*/, std::string_view /*detail*/) {
          if (countdown-- == 0) {
            _exit(kKilled);
          }
          return 0;
        });
        call();
        _exit(0);
        return 0;
      });
      ASSERT_TRUE(status == 0 || status == kKilled) << status;
      if (state() != seen.back()) {
        seen.push_back(state());
      }
    }
    // Before, and from the commit on after; what follows it is announced.
    EXPECT_EQ(seen.size(), 2U);
    EXPECT_GT(kills, 10);
    EXPECT_EQ(seen.back().find("\"x\""), std::string::npos);
  }
}

TEST_F(Documents, DriftIsToldMemberByMember) {
  PutRow(switch_, Named("s1", R"("mtu":1,"ports":[{"id":"p/1","vlan":1},{"id":"q","vlan":2}])"), "",
         Named("s1", R"("mtu":7,"ports":[{"id":"new","vlan":8}])"), Named("s1", R"("serial":"s")"),
         "", 1);
  PutRow(Switch("s2"), Named("s2", R"("mtu":1)"), "", "", "", "", 1);
  Set({"secrets", "test", "tarn"}, R"({"password":"top"})");
  const std::string document = Config(
      R"("switch":[{"name":"s1","ports":[{"id":"q","vlan":3},{"id":"new","vlan":9}]},{"name":"s0","mtu":5}],)"
      R"("secrets":{"password":"bottom"})");
  const auto told = [&](const DriftOptions& options) {
    std::string text;
    for (const DriftObject& object : ComputeDrift(document, options)) {
      text += object.GetConfigStoreObjectId().instanceId + " " + object.ToJson() + "\n";
    }
    return text;
  };
  const std::string s1 =
      R"(s1 {"kind":"changed","members":[{"pointer":"/ports/q/vlan","expected":3,"found":2,"part":"user"},)"
      R"({"pointer":"/ports/new","expected":{"id":"new","vlan":9},"found":{"id":"new","vlan":8},"part":"automatic"},)"
      R"({"pointer":"/ports/p~11","found":{"id":"p/1","vlan":1},"part":"user"},)"
      R"({"pointer":"/mtu","found":1,"part":"user"}]})"
      "\n";
  const std::string s0 =
      R"(s0 {"kind":"missing","members":[{"pointer":"/mtu","expected":5,"part":"user"}]})"
      "\n";
  const std::string secrets =
      R"( {"kind":"changed","members":[{"pointer":"/password","expected":"***","found":"***","part":"user"}]})"
      "\n";
  EXPECT_EQ(told({}), s1 + s0 + secrets);
  EXPECT_EQ(told({.prefix = switch_}), s1);
  EXPECT_EQ(told({.prefix = Switch(""), .complete = true}),
            s1 + s0 +
                R"(s2 {"kind":"extra","members":[{"pointer":"/mtu","found":1,"part":"user"}]})"
                "\n");
  EXPECT_NE(told({.reveal = true}).find(R"("expected":"bottom","found":"top")"), std::string::npos);

  const DriftObject object = ComputeDrift(document, {.prefix = switch_}).front();
  EXPECT_EQ(
      object.GetSubObject(SubObjectId("ports", "q")).ToJson(),
      R"({"kind":"changed","members":[{"pointer":"/vlan","expected":3,"found":2,"part":"user"}]})");
  std::string ids;
  for (const DriftObject& instance : object.GetSubObjectInstances("ports")) {
    ids += instance.GetConfigStoreObjectId().instanceId + " ";
  }
  EXPECT_EQ(ids, "new p/1 q ");
  ExpectRaised({{"CSE 1046", [&] { object.GetSubObjectInstances("mtu"); }},
                {"CSE 1048", [&] { object.GetSubObject(SubObjectId("serial")); }},
                {"CSE 1049", [&] { object.GetSubObject(SubObjectId("ports", "none")); }},
                {"IAE 1080", [&] { DriftObject(switch_, "{"); }},
                {"IAE 1080", [&] { DriftObject(switch_, R"({"kind":"changed"})"); }}});
}

TEST_F(Documents, TheStoreIsComparedWithWhatItCouldBe) {
  TestSupport::InstallType(host_,
                           R"({"component":"tarn","group":"test","key":"shipped","version":"1.0",
      "schema":{"type":"object","properties":{"id":{"type":"string","instanceId":true},
        "n":{"type":"integer","default":5},"v":{"type":"integer","vital":true}}},
      "defaults":[{"instance":"a","value":{"id":"a","n":1}},{"instance":"b","value":{"id":"b","n":2,"v":3}}]})");
  const Id all("shipped", "test", "tarn");
  Set({"shipped", "test", "tarn", "a"}, R"({"id":"a","n":5})");
  Set({"shipped", "test", "tarn", "c"}, R"({"id":"c","n":6,"v":7})");
  const auto told = [](ReferenceState state, const Id& prefix) {
    std::string text;
    for (const DriftObject& object : ComputeDriftFrom(state, {.prefix = prefix})) {
      text += object.GetConfigStoreObjectId().instanceId + object.ToJson() + "\n";
    }
    return text;
  };
  EXPECT_EQ(
      told(ReferenceState::SHIPPED, all),
      R"(a{"kind":"changed","members":[{"pointer":"/n","expected":1,"found":5,"part":"user"}]})"
      "\n"
      R"(b{"kind":"missing","members":[{"pointer":"/n","expected":2,"part":"user"}]})"
      "\n"
      R"(c{"kind":"extra","members":[{"pointer":"/n","found":6,"part":"user"}]})"
      "\n");
  EXPECT_EQ(
      told(ReferenceState::DEFAULTS, all),
      R"(c{"kind":"changed","members":[{"pointer":"/n","expected":5,"found":6,"part":"user"}]})"
      "\n");
  PutRow("p", R"("mtu":1)", R"("mtu":2)", "", "", 1);
  PutRow("q", R"("mtu":1)", "", "", "", 1);
  PutRow("r", R"("mtu":1)", "", "", R"("serial":"s")", 1);
  nextBoot_->Delete(Many("q"));
  nextBoot_->Set(Mtu("r", 1));
  EXPECT_EQ(
      told(ReferenceState::NEXT_BOOT, {"", "", "tarn"}),
      R"(p{"kind":"changed","members":[{"pointer":"/mtu","expected":2,"found":1,"part":"user"},)"
      R"({"pointer":"/mtu","found":2,"part":"pending"}]})"
      "\n"
      R"(q{"kind":"extra","members":[{"pointer":"/mtu","found":1,"part":"user"}]})"
      "\n"
      R"(r{"kind":"changed","members":[{"pointer":"/serial","found":"s","part":"vital"}]})"
      "\n");
}

TEST_F(Documents, ObjectsAreMadeFromTexts) {
  EXPECT_EQ(CreateObject(Switch(""), R"({"name":"a","mtu":1})")->GetConfigStoreObjectId(),
            Switch("a"));
  const Objects objects = CreateObjects(Config(R"("switch":[{"name":"b"}],"plain":{"port":1})"));
  EXPECT_EQ(Data(objects), R"(b{"name":"b"} {"port":1} )");
  ExpectRaised({{"CSE 1037",
                 [] {
                   CreateObject({"gone", "test", "tarn"}, "{}");
                 }},
                {"IAE 1080", [this] { CreateObject(plain_, "{"); }},
                {"IAE 1082", [this] { CreateObject(plain_, "[]"); }},
                {"CSE 1032", [] { CreateObject(Switch(""), R"({"mtu":1})"); }},
                {"CSE 1037", [] { CreateObjects(Config(R"("gone":{})")); }},
                {"VE 1089", [] { CreateObjects(Config(R"("switch":{})")); }}});
}

}  // namespace
}  // namespace TarnConfigStore
