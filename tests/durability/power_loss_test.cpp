// Whatever the disk holds after the power was lost, the stores open, nothing is half done, and what a
// caller was told is done is there.
#include "tarnconfigstore/documents.h"

#include "durability/lost_power.h"
#include "support/next_boot_fixture.h"
#include "support/sanitized.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>

namespace TarnConfigStore {
namespace {

using Durability::Files;

// All that a database holds, or what keeps it from being read.
std::string Look(const std::string& path) {
  sqlite3* database = nullptr;
  std::string seen;
  const auto read = [&](const std::string& sql) {
    std::vector<std::string> rows;
    const auto collect = [](void* context, int count, char** values, char**) {
      std::string row;
      for (int i = 0; i < count; ++i) {
        row.append(values[i] == nullptr ? "-" : values[i]).append("|");
      }
      static_cast<std::vector<std::string>*>(context)->push_back(row);
      return 0;
    };
    if (sqlite3_exec(database, sql.c_str(), collect, &rows, nullptr) != SQLITE_OK) {
      seen.append("FAULT: ").append(sqlite3_errmsg(database)).append("\n");
    }
    return rows;
  };
  // By SQLite's own road, past the recorder.
  if (sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, "unix") != SQLITE_OK) {
    seen = "FAULT: cannot be opened";
  } else {
    if (const auto sound = read("PRAGMA integrity_check");
        sound != std::vector<std::string>{"ok|"}) {
      seen += "FAULT: damaged\n";
    }
    for (const std::string& version : read("PRAGMA user_version")) {
      seen += version + "\n";
    }
    for (std::string table :
         read("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY 1")) {
      table.pop_back();
      seen += table + ":\n";
      std::vector<std::string> rows = read("SELECT * FROM \"" + table + "\"");
      std::sort(rows.begin(), rows.end());
      for (const std::string& row : rows) {
        seen += row + "\n";
      }
    }
  }
  sqlite3_close(database);
  return seen;
}

using Step = std::function<void()>;

// What is left of a step that was not done yet, is before or after it.
void LoseItDuring(const char* name, const std::vector<Step>& steps,
                  const TestSupport::TemporaryHost& host, Durability::RecordedDisk& disk) {
  const std::filesystem::path store = host.Path(HostPaths::kStore);
  const std::filesystem::path types = host.Path(HostPaths::kSchemaStore);
  const std::filesystem::path place = host.Root() + "/image";
  std::vector<std::string> states = {Look(store)};
  disk.Record(store.parent_path());
  for (const Step& step : steps) {
    step();
    disk.Promise();
    states.push_back(Look(store));
    ASSERT_EQ(states.back().find("FAULT"), std::string::npos) << states.back();
  }
  const unsigned seed = std::random_device()();
  std::mt19937 random(seed);
  std::size_t images = 0;
  std::size_t early = 0;  // with what nobody was told yet
  std::size_t faults = 0;
  constexpr unsigned kTorn = TestSupport::kSanitized ? 1 : 8;
  Durability::ForEachImage(disk, kTorn, random, [&](const Files& files, std::size_t promises) {
    ++images;
    std::filesystem::create_directory(place);
    for (const auto& [file, bytes] : files) {
      std::ofstream(place / std::filesystem::path(file).filename(), std::ios::binary) << bytes;
    }
    const std::string found = Look(place / store.filename());
    const bool isAfter =
        promises < steps.size() && found == states[promises + 1] && found != states[promises];
    early += isAfter ? 1U : 0U;
    if (found != states[promises] && !isAfter && ++faults < 3) {
      ADD_FAILURE() << name << ", seed " << seed << ", image " << images << " after " << promises
                    << " steps:\n"
                    << found << "\ninstead of\n"
                    << states[promises];
    }
    faults += Look(place / types.filename()).find("FAULT") == std::string::npos ? 0U : 1U;
    std::filesystem::remove_all(place);
  });
  std::printf("%s: %zu images, %zu of them with a step that was not confirmed yet\n", name, images,
              early);
  EXPECT_EQ(faults, 0U) << name << ", seed " << seed;
  EXPECT_GT(images, 10 * steps.size());
  EXPECT_GT(early, 0U);
}

// Before the fixture, whose connections are to be recorded.
struct Recorded {
  Durability::RecordedDisk disk_;
};

class PowerLoss : public Recorded, public TestSupport::NextBootFixture {};

TEST_F(PowerLoss, LeavesWritesWholeAndKeepsWhatWasConfirmed) {
  const std::string large(60'000, 'x');
  const auto commit = [&](int mtu) {
    store_->BeginTransaction();
    Set(plain_, (R"({"name":")" + std::to_string(mtu) + "\"}").c_str());
    store_->SetInstances(List(SwitchObject("a", "\"mtu\":" + std::to_string(mtu)),
                              SwitchObject("b", R"("mtu":1,"serial":"s")")),
                         EXTERNAL);
    store_->Delete(Switch("c"));
    store_->CommitTransaction();
  };
  LoseItDuring("writes",
               {
                   [&] { commit(1); },
                   [&] { Set(Switch("c"), Named("c", "\"mtu\":2").c_str()); },
                   [&] { Set(plain_, (R"({"name":")" + large + "\"}").c_str()); },
                   [&] { database_.Run("PRAGMA wal_checkpoint(TRUNCATE)"); },
                   [&] { commit(3); },
                   [&] { database_.Run("PRAGMA wal_checkpoint(RESTART)"); },
                   [&] { store_->Delete(plain_); },
               },
               host_, disk_);
}

TEST_F(PowerLoss, LeavesStagingApplyingAndImportingWhole) {
  PutRow("m2", R"("mtu":1)", "", R"("mtu":7)", R"("serial":"s")", 1);
  std::string document;
  LoseItDuring("staging",
               {
                   [&] { nextBoot_->Set(Mtu("m1", 4)); },
                   [&] { nextBoot_->Delete(Many("m2")); },
                   [&] {
                     document = ExportConfigText({"", "", ""}, {.allParts = true});
                   },
                   [&] { ApplyNextBootConfig({}); },
                   [&] { ImportConfig(document, {.mode = ImportMode::REPLACE_ALL}); },
                   [&] {
                     ApplyConfig(R"({"format":1,"config":{"tarn":{"test":{"plain":{"name":"y"},)"
                                 R"("switch":[{"name":"a","mtu":2}],"many-switch":[]}}}})",
                                 {.prune = true, .stage = true});
                   },
                   [&] { database_.Run("PRAGMA wal_checkpoint(TRUNCATE)"); },
               },
               host_, disk_);
}

TEST(PowerLossOfOldStores, LeavesThemOldOrBroughtOver) {
  Durability::RecordedDisk disk;
  const TestSupport::TemporaryHost host;
  TestSupport::MakeLayout1(host.Path(HostPaths::kStore));
  {
    TestSupport::Database database(host);
    for (int i = 0; i < 20; ++i) {
      database.Run(
          "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue) "
          "VALUES ('tarn', 'test', 'x', '" +
          std::to_string(i) + "', '1', '" + std::string(static_cast<std::size_t>(300 * i), 'x') +
          "')");
    }
    database.Run(
        "INSERT INTO DesiredUserConfig (Component, ConfigGroup, Name, Identifier, Version, "
        "Value, BootAction) VALUES ('tarn', 'test', 'x', '1', '1', '{}', 'SET')");
  }
  LoseItDuring("layout upgrade", {[] { ASSERT_EQ(HostSetup::Initialize().upgraded.size(), 1U); }},
               host, disk);
}

}  // namespace
}  // namespace TarnConfigStore
