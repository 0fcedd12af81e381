// Files of the stores that are damaged, lost or left over: what is found, what is done about it, and
// where every value is afterwards.
#include "platform/db_testing.h"
#include "platform/host_backup.h"

#include "db/doctor/salvage.h"
#include "doctor/doctored_host.h"
#include "support/captured_log.h"
#include "support/sanitized.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

using namespace TarnConfigStore;
using TestSupport::InChild;

namespace {

class DamagedFiles : public TestSupport::DoctoredHost {
 protected:
  // Whatever is damaged: after a repair the stores are sound, hold nothing that was not there before,
  // and where a row is missing, the report says so and is no report of success.
  void ExpectRepaired(const Rows& before, const std::string& what) {
    SCOPED_TRACE(what);
    const Report examined = ExamineHost();
    EXPECT_TRUE(examined.IsDamaged());
    const Report report = RepairHost({});
    EXPECT_EQ(Kinds(report.findings), "") << report.ToJson();
    const Rows after = Look();
    std::size_t kept = 0;
    for (const auto& [key, row] : after) {
      const auto was = before.find(key);
      ASSERT_NE(was, before.end()) << key;
      EXPECT_EQ(was->second, row) << key;
      ++kept;
    }
    EXPECT_GE(2 * kept, before.size());
    EXPECT_EQ(Actions(report).find("rows-lost!") != std::string::npos, !report.IsHealthy());
    if (kept < before.size()) {
      EXPECT_FALSE(report.IsHealthy()) << before.size() - kept << " rows are lost silently";
    }
    lost_ += before.size() - kept;
    // What was damaged is kept as it was.
    EXPECT_TRUE(std::filesystem::exists(report.keepingPlace + "/current-store-1"));
    std::filesystem::remove_all(report.keepingPlace);
  }

  void Revert() {
    for (const char* suffix : {"", "-wal", "-shm"}) {
      std::filesystem::remove(store_ + suffix);
    }
    std::filesystem::copy_file(sound_, store_);
  }

  // Rows in the log alone.
  void WriteToLog(int rows) const {
    std::vector<std::string> statements = {"PRAGMA wal_autocheckpoint=0"};
    for (int i = 0; i < rows; ++i) {
      const std::string w = "w" + std::to_string(i);
      const std::string s = "s" + std::to_string(i + 1);
      statements.push_back(
          "INSERT INTO Config(Component, ConfigGroup, Name, Identifier, Version, UserValue) "
          "VALUES('tarn', 'test', 'switch', '" +
          w + R"(', '2.1', '{"name":")" + w +
          R"("}'); )"
          R"(UPDATE Config SET VitalValue = '{"name":")" +
          s +
          R"(","serial":"new"}', )"
          "Revision = 1000 WHERE Identifier = '" +
          s + "'");
    }
    SqlOfAnother(store_, statements);
  }

  void SetUp() override { std::filesystem::copy_file(store_, sound_); }
  void TearDown() override { DBStore::testing::SetHook({}); }

  TestSupport::CapturedLog log_;
  const std::string sound_ = host_.Root() + "/sound";
  std::size_t lost_ = 0;
};

TEST_F(DamagedFiles, EachPageOfTheStoreOverwritten) {
  const Rows before = Look();
  const auto pages = static_cast<std::int64_t>(std::filesystem::file_size(store_) / 4096);
  ASSERT_GT(pages, 10);
  for (std::int64_t page = 0; page < pages; page += TestSupport::kSanitized ? 3 : 1) {
    Revert();
    Overwrite(store_, page * 4096, 4096);
    ExpectRepaired(before, "page " + std::to_string(page + 1));
  }
  // Each row lay on one page, and nothing but that page was lost.
  EXPECT_LE(lost_, before.size());
}

TEST_F(DamagedFiles, TheBeginningOfThePagesOverwritten) {
  const Rows before = Look();
  for (const std::int64_t page : {0, 1, 7}) {
    Revert();
    Overwrite(store_, page * 4096, 24);
    ExpectRepaired(before, "page " + std::to_string(page + 1));
  }
}

TEST_F(DamagedFiles, ATruncatedStore) {
  const Rows before = Look();
  const auto size = std::filesystem::file_size(store_);
  for (const auto length : {size - 4096, size - 12'388}) {
    Revert();
    std::filesystem::resize_file(store_, length);
    ExpectRepaired(before, std::to_string(length) + " bytes left");
  }
  // Of an empty one nothing is left, and an empty store is not what it is replaced by.
  Revert();
  std::filesystem::resize_file(store_, 0);
  const Report report = RepairHost({});
  EXPECT_EQ(Actions(report), "");
  EXPECT_TRUE(report.IsDamaged());
  EXPECT_EQ(std::filesystem::file_size(store_), 0);
}

TEST_F(DamagedFiles, TheLogOverwritten) {
  WriteToLog(40);
  std::filesystem::copy_file(store_ + "-wal", sound_ + "-wal");
  const Rows before = Look();
  ASSERT_EQ(before.size(), Rows::size_type{kRows + 40 + 2});
  for (const int percent : {0, 1, 20, 50, 80}) {
    Revert();
    std::filesystem::remove(store_ + "-wal");
    std::filesystem::copy_file(sound_ + "-wal", store_ + "-wal");
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(store_ + "-wal"));
    Overwrite(store_ + "-wal", size * percent / 100, 4096);
    ExpectRepaired(before, std::to_string(percent) + "% into the log");
    EXPECT_EQ(Look(), before) << "each page is in the log again later";
  }
}

