#include "db/doctor/layout_check.h"

#include <sqlite3.h>

#include <algorithm>
#include <cctype>

namespace DBStore::internal {
namespace {

using HostRepair::Finding;
using HostRepair::Weight;

// A definition as it is compared: SQLite quotes names when it renames, and keeps blanks as given.
std::string Plain(const std::string& sql) {
  std::string plain;
  for (const char letter : sql) {
    if (std::isspace(static_cast<unsigned char>(letter)) == 0 && letter != '"') {
      plain += letter;
    }
  }
  return plain;
}

const SchemaEntry* FindEntry(const std::vector<SchemaEntry>& entries, const SchemaEntry& like) {
  const auto found =
      std::find_if(entries.begin(), entries.end(), [&like](const SchemaEntry& entry) {
        return entry.name == like.name && entry.type == like.type;
      });
  return found == entries.end() ? nullptr : &*found;
}

const TableShape* FindShape(const std::vector<TableShape>& shapes, const std::string& name) {
  const auto found = std::find_if(shapes.begin(), shapes.end(),
                                  [&name](const TableShape& shape) { return shape.name == name; });
  return found == shapes.end() ? nullptr : &*found;
}

std::string Difference(const TableShape& is, const TableShape& shouldBe) {
  for (const ColumnShape& column : shouldBe.columns) {
    const auto at = is.Find(column.name);
    if (!at) {
      return "has no column " + column.name;
    }
    if (is.columns[*at].keyPosition != column.keyPosition) {
      return "has another primary key: the index on it is gone";
    }
    if (!(is.columns[*at] == column)) {
      return "has a column " + column.name + " of another kind";
    }
  }
  return "is stored in another way";
}

bool HasAll(const TableShape& is, const TableShape& shouldBe) {
  return std::all_of(shouldBe.columns.begin(), shouldBe.columns.end(),
                     [&is](const ColumnShape& column) {
                       const auto at = is.Find(column.name);
                       return at && is.columns[*at] == column;
                     });
}

class Comparison {
 public:
  Comparison(const Layout& layout, DatabaseState& state, std::vector<Finding>& findings)
      : layout_(layout), state_(state), findings_(findings) {}

  int Run(sqlite3* database) {
    const DatabaseHandle expected = MakeInMemory(layout_);
    int code = SQLITE_OK;
    for (const auto& [from, to] : {std::pair(expected.get(), &expected_), {database, &present_}}) {
      code = code == SQLITE_OK ? ReadTableShapes(from, to->shapes) : code;
      code = code == SQLITE_OK ? ReadSchemaEntries(from, to->entries) : code;
    }
    if (code == SQLITE_OK) {
      FindMissing();
      FindForeign();
    }
    return code;
  }

 private:
  struct Content {
    std::vector<TableShape> shapes;
    std::vector<SchemaEntry> entries;
  };

  void Add(Weight weight, const char* kind, const SchemaEntry& entry, const std::string& message,
           const std::string& advice, bool mendable) {
    findings_.push_back({weight, kind, layout_.fixedPath, entry.name, entry.type + " " + message,
                         advice, mendable});
  }

  void FindMissing() {
    for (const SchemaEntry& entry : expected_.entries) {
      const SchemaEntry* present = FindEntry(present_.entries, entry);
      if (present == nullptr && IsTaken(entry.name)) {
        Add(Weight::FAULT, (entry.type + "-missing").c_str(), entry,
            "is not there: something else has its name",
            "move that away with the sqlite3 command, then run `tarnctl doctor --repair`", false);
      } else if (present == nullptr) {
        state_.missing.push_back(entry);
        Add(Weight::FAULT, (entry.type + "-missing").c_str(), entry, "is not there",
            "`tarnctl doctor --repair` makes it again" +
                std::string(entry.type == "table" ? ", without the rows that it had; a backup has "
                                                    "those"
                                                  : ""),
            true);
      } else if (entry.type == "table") {
        CompareTables(entry);
      } else if (Plain(present->sql) != Plain(entry.sql)) {
        state_.changed.push_back(entry);
        Add(Weight::FAULT, (entry.type + "-changed").c_str(), entry, "is not what it should be",
            "`tarnctl doctor --repair` makes it again; the backup beside has it as it is", true);
      }
    }
  }

  bool IsTaken(const std::string& name) const {
    return std::any_of(present_.entries.begin(), present_.entries.end(),
                       [&name](const SchemaEntry& entry) { return entry.name == name; });
  }

  void CompareTables(const SchemaEntry& entry) {
    const TableShape* is = FindShape(present_.shapes, entry.name);
    const TableShape* shouldBe = FindShape(expected_.shapes, entry.name);
    if (is != nullptr && shouldBe != nullptr && HasAll(*is, *shouldBe) &&
        is->withoutRowid == shouldBe->withoutRowid) {
      if (is->columns.size() > shouldBe->columns.size()) {
        Add(Weight::WARNING, "foreign", entry, "has columns that are not ours",
            "find out who added them", false);
      }
    } else if (is != nullptr && shouldBe != nullptr) {
      state_.isSound = false;
      Add(Weight::FAULT, "table-changed", entry, Difference(*is, *shouldBe),
          "`tarnctl doctor --repair` brings its rows into a table that is right", true);
    }
  }

  void FindForeign() {
    for (const SchemaEntry& entry : present_.entries) {
      if (FindEntry(expected_.entries, entry) == nullptr && entry.name.rfind("sqlite_", 0) != 0) {
        Add(Weight::WARNING, "foreign", entry, "is none of the store's",
            "find out who made it; if nobody needs it, drop it with the sqlite3 command", false);
      }
    }
  }

  const Layout& layout_;
  DatabaseState& state_;
  std::vector<Finding>& findings_;
  Content expected_;
  Content present_;
};

}  // namespace

int CheckLayout(sqlite3* database, const Layout& layout, DatabaseState& state,
                std::vector<Finding>& findings) {
  return Comparison(layout, state, findings).Run(database);
}

}  // namespace DBStore::internal
