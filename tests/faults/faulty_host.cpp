#include "faults/faulty_host.h"

#include "platform/host_paths.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <tuple>

namespace Faults {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPaths[] = {HostPaths::kStore, HostPaths::kSchemaStore};

bool Fits(const std::string& text, std::size_t at, std::string_view form) {
  for (std::size_t i = 0; i < form.size(); ++i) {
    const char c = text[at + i];
    const bool isDigit = c >= '0' && c <= '9';
    if (form[i] == '9'   ? !isDigit
        : form[i] == 'f' ? !isDigit && (c < 'a' || c > 'f')
                         : c != form[i]) {
      return false;
    }
  }
  return true;
}

// Replaces what has this form, in which "9" stands for a digit and "f" for a hexadecimal one.
void Replace(std::string& text, std::string_view form, const char* by) {
  const std::size_t dash = form.find('-');
  for (std::size_t at = text.find('-'); at != std::string::npos; at = text.find('-', at + 1)) {
    if (at >= dash && at - dash + form.size() <= text.size() && Fits(text, at - dash, form)) {
      text.replace(at - dash, form.size(), by);
      at -= dash;
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

std::string SavedPath(const std::string& root, const char* path) {
  return root + ".saved" + fs::path(path).filename().string();
}

}  // namespace

std::string Settled(std::string text) {
  Replace(text, "9999-99-99 99:99:99", "TIME");
  Replace(text, "ffffffff-ffff-ffff-ffff-ffffffffffff", "ID");
  return text;
}

void FaultyDatabase::Closer::operator()(sqlite3* database) const {
  sqlite3_close(database);
}

void FaultyDatabase::Closer::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

FaultyDatabase::FaultyDatabase(std::string path, const std::string& saved)
    : path_(std::move(path)), probe_(path_) {
  const Handle copy = Open(saved);
  saved_ = Read(copy.get());
  for (const auto& [name, rows] : saved_) {
    std::string values = "'INSERT INTO " + name + " VALUES('";
    const char* between = " || ";
    for (const std::string& column :
         Run(copy.get(), "SELECT name FROM pragma_table_info('" + name + "')")) {
      values.append(between).append("quote(").append(column).append(")");
      between = " || ',' || ";
    }
    for (const std::string& row : Run(copy.get(), "SELECT " + values + " || ');' FROM " + name)) {
      inserts_[name] += row;
    }
  }
}

FaultyDatabase::Handle FaultyDatabase::Open(const std::string& path) {
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

std::vector<std::string> FaultyDatabase::Run(sqlite3* database, const std::string& sql) {
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
FaultyDatabase::Tables FaultyDatabase::Read(sqlite3* database) {
  // Tables come and go with their schema only.
  if (const std::string version = Run(database, "PRAGMA schema_version").front();
      version != schemaVersion_) {
    queries_ =
        Run(database,
            "SELECT t.name || '/SELECT ' || group_concat(c.name) || ' FROM ' || t.name "
            "FROM sqlite_schema AS t, pragma_table_info(t.name) AS c WHERE t.type = 'table' "
            "AND t.name NOT LIKE 'sqlite_%' AND t.name <> 'Generation' AND c.name NOT LIKE '%Time' "
            "GROUP BY t.name");
    schemaVersion_ = version;
  }
  Tables tables;
  for (const std::string& query : queries_) {
    const std::string name = query.substr(0, query.find('/'));
    std::vector<std::string> rows = Run(database, query.substr(name.size() + 1));
    std::sort(rows.begin(), rows.end());
    std::string& text = tables[name];
    for (const std::string& row : rows) {
      text.append(name).append(": ").append(row).append("\n");
    }
    text = Settled(std::move(text));
  }
  return tables;
}

void FaultyDatabase::Save(const std::string& path, const std::string& copy) {
  Run(Open(path).get(), "VACUUM INTO '" + copy + "'");
}

// All that says what a closed database holds; "?", which equals nothing, where only SQLite can tell.
std::string FaultyDatabase::Bytes() const {
  std::string bytes;
  for (const char* const suffix : {"", "-wal"}) {
    std::ifstream file(path_ + suffix, std::ios::binary | std::ios::ate);
    const std::size_t start = bytes.size();
    bytes.resize(start + (file ? static_cast<std::size_t>(file.tellg()) : 0) + 1);
    file.seekg(0).read(bytes.data() + start, static_cast<std::streamsize>(bytes.size() - start));
  }
  return fs::exists(path_ + "-journal") ? "?" : bytes;
}

void FaultyDatabase::Use() {
  if (database_) {
    return;
  }
  database_ = Open(path_);
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(database_.get(), "PRAGMA data_version", -1, &statement, nullptr);
  askVersion_.reset(statement);
  version_ = -1;
}

// Another one after every commit of somebody else.
long long FaultyDatabase::Version() const {
  if (sqlite3_step(askVersion_.get()) != SQLITE_ROW) {
    throw std::runtime_error(path_ + ": " + sqlite3_errmsg(database_.get()));
  }
  const long long version = sqlite3_column_int64(askVersion_.get(), 0);
  sqlite3_reset(askVersion_.get());
  return version;
}

const std::string& FaultyDatabase::Look() {
  if (!database_ && bytes_ != "?" && Bytes() == bytes_) {
    return text_;
  }
  Use();
  if (const long long version = Version(); version != version_) {
    Know(Read(database_.get()));
  }
  return text_;
}

void FaultyDatabase::Know(Tables tables) {
  now_ = std::move(tables);
  text_.clear();
  for (const auto& [name, rows] : now_) {
    text_ += rows;
  }
  version_ = Version();
}

void FaultyDatabase::Restore(const char* grows) {
  Look();
  if (now_ == saved_) {
    return;  // what processes remember of it holds
  }
  Use();
  std::string sql = "BEGIN IMMEDIATE;";
  for (const auto& [name, rows] : saved_) {
    if (now_[name] != rows) {
      sql.append("DELETE FROM ").append(name).append(";").append(inserts_[name]);
    }
  }
  Run(database_.get(), sql + grows + "COMMIT");
  Know(saved_);
}

std::string FaultyDatabase::Locked() {
  return probe_.Held();
}

void FaultyDatabase::Leave() {
  if (database_) {
    Look();
    // What is in the log is recovered by whoever comes next; a long one only takes long.
    constexpr std::uintmax_t kLongLog = std::uintmax_t{1} << 17;
    std::error_code ignored;
    if (fs::file_size(path_ + "-wal", ignored) > kLongLog && !ignored) {
      Run(database_.get(), "PRAGMA wal_checkpoint(TRUNCATE)");
    }
    askVersion_.reset();
    database_.reset();
    bytes_ = Bytes();
  }
  probe_.Forget();
}

FaultyHost::FaultyHost(const std::string& root) : root_(root) {
  for (const char* const path : kPaths) {
    databases_.emplace_back(root + path, SavedPath(root, path));
  }
  std::ifstream list(root_ + ".saved");
  for (std::string line; std::getline(list, line);) {
    files_.push_back(line);
  }
}

void FaultyHost::Save(const std::string& root) {
  for (const char* const path : kPaths) {
    FaultyDatabase::Save(root + path, SavedPath(root, path));
  }
  std::ofstream list(root + ".saved");
  for (const std::string& file : Files(root)) {
    list << file << "\n";
  }
}

void FaultyHost::Restore() {
  databases_[0].Restore("");
  databases_[1].Restore("UPDATE Generation SET Value = Value + 1;");
  for (const std::string& file : Files(root_)) {
    if (!std::binary_search(files_.begin(), files_.end(), file)) {
      fs::remove_all(root_ + file);
    }
  }
}

unsigned FaultyHost::Look() {
  std::string text = databases_[0].Look() + databases_[1].Look();
  for (const std::string& file : Files(root_)) {
    text.append(file).append(file.ends_with(".backup") ? ContentOfBackup(root_ + file) : "\n");
  }
  const auto known = std::find(states_.begin(), states_.end(), text);
  const auto number = static_cast<unsigned>(known - states_.begin());
  if (known == states_.end()) {
    states_.push_back(std::move(text));
  }
  return number;
}

std::string FaultyHost::Differences(unsigned before, unsigned now) const {
  std::string text;
  for (const auto& [sign, all, others] : {std::tuple("\n- ", &states_[before], &states_[now]),
                                          {"\n+ ", &states_[now], &states_[before]}}) {
    std::istringstream lines(*all);
    for (std::string line; std::getline(lines, line);) {
      if (("\n" + *others).find("\n" + line + "\n") == std::string::npos) {
        text.append(sign).append(line);
      }
    }
  }
  return text;
}

std::string FaultyHost::Locked() {
  const std::string held = databases_[0].Locked();
  return held.empty() ? databases_[1].Locked() : held;
}

void FaultyHost::Leave() {
  for (FaultyDatabase& database : databases_) {
    database.Leave();
  }
}

}  // namespace Faults