TEST_F(DamagedFiles, TheLogOverwrittenAndWrittenOn) {
  WriteToLog(40);
  Overwrite(store_ + "-wal",
            static_cast<std::int64_t>(std::filesystem::file_size(store_ + "-wal")) / 2, 4096);
  // Whoever writes next goes on where SQLite stops reading; what it leaves behind that is older.
  SqlOfAnother(store_,
               {"PRAGMA wal_autocheckpoint=0",
                "UPDATE Config SET UserValue = '{\"name\":\"s40\",\"mtu\":7}', Revision = 2000 "
                "WHERE Identifier = 's40'; INSERT INTO KeyValue VALUES('NEW', '1')"});
  EXPECT_EQ(Kinds(ExamineHost().findings), "log-damaged");
  EXPECT_FALSE(RepairHost({}).IsDamaged());
  const Rows after = Look();
  EXPECT_EQ(after.size(), Rows::size_type{kRows + 40 + 3});
  EXPECT_EQ(Sql("SELECT Revision, UserValue FROM Config WHERE Identifier = 's40'").at(0),
            R"(2000 {"name":"s40","mtu":7})");
  EXPECT_EQ(Sql("SELECT COUNT(*) FROM Config WHERE Revision = 1000").at(0), "39");
}

TEST_F(DamagedFiles, ATypesStoreThatIsOnlyLockedIsNotLost) {
  TestSupport::WriteFile(host_.Root() + "/other.json", TestSupport::TypeFile("other", "1.0"));
  const std::string before = Read(types_);
  {
    TestSupport::Database other(types_);
    other.Run("BEGIN EXCLUSIVE");
    EXPECT_FALSE(RepairHost({{host_.Root() + "/other.json"}}).IsHealthy());
  }
  EXPECT_EQ(Read(types_), before);
}

