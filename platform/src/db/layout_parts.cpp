#include "db/layout_parts.h"

#include "platform/logger.h"

#include "db/last_error.h"

#include <sqlite3.h>

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <string_view>
#include <utility>

namespace DBStore::internal {
namespace {

constexpr const char* kReadParts = "SELECT type, name, tbl_name, sql FROM sqlite_schema";
constexpr const char* kReadColumns =
    "SELECT name, pk, \"notnull\" AND dflt_value IS NULL AND hidden = 0 FROM "
    "pragma_table_xinfo(?1)";

constexpr const char* kMeddles =
    ", which is not of this layout and could refuse, change or drop what is written";

std::string Words(std::initializer_list<std::string_view> words) {
  std::string text;
  for (const std::string_view word : words) {
    text += word;
  }
  return text;
}

class Rows {
 public:
  Rows(sqlite3* database, const char* sql) {
    code_ = sqlite3_prepare_v2(database, sql, -1, &statement_, nullptr);
  }
  ~Rows() { sqlite3_finalize(statement_); }
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;

  void Bind(const char* text) { sqlite3_bind_text(statement_, 1, text, -1, SQLITE_TRANSIENT); }
  bool Next() {
    if (code_ == SQLITE_OK || code_ == SQLITE_ROW) {
      code_ = sqlite3_step(statement_);
    }
    return code_ == SQLITE_ROW;
  }
  /// An empty text for NULL.
  std::string Text(int column) const {
    const unsigned char* text = sqlite3_column_text(statement_, column);
    return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
  }
  int Number(int column) const { return sqlite3_column_int(statement_, column); }
  int Code() const { return code_ == SQLITE_DONE ? SQLITE_OK : code_; }

 private:
  sqlite3_stmt* statement_ = nullptr;
  int code_ = SQLITE_OK;
};

// As SQLite compares names.
struct NameOrder {
  bool operator()(const std::string& a, const std::string& b) const {
    return sqlite3_stricmp(a.c_str(), b.c_str()) < 0;
  }
};

struct Column {
  int placeInKey = 0;
  bool mustBeGiven = false;
};
using Columns = std::map<std::string, Column, NameOrder>;

int ReadColumns(sqlite3* database, const char* table, Columns& columns) {
  Rows rows(database, kReadColumns);
  rows.Bind(table);
  while (rows.Next()) {
    columns[rows.Text(0)] = {rows.Number(1), rows.Number(2) != 0};
  }
  return rows.Code();
}

class Look {
 public:
  Look(sqlite3* database, const Layout& layout, PartsFound& found)
      : database_(database), layout_(layout), found_(found) {}

  int AtAll(int version) {
    Rows rows(database_, kReadParts);
    while (rows.Next()) {
      const int code = At({rows.Text(0), rows.Text(1), rows.Text(2), rows.Text(3)});
      if (code != SQLITE_OK) {
        return code;
      }
    }
    for (const Part& part : layout_.parts) {
      if (part.since <= version && !seen_.contains(part.name)) {
        if (part.kind == Part::Kind::TRIGGER) {
          found_.missing.push_back("the trigger " + std::string(part.name) + " is missing");
        } else {
          Wrong(Of::TABLE, "has no " + std::string(part.name));
        }
      }
    }
    return rows.Code();
  }

 private:
  struct Declared {
    std::string type;
    std::string name;
    std::string table;
    std::string sql;
  };

  // Of several faults one is told; a table's tells more than that of a trigger, which may follow from
  // it.
  enum class Of { TABLE, TRIGGER };
  void Wrong(Of kind, std::string what, const char* mend = "") {
    if (found_.wrong.empty() || (kind == Of::TABLE && told_ == Of::TRIGGER)) {
      found_.wrong = std::move(what);
      found_.mend = mend;
      told_ = kind;
    }
  }

  const Part* Find(const std::string& name, bool isTrigger) const {
    for (const Part& part : layout_.parts) {
      if ((part.kind == Part::Kind::TRIGGER) == isTrigger &&
          sqlite3_stricmp(part.name, name.c_str()) == 0) {
        return &part;
      }
    }
    return nullptr;
  }

  // SQLite keeps the words of a declaration.
  bool IsOurs(std::string_view sql) const {
    const auto isOf = [&sql](std::string_view ours) {
      return ours.find(sql) != std::string_view::npos;
    };
    if (isOf(layout_.definition) || isOf(layout_.former)) {
      return true;
    }
    constexpr std::string_view kOfLayout1 = " WITHOUT ROWID";
    if (!sql.ends_with(kOfLayout1)) {
      return false;
    }
    sql.remove_suffix(kOfLayout1.size());
    return isOf(layout_.definition);
  }

  int At(const Declared& declared) {
    const bool isTrigger = declared.type == "trigger";
    const Part* const part = Find(declared.name, isTrigger);
    if (part != nullptr && declared.type != "index") {
      seen_.insert({part->name, {}});
      return IsOurs(declared.sql) ? SQLITE_OK : AtAnotherOne(*part, declared);
    }
    const Part* const table = Find(declared.table, false);
    if (table == nullptr || declared.sql.empty()) {
      return SQLITE_OK;  // of others, or an index of a key
    }
    const std::string what = declared.type + " " + declared.name + " on " + table->name;
    if (isTrigger) {
      Wrong(Of::TRIGGER, "has the " + what + kMeddles, "remove it (DROP TRIGGER)");
    } else if (declared.sql.starts_with("CREATE UNIQUE")) {
      Wrong(Of::TABLE, "has the unique " + what + kMeddles, "remove it (DROP INDEX)");
    } else {
      found_.foreign.push_back("the " + what);
    }
    return SQLITE_OK;
  }

