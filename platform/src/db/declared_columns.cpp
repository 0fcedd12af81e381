#include "db/declared_columns.h"

#include "db/query.h"

#include <sqlite3.h>

#include <initializer_list>
#include <map>
#include <string_view>
#include <utility>

namespace DBStore::internal {
namespace {

constexpr const char* kReadColumns =
    "SELECT name, pk, \"notnull\" AND dflt_value IS NULL AND hidden = 0 FROM "
    "pragma_table_xinfo(?1)";

std::string Words(std::initializer_list<std::string_view> words) {
  std::string text;
  for (const std::string_view word : words) {
    text += word;
  }
  return text;
}

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
  Query rows(database, kReadColumns);
  rows.Bind(table);
  while (rows.Step()) {
    columns[rows.Text(0)] = {rows.Number(1), rows.Number(2) != 0};
  }
  return rows.Code();
}

void Wrong(PartsFound& found, std::string what, const char* mend = "") {
  if (found.wrong.empty()) {
    found.wrong = std::move(what);
    found.mend = mend;
  }
}

void Compare(const std::string& table, const Columns& ours, Columns& theirs, PartsFound& found) {
  for (const auto& [name, column] : ours) {
    const auto there = theirs.find(name);
    if (there == theirs.end()) {
      Wrong(found, Words({table, " has no column ", name}));
    } else if (there->second.placeInKey != column.placeInKey) {
      Wrong(found, table + " has another key than its layout");
    } else {
      theirs.erase(there);
    }
  }
  for (const auto& [name, column] : theirs) {
    if (column.placeInKey != 0) {
      Wrong(found, table + " has another key than its layout");
    } else if (column.mustBeGiven) {
      Wrong(found,
            Words({table, " has the column ", name,
                   ", which is not of this layout, and no row can be written without it"}),
            "remove it or give it a default");
    } else {
      found.foreign.push_back(Words({"the column ", name, " of ", table}));
    }
  }
  if (theirs.empty()) {
    found.foreign.push_back(Words({"a declaration of ", table, " that is another one"}));
  }
}

}  // namespace

int CompareColumns(sqlite3* database, const Layout& layout, const std::string& table,
                   PartsFound& found) {
  int code = SQLITE_OK;
  const DatabaseHandle pattern =
      OpenFile(":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY, code);
  Columns ours;
  Columns theirs;
  if (code == SQLITE_OK) {
    code = sqlite3_exec(pattern.get(), layout.definition, nullptr, nullptr, nullptr);
  }
  if (code == SQLITE_OK) {
    code = ReadColumns(pattern.get(), table.c_str(), ours);
  }
  if (code == SQLITE_OK) {
    code = ReadColumns(database, table.c_str(), theirs);
  }
  if (code == SQLITE_OK) {
    Compare(table, ours, theirs, found);
  }
  return code;
}

}  // namespace DBStore::internal