TEST_F(DamagedFiles, ALargeValueWhosePagesAreLostIsPutAsideAsFarAsItCanBeRead) {
  Sql(R"(INSERT INTO Config(Component, ConfigGroup, Name, Identifier, Version, UserValue) VALUES
      ('tarn', 'test', 'plain', '', '1.0', '{"name":"large )" +
      std::string(40'000, 'y') + "\"}')");
  Settle();
  const std::string bytes = Read(store_);
  Overwrite(store_, static_cast<std::int64_t>(bytes.find(std::string(4000, 'y')) / 4096 + 3) * 4096,
            4096);
  const Report report = RepairHost({});
  EXPECT_EQ(Actions(report), "backup recovered rows-lost!");
  // What is left of the value, with the noise that it ends in.
  EXPECT_NE(PutAside(report).find("\"base64\": \"eyJuYW1lIjoibGFyZ2Ug"), std::string::npos);
  EXPECT_EQ(Look().size(), Rows::size_type{kRows + 2});
}

TEST_F(DamagedFiles, RowsOfALostPageAreNamedByTheIndexOfTheirTable) {
  // As tables with rows by number have one, whatever the layout of this day.
  const std::string path = host_.Root() + "/by-number";
  const std::string key = "Component, ConfigGroup, Name, Identifier";
  TestSupport::Database(path).Run(
      "ATTACH '" + store_ +
      "' AS sound; CREATE TABLE Config(Component TEXT NOT NULL, ConfigGroup TEXT NOT "
      "NULL, Name TEXT NOT NULL, Identifier TEXT NOT NULL, Version TEXT, UserValue TEXT, Dropped "
      "TEXT, "
      "PRIMARY KEY(" +
      key + ")); INSERT INTO Config SELECT " + key +
      ", Version, UserValue, 'old' FROM sound.Config");
  const std::string bytes = Read(path);
  std::int64_t leaf = 0;
  for (std::size_t page = 2; leaf == 0; ++page) {
    leaf = bytes[page * 4096] == 13 ? static_cast<std::int64_t>(page) : 0;
  }
  Overwrite(path, leaf * 4096, 4096);
  const auto salvaged = DBStore::internal::Salvage(DBStore::internal::CurrentStoreLayout(), path);
  const auto named = std::count_if(salvaged.lost.begin(), salvaged.lost.end(), [](const auto& row) {
    return row.cells.size() == 4 && row.cells[3].text->front() == 's';
  });
  EXPECT_GT(named, 5);
  EXPECT_EQ(salvaged.rows + static_cast<std::size_t>(named), std::size_t{kRows});
  // The column that the store does not have is not dropped with its values.
  EXPECT_EQ(salvaged.lost.size(), salvaged.rows + static_cast<std::size_t>(named));
  EXPECT_NE(salvaged.Losses(), "");
}

TEST_F(DamagedFiles, AJournalIsTakenBackByARepairAlone) {
  const std::string before = Read(types_);
  ASSERT_EQ(InChild([&] {
              sqlite3* database = nullptr;
              sqlite3_open(types_.c_str(), &database);
              sqlite3_exec(database, "BEGIN; UPDATE Types SET Document = Document || ' '", nullptr,
                           nullptr, nullptr);
              return sqlite3_db_cacheflush(database);
            }),
            0);
  const std::string during = Read(types_);
  EXPECT_NE(during, before);
  EXPECT_EQ(Kinds(ExamineHost().findings), "journal");
  EXPECT_EQ(Read(types_), during);
  EXPECT_TRUE(RepairHost({}).IsHealthy());
  EXPECT_EQ(Read(types_), before);
}

TEST_F(DamagedFiles, WhatIsWrittenWhileRowsAreLookedForIsNotLost) {
  Overwrite(store_, PageOfRows(), 4096);
  int copies = 0;
  DBStore::testing::SetHook([&](DBStore::testing::Operation, std::string_view step) {
    if (step == "making the copy" && copies++ == 0) {
      const std::string command =
          "sqlite3 " + store_ + " \"INSERT INTO KeyValue VALUES('LATE', 'true')\" >/dev/null";
      EXPECT_EQ(std::system(command.c_str()), 0);
    }
    return 0;
  });
  const Report report = RepairHost({});
  EXPECT_EQ(copies, 2);
  EXPECT_FALSE(report.IsDamaged());
  EXPECT_EQ(Sql("SELECT Value FROM KeyValue WHERE Key = 'LATE'").at(0), "true");
}

TEST_F(DamagedFiles, ASchemaStoreThatIsLostIsMadeFromTypeFiles) {
  const Rows before = Look();
  const std::string files = host_.Root() + "/types";
  TestSupport::WriteFile(files + "/switch.json", TestSupport::kSwitchType);
  TestSupport::WriteFile(
      files + "/shipping.json",
      TestSupport::TypeFile("shipping", "1.0", R"({"type":"object","properties":{"a":{}}})",
                            R"({"instance":"","value":{"a":1}})"));
  const std::function<void()> damages[] = {
      [&] { std::filesystem::remove(types_); }, [&] { std::filesystem::resize_file(types_, 0); },
      [&] { Overwrite(types_, 0, std::filesystem::file_size(types_)); }};
  for (const auto& damage : damages) {
    damage();
    const Report examined = ExamineHost();
    EXPECT_TRUE(examined.IsDamaged());
    // Without type files it is left alone: a schema store without types is no better.
    EXPECT_TRUE(RepairHost({}).IsDamaged());
    Sql("DELETE FROM DefaultConfig");
    const Report report = RepairHost({{files}});
    EXPECT_EQ(Kinds(report.findings), "") << report.ToJson();
    EXPECT_NE(Actions(report).find("type-installed type-installed"), std::string::npos);
    EXPECT_EQ(Look(), before);
  }
  // Bad files change nothing.
  TestSupport::WriteFile(files + "/bad.json", "{}");
  std::filesystem::remove(types_);
  EXPECT_NE(Actions(RepairHost({{files}})).find("type-installed!"), std::string::npos);
  EXPECT_EQ(ExamineHost().IsDamaged(), false);
}

// What a step leaves that fails, or whose process is killed, the next repair completes.
TEST_F(DamagedFiles, ARepairThatIsBrokenOffAtAnyStepCanBeRunAgain) {
  const Rows before = Look();
  const std::int64_t page = PageOfRows();
  for (const bool isKilled : {false, true}) {
    for (int step = 0, reached = 1; reached != 0; step += TestSupport::kSanitized ? 5 : 1) {
      SCOPED_TRACE((isKilled ? "killed at step " : "failed at step ") + std::to_string(step));
      Revert();
      Overwrite(store_, page, 4096);
      reached = InChild([&] {
        int countdown = step;
        DBStore::testing::SetHook([&](DBStore::testing::Operation asked, std::string_view) {
          if (asked != DBStore::testing::Operation::COPY || countdown-- != 0) {
            return 0;
          }
          return isKilled ? (_exit(1), 1) : 1;
        });
        const Report report = RepairHost({});
        return report.IsHealthy() ? 2 : countdown < 0 ? 1 : 0;
      });
      ASSERT_LT(reached, 2) << "a success that lost rows, or was broken off";
      RepairHost({});
      EXPECT_EQ(Kinds(ExamineHost().findings), "");
      for (const auto& [key, row] : Look()) {
        const auto was = before.find(key);
        EXPECT_TRUE(was != before.end() && was->second == row) << key;
      }
      EXPECT_GE(2 * Look().size(), before.size());
      ASSERT_LT(step, 60);
    }
  }
}

}  // namespace