  int AtAnotherOne(const Part& part, const Declared& declared) {
    const std::string name = part.name;
    if (part.kind == Part::Kind::TRIGGER) {
      Wrong(Of::TRIGGER, "has another trigger " + name + " than its layout");
      return SQLITE_OK;
    }
    const char* const wanted = part.kind == Part::Kind::TABLE ? "table" : "view";
    if (declared.type != wanted) {
      Wrong(Of::TABLE, name + " is a " + declared.type + ", not a " + wanted);
    } else if (part.kind == Part::Kind::VIEW) {
      Wrong(Of::TABLE, "has another view " + name + " than its layout");
    } else if (declared.sql.starts_with("CREATE VIRTUAL")) {
      Wrong(Of::TABLE, name + " is a virtual table");
    } else {
      return AtColumnsOf(name);
    }
    return SQLITE_OK;
  }

  int AtColumnsOf(const std::string& table) {
    int code = SQLITE_OK;
    const DatabaseHandle pattern =
        OpenFile(":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY, code);
    Columns ours;
    Columns theirs;
    if (code == SQLITE_OK) {
      code = sqlite3_exec(pattern.get(), layout_.definition, nullptr, nullptr, nullptr);
    }
    if (code == SQLITE_OK) {
      code = ReadColumns(pattern.get(), table.c_str(), ours);
    }
    if (code == SQLITE_OK) {
      code = ReadColumns(database_, table.c_str(), theirs);
    }
    if (code == SQLITE_OK) {
      Compare(table, ours, theirs);
    }
    return code;
  }

  void Compare(const std::string& table, const Columns& ours, Columns& theirs) {
    for (const auto& [name, column] : ours) {
      const auto there = theirs.find(name);
      if (there == theirs.end()) {
        Wrong(Of::TABLE, Words({table, " has no column ", name}));
      } else if (there->second.placeInKey != column.placeInKey) {
        Wrong(Of::TABLE, table + " has another key than its layout");
      } else {
        theirs.erase(there);
      }
    }
    for (const auto& [name, column] : theirs) {
      if (column.placeInKey != 0) {
        Wrong(Of::TABLE, table + " has another key than its layout");
      } else if (column.mustBeGiven) {
        Wrong(Of::TABLE,
              Words({table, " has the column ", name,
                     ", which is not of this layout, and no row can be written without it"}),
              "remove it or give it a default");
      } else {
        found_.foreign.push_back(Words({"the column ", name, " of ", table}));
      }
    }
    if (theirs.empty()) {
      found_.foreign.push_back(Words({"a declaration of ", table, " that is another one"}));
    }
  }

  sqlite3* database_;
  const Layout& layout_;
  PartsFound& found_;
  Of told_ = Of::TRIGGER;
  std::map<std::string, Column, NameOrder> seen_;
};

// One word for a file in a state of its declarations: SQLite counts their changes.
std::uint64_t WordFor(const FileIdentity& identity, const std::string& changes) noexcept {
  std::uint64_t word = 14695981039346656037U;  // FNV-1a
  const auto add = [&word](std::uint64_t value) { word = (word ^ value) * 1099511628211U; };
  add(identity.device);
  add(identity.inode);
  for (const char digit : changes) {
    add(static_cast<unsigned char>(digit));
  }
  return word;
}

// Of the process, for each of the two stores: what was looked at last and found usable.
constinit std::atomic<std::uint64_t> lastLooks[2] = {};

}  // namespace

int FindParts(sqlite3* database, const Layout& layout, int version, PartsFound& found) {
  return Look(database, layout, found).AtAll(version);
}

bool HasItsParts(sqlite3* database, const Layout& layout, int version,
                 const FileIdentity& identity) {
  std::string changes;
  int code = ReadPragma(database, "PRAGMA schema_version", changes);
  std::atomic<std::uint64_t>& last = lastLooks[&layout == &CurrentStoreLayout() ? 0 : 1];
  const std::uint64_t word = WordFor(identity, changes);
  if (code == SQLITE_OK && word == last.load(std::memory_order_relaxed)) {
    return true;
  }
  PartsFound found;
  if (code == SQLITE_OK) {
    code = FindParts(database, layout, version, found);
  }
  if (code != SQLITE_OK) {
    ReportSqliteFailure(database, code, layout.fixedPath, std::string(),
                        "looking at what is declared in it");
    return false;
  }
  if (!found.wrong.empty()) {
    std::string what(layout.fixedPath);
    what.append(": ").append(found.wrong).append("; ").append(found.mend);
    what.append(found.mend.empty() ? "" : ", or ").append(kRestoreIt);
    ReportFailure(ErrorKind::CORRUPT, SQLITE_CORRUPT, std::move(what));
    return false;
  }
  for (const std::string& what : found.missing) {
    CSLogger::Log(CSLogger::kProblem, "%s: %s", layout.fixedPath, what.c_str());
  }
  for (const std::string& what : found.foreign) {
    CSLogger::Log(CSLogger::kProblem, "%s: has %s, which is not of this layout", layout.fixedPath,
                  what.c_str());
  }
  if (version < layout.version) {
    CSLogger::Log(CSLogger::kOutcome,
                  "%s: is of layout %d and used as it is; `tarnctl init` brings it to layout %d",
                  layout.fixedPath, version, layout.version);
  }
  last.store(word, std::memory_order_relaxed);
  return true;
}

}  // namespace DBStore::internal
