// A host with many rows, which can be damaged and looked at.
#pragma once

#include "tarnconfigstore/doctor.h"

#include "support/child_process.h"
#include "support/database.h"
#include "support/test_types.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>

namespace TestSupport {

class DoctoredHost : public ::testing::Test {
 protected:
  using Report = TarnConfigStore::DoctorReport;
  using Rows = std::map<std::string, std::string>;
  static constexpr int kRows = 300;

  DoctoredHost() {
    InstallType(host_, kPlainType);
    InstallType(host_, kSwitchType);
    InstallType(host_, Staged(kPlainType, "staged"));
    InstallType(host_, TypeFile("shipping", "1.0", R"({"type":"object","properties":{"a":{}}})",
                                R"({"instance":"","value":{"a":1}})"));
    Sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
        std::to_string(kRows) +
        ") INSERT INTO Config(Component, ConfigGroup, Name, Identifier, Version, UserValue, "
        "VitalValue, Revision) SELECT 'tarn', 'test', 'switch', 's' || i, '2.1', "
        R"('{"name":"s' || i || '","mtu":' || i || '}', '{"name":"s' || i || '","serial":"' || )"
        "hex(randomblob(20)) || '\"}', i FROM n");
    Sql("INSERT INTO KeyValue VALUES('BOOT_MODE', '4')");
    Settle();
  }

  std::vector<std::string> Sql(const std::string& sql) const { return Database(host_).Run(sql); }
  /// By a process that ends with the database open, as one does that is killed.
  static void SqlOfAnother(const std::string& path, const std::vector<std::string>& statements) {
    ASSERT_EQ(InChild([&] {
                auto* const database = new Database(path);
                for (const std::string& sql : statements) {
                  database->Run(sql);
                }
                return 0;
              }),
              0);
  }
  /// All of the log is in the store.
  void Settle() const { Sql("PRAGMA wal_checkpoint(TRUNCATE)"); }

  std::string Directory() const { return std::filesystem::path(store_).parent_path().string(); }

  /// By a process that has none of our locks to drop.
  static void Overwrite(const std::string& path, std::int64_t offset, std::size_t length) {
    ASSERT_EQ(InChild([&] {
                std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
                std::string noise(length, '\0');
                for (std::size_t i = 0; i < length; ++i) {
                  noise[i] = static_cast<char>((i * 7919 + 131) >> 3U);
                }
                file.seekp(offset) << noise << std::flush;
                return file ? 0 : 1;
              }),
              0);
  }

  /// Where the last page with rows of Config begins.
  std::int64_t PageOfRows() const {
    return static_cast<std::int64_t>(Read(store_).rfind("\"serial\"") / 4096 * 4096);
  }

  /// Every row of the tables that hold values, by its key: a store that cannot be read has none.
  Rows Look() const {
    Rows rows;
    try {
      Database database(host_);
      for (const char* table : {"Config", "DefaultConfig", "DesiredUserConfig", "KeyValue"}) {
        for (const std::string& row : database.Run(std::string("SELECT * FROM ") + table)) {
          const std::size_t key =
              table == std::string("KeyValue") ? row.find(' ') : NthBlank(row, 4);
          rows[table + (" " + row.substr(0, key))] = row.substr(key);
        }
      }
    } catch (const std::runtime_error&) {
      rows.clear();
    }
    return rows;
  }

  /// "kind ..." of what is more than a note, and of what was done or not.
  static std::string Kinds(const std::vector<TarnConfigStore::DoctorFinding>& findings) {
    std::string kinds;
    for (const auto& finding : findings) {
      if (finding.severity != TarnConfigStore::DoctorSeverity::NOTE) {
        kinds += (kinds.empty() ? "" : " ") + finding.kind;
      }
    }
    return kinds;
  }
  static std::string Actions(const Report& report) {
    std::string kinds;
    for (const auto& action : report.actions) {
      kinds += (kinds.empty() ? "" : " ") + action.kind + (action.done ? "" : "!");
    }
    return kinds;
  }

  static std::string Read(const std::string& path) {
    std::stringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }
  static std::string PutAside(const Report& report) {
    return Read(report.keepingPlace + "/put-aside.json");
  }

  TemporaryHost host_;
  const std::string store_ = host_.Path(HostPaths::kStore);
  const std::string types_ = host_.Path(HostPaths::kSchemaStore);

 private:
  static std::size_t NthBlank(const std::string& text, int n) {
    std::size_t at = std::string::npos;
    for (int i = 0; i < n; ++i) {
      at = text.find(' ', at + 1);
    }
    return at;
  }
};

}  // namespace TestSupport
