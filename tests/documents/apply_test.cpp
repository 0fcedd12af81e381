#include "tarnconfigstore/drift.h"

#include "documents/documents_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

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

TEST_F(Documents, ManyInstancesAreFoundInWhicheverOrderTheyAreNamed) {
  constexpr int kMany = 40;
  const auto id = [](int i) { return "s" + std::to_string(i); };
  for (int i = 0; i < kMany; ++i) {
    Set({"switch", "test", "tarn", id(i)}, Named(id(i), "\"mtu\":" + std::to_string(i)).c_str());
  }
  PutRow(Switch("vital"), "", "", "", Named("vital", R"("serial":"s")"), "", 1);
  std::string list;
  std::string said;
  // Of four, one stays, one is written otherwise, one changes, and one is left out.
  for (int i = kMany + 3; i >= 0; --i) {
    if (i % 4 == 3) {
      continue;
    }
    const std::string mtu = "\"mtu\":" + std::to_string(i % 4 == 2 ? 1000 : i);
    list += (list.empty() ? "" : ",") +
            (i % 4 == 1 ? "{" + mtu + R"(,"name":")" + id(i) + "\"}" : Named(id(i), mtu));
    said += (said.empty() ? "" : ",") + (R"({"object":"tarn/test/switch/)" + id(i)) +
            R"(","outcome":")" +
            (i >= kMany   ? "created"
             : i % 4 == 2 ? "replaced"
                          : "unchanged") +
            "\"}";
  }
  const std::string document = Config("\"switch\":[" + list + "]");
  EXPECT_EQ(ApplyConfig(document, {}).ToJson(), "[" + said + "]");
  EXPECT_FALSE(ApplyConfig(document, {}).Changes());
  EXPECT_TRUE(ComputeDrift(document, {}).empty());
  EXPECT_EQ(ApplyConfig(document, {.prune = true}).objects.size(), 33U + 10U);
  EXPECT_EQ(WithoutBlanks(Export({}, Switch("s2"))),
            Config(R"("switch":[{"name":"s2","mtu":1000}])"));
  EXPECT_EQ(database_.Lines("SELECT COUNT(*) FROM Config"), "34");
  // Where every row changes, they go all at once, and keep what they keep.
  database_.Run("UPDATE Config SET CreationTime = '2001-01-01 00:00:00'");
  database_.Run("DELETE FROM Config WHERE UserValue IS NULL");
  for (std::size_t at = 0; (at = list.find("\"mtu\":", at)) != std::string::npos; at += 7) {
    list.insert(at + 6, "5");
  }
  ApplyConfig(Config("\"switch\":[" + list + "]"), {});
  EXPECT_EQ(database_.Lines("SELECT DISTINCT CreationTime, MIN(Revision) FROM Config"),
            "2001-01-01 00:00:00 2");
  // An id that is named twice is seen wherever it stands.
  EXPECT_EQ(Raised([&] {
              ApplyConfig(Config("\"switch\":[" + list + "," + Named("s9", "") + "]"), {});
            }).substr(0, 7),
            "VE 1091");
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
  const std::string all = Export({.allParts = true});
  EXPECT_EQ(apply(false), R"([{"object":"tarn/test/many-switch/a","outcome":"staged"}])");
  // As by every other way, nothing is staged while the host boots; looking is no change.
  SetKeyValue("IS_BOOT", "true");
  const std::string booting = State();
  const auto import = [&] { ImportConfig(all, {.mode = ImportMode::REPLACE_NAMED}); };
  const std::string refusal =
      "VE 2000 NextBootStore is not supported during the upgrade or boot phase";
  EXPECT_EQ(Raised(import), refusal);
  nextBoot_->Set(Mtu("a", 6));
  EXPECT_EQ(Raised([&] { apply(true, true); }), refusal);
  EXPECT_EQ(ComputeDrift(all, {}).size(), 1U);
  EXPECT_NE(State(), booting);  // by the store that was opened before
}

}  // namespace
}  // namespace TarnConfigStore
