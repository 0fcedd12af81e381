#include "documents/documents_fixture.h"

#include <sstream>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

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
      {R"({"format":1,"config":{"tarn":{"test":{"plain":{"name":"x"}}}},"metadata":{"objects":)"
       R"({"tarn":{"test":{"plain":[{"confirmed":false},{"revision":2}]}}}}})",
       "/metadata/objects/tarn/test/plain/0/confirmed: may be false in|"
       "/metadata/objects/tarn/test/plain/1: is of an object that another"},

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

// What a document's object lacks may be held by other parts of its row; the rest is stored as ever.
TEST_F(Documents, AnObjectMayBecomeWholeByOtherParts) {
  PutRow(plain_, "", "", R"({"name":"x"})", "", "", 1);
  Import(Config(R"("plain":{"port":22.0})"), ImportMode::REPLACE_NAMED);
  EXPECT_EQ(database_.Lines("SELECT UserValue, AutoConfValue FROM Config"),
            R"({"port":22} {"name":"x"})");
  EXPECT_EQ(Raised([] {
              Import(Config(R"("plain":{"port":"y"})"), ImportMode::REPLACE_NAMED);
            }).substr(0, 7),
            "VE 1089");
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

TEST_F(Documents, ObjectsAreMadeFromTexts) {
  EXPECT_EQ(CreateObject(Switch(""), R"({"name":"a","mtu":1})")->GetConfigStoreObjectId(),
            Switch("a"));
  const Objects objects = CreateObjects(Config(R"("switch":[{"name":"b"}],"plain":{"port":1})"));
  EXPECT_EQ(Data(objects), R"(b{"name":"b"} {"port":1} )");
  ExpectRaised({{"CSE 1037", [] { CreateObject(Id("gone", "test", "tarn"), "{}"); }},
                {"IAE 1080", [this] { CreateObject(plain_, "{"); }},
                {"IAE 1082", [this] { CreateObject(plain_, "[]"); }},
                {"CSE 1032", [] { CreateObject(Switch(""), R"({"mtu":1})"); }},
                {"CSE 1037", [] { CreateObjects(Config(R"("gone":{})")); }},
                {"VE 1089", [] { CreateObjects(Config(R"("switch":{})")); }}});
}

}  // namespace
}  // namespace TarnConfigStore
