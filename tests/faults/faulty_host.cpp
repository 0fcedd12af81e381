#include "faults/faulty_host.h"

#include "platform/host_paths.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace Faults {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPaths[] = {HostPaths::kStore, HostPaths::kSchemaStore};

bool IsDigitAt(const std::string& text, std::size_t at, bool hexadecimal) {
  const char c = text[at];
  return (c >= '0' && c <= '9') || (hexadecimal && c >= 'a' && c <= 'f');
}

// Replaces what has this form, in which "9" stands for a digit and "f" for a hexadecimal one.
void Replace(std::string& text, const std::string& form, const char* by) {
  for (std::size_t at = 0; at + form.size() <= text.size(); ++at) {
    bool fits = true;
    for (std::size_t i = 0; i < form.size() && fits; ++i) {
      fits = form[i] == '9' || form[i] == 'f' ? IsDigitAt(text, at + i, form[i] == 'f')
                                              : text[at + i] == form[i];
    }
    if (fits) {
      text.replace(at, form.size(), by);
    }
  }
}

bool IsSQLites(const std::string& name) {
  return name.ends_with("-wal") || name.ends_with("-shm") || name.ends_with("-journal");
}

std::vector<std::string> Files(const std::string& root) {
  std::vector<std::string> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
    if (!IsSQLites(entry.path().string())) {
      files.push_back(entry.path().string().substr(root.size()));
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string ContentOfBackup(const std::string& path) {
  return " of " + std::to_string(fs::file_size(path)) + " bytes\n";
}

}  // namespace

std::string Settled(std::string text) {
  Replace(text, "9999-99-99 99:99:99", "TIME");
  Replace(text, "ffffffff-ffff-ffff-ffff-ffffffffffff", "ID");
  return text;
}

void FaultyHost::Closer::operator()(sqlite3* database) const {
  sqlite3_close(database);
}

FaultyHost::FaultyHost(const std::string& root) : root_(root) {
  for (int i = 0; i < 2; ++i) {
    databases_[i] = Open(root + kPaths[i]);
    if (fs::exists(root + ".saved")) {
      Run(databases_[i].get(), "ATTACH '" + root + ".saved/" + std::to_string(i) + "' AS saved");
    }
  }
}

FaultyHost::Handle FaultyHost::Open(const std::string& path) {
  sqlite3* database = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
  Handle handle(database);
  if (code != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(database));
  }
  int keep = 1;
  sqlite3_file_control(database, "main", SQLITE_FCNTL_PERSIST_WAL, &keep);
  sqlite3_db_config(database, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
  Run(database, "PRAGMA synchronous=OFF");
  return handle;
}

std::vector<std::string> FaultyHost::Run(sqlite3* database, const std::string& sql) {
  std::vector<std::string> rows;
  const auto collect = [](void* context, int count, char** values, char** /*names*/) {
    std::string row;
    for (int i = 0; i < count; ++i) {
      row += std::string(i == 0 ? "" : "|") + (values[i] == nullptr ? "-" : values[i]);
    }
    static_cast<std::vector<std::string>*>(context)->push_back(row);
    return 0;
  };
  char* error = nullptr;
  if (sqlite3_exec(database, sql.c_str(), collect, &rows, &error) != SQLITE_OK) {
    const std::string message = std::string(error) + " in " + sql;
    sqlite3_free(error);
    throw std::runtime_error(message);
  }
  return rows;
}

// The number that tells readers of a change has to grow.
std::vector<std::string> FaultyHost::Tables(sqlite3* database) {
  return Run(
      database,
      "SELECT name FROM main.sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite_%' "
      "AND name <> 'Generation' ORDER BY name");
}

void FaultyHost::Save() {
  fs::create_directory(root_ + ".saved");
  for (int i = 0; i < 2; ++i) {
    const std::string copy = root_ + ".saved/" + std::to_string(i);
    Run(databases_[i].get(), "VACUUM INTO '" + copy + "'");
    Run(databases_[i].get(), "ATTACH '" + copy + "' AS saved");
  }
  std::ofstream list(root_ + ".saved/files");
  for (const std::string& file : Files(root_)) {
    list << file << "\n";
  }
}

void FaultyHost::Restore() {
  for (const Handle& database : databases_) {
    if (RowsOf(database.get(), "main") == RowsOf(database.get(), "saved")) {
      continue;  // what processes remember of it holds
    }
    std::string sql = "BEGIN IMMEDIATE;";
    for (const std::string& table : Tables(database.get())) {
      sql += "DELETE FROM main." + table + "; INSERT INTO main." + table + " SELECT * FROM saved." +
             table + ";";
    }
    if (&database == &databases_[1]) {
      sql += "UPDATE Generation SET Value = Value + 1;";
    }
    Run(database.get(), sql + "COMMIT");
  }
  std::vector<std::string> saved;
  std::ifstream list(root_ + ".saved/files");
  for (std::string line; std::getline(list, line);) {
    saved.push_back(line);
  }
  for (const std::string& file : Files(root_)) {
    if (!std::binary_search(saved.begin(), saved.end(), file)) {
      fs::remove_all(root_ + file);
    }
  }
}

std::string FaultyHost::RowsOf(sqlite3* database, const std::string& schema) {
  std::string text;
  for (const std::string& table : Tables(database)) {
    std::string columns;
    for (const std::string& column :
         Run(database, "SELECT name FROM pragma_table_info('" + table + "')")) {
      if (!column.ends_with("Time")) {
        columns += (columns.empty() ? "" : ",") + column;
      }
    }
    std::vector<std::string> rows =
        Run(database, "SELECT " + columns + " FROM " + schema + "." + table);
    std::sort(rows.begin(), rows.end());
    for (const std::string& row : rows) {
      text.append(table).append(": ").append(row).append("\n");
    }
  }
  return Settled(std::move(text));
}

std::string FaultyHost::Look() const {
  std::string text = RowsOf(databases_[0].get(), "main") + RowsOf(databases_[1].get(), "main");
  for (const std::string& file : Files(root_)) {
    text.append(file).append(file.ends_with(".backup") ? ContentOfBackup(root_ + file) : "\n");
  }
  return text;
}

std::string FaultyHost::Locked() const {
  for (int i = 0; i < 2; ++i) {
    if (sqlite3_exec(databases_[i].get(), "BEGIN IMMEDIATE; ROLLBACK", nullptr, nullptr, nullptr) !=
        SQLITE_OK) {
      return std::string(kPaths[i]) + " is locked";
    }
  }
  return {};
}

}  // namespace Faults
