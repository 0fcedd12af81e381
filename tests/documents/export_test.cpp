#include "documents/documents_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

TEST_F(Documents, ExportIsIndentedAndInOrder) {
  Set(plain_, R"({"name":"x","tags":["1"],"nested":{"deep":{"leaf":"a\"b\\"}}})");
  Set(Switch("s2"), R"({"name":"s2","mtu":2,"serial":"s","rules":[{"allow":"a"}]})");
  Set(Switch("s1"), R"({"name":"s1","mtu":1})");
  const std::string all = Export();
  EXPECT_TRUE(all.starts_with("{\n  \"format\": 1,\n  \"config\": {\n    \"tarn\": {\n") &&
              all.ends_with("\n  }\n}\n"))
      << all;
  EXPECT_EQ(
      WithoutBlanks(all),
      Config(R"("plain":{"name":"x","tags":["1"],"nested":{"deep":{"leaf":"a\"b\\"}}},)"
             R"("switch":[{"name":"s1","mtu":1},{"name":"s2","mtu":2,"rules":[{"allow":"a"}]}])"));
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

// Rows of other programs: what an import would refuse, or file as something else, is no document.
TEST_F(Documents, WhatNoDocumentCanHoldIsRefusedByItsRow) {
  const auto refused = [](const Id& id) {
    return Raised([&id] { Export({.allParts = true}, id); });
  };
  PutRow(Switch("a"), R"({"name":"b","mtu":1})", "", "", "", "", 1);
  EXPECT_NE(refused(Switch("a")).find(R"(name another instance: "b")"), std::string::npos);
  PutRow(Switch("n"), R"({"name":null,"mtu":1})", "", "", "", "", 1);
  EXPECT_EQ(WithoutBlanks(Export({}, Switch("n"))), Config(R"("switch":[{"name":"n","mtu":1}])"));
  PutRow(plain_, R"({"name":"x"})", "", "", "", "", 1);
  for (const char* change : {"Version = CAST(x'31ff' AS TEXT)", "CreationTime = 'noon'"}) {
    database_.Run(std::string("UPDATE Config SET ").append(change).append(" WHERE Name = 'plain'"));
    EXPECT_NE(refused(plain_).find("nothing that a document can hold"), std::string::npos)
        << change;
    database_.Run("UPDATE Config SET Version = '1.0' WHERE Name = 'plain'");
  }
  nextBoot_->Set(Mtu("m1", 4));
  for (const char* table : {"DesiredUserConfig", "Config"}) {
    database_.Run("DELETE FROM Config");
    PutRow(Switch("s"), R"({"mtu":1})", "", "", "", "", 1);
    database_.Run(
        std::string("UPDATE ").append(table).append(" SET Identifier = CAST(x'ff' AS TEXT)"));
    EXPECT_NE(refused({"", "", ""}).find("no instance id"), std::string::npos) << table;
    database_.Run("DELETE FROM DesiredUserConfig");
  }
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

}  // namespace
}  // namespace TarnConfigStore
