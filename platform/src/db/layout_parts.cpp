#include "db/layout_parts.h"

#include "platform/logger.h"

#include "db/declared_columns.h"
#include "db/last_error.h"
#include "db/query.h"

#include <sqlite3.h>

#include <atomic>
#include <cstdint>
#include <set>
#include <string_view>
#include <utility>

namespace DBStore::internal {
namespace {

constexpr const char* kReadParts = "SELECT type, name, tbl_name, sql FROM sqlite_schema";
constexpr const char* kMeddles =
    ", which is not of this layout and could refuse, change or drop what is written";

class Look {
 public:
  Look(sqlite3* database, const Layout& layout, PartsFound& found)
      : database_(database), layout_(layout), found_(found) {}

  int AtAll(int version) {
    Query rows(database_, kReadParts);
    while (rows.Step()) {
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
  void Wrong(Of kind, std::string what, std::string mend = "") {
    if (found_.wrong.empty() || (kind == Of::TABLE && told_ == Of::TRIGGER)) {
      found_.wrong = std::move(what);
      found_.mend = std::move(mend);
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
      seen_.insert(part->name);
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
      PartsFound columns;
      const int code = CompareColumns(database_, layout_, name, columns);
      if (!columns.wrong.empty()) {
        Wrong(Of::TABLE, columns.wrong, columns.mend);
      }
      found_.foreign.insert(found_.foreign.end(), columns.foreign.begin(), columns.foreign.end());
      return code;
    }
    return SQLITE_OK;
  }

  sqlite3* database_;
  const Layout& layout_;
  PartsFound& found_;
  Of told_ = Of::TRIGGER;
  std::set<std::string_view> seen_;
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
