#include "db/doctor/salvage.h"

#include "db/doctor/row_walk.h"
#include "db/query.h"
#include "db/raising.h"
#include "json/utf8.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace DBStore::internal {
namespace {

using HostRepair::LostRow;
using Key = std::vector<std::string>;

// The values of a row by the columns of the table that it goes into; they stay where they are when it
// is moved.
struct Candidate {
  std::vector<const Field*> values;  // null for a column that the row has nothing for
  FoundRow row;
  bool isHidden = false;  // of commits that SQLite does not see
};

std::int64_t NumberIn(const Candidate& candidate, const TableShape& shape, const char* column) {
  const auto at = shape.Find(column);
  return at && candidate.values[*at] != nullptr ? candidate.values[*at]->integer : 0;
}

class Salvager {
 public:
  Salvager(const Layout& layout, const std::string& path)
      : layout_(layout), path_(path), images_(path), result_{MakeInMemory(layout), {}} {
    Check(ReadTableShapes(Database(), shapes_), "reading what should be in it");
    // Nothing is to be done about rows that come back.
    sqlite3_db_config(Database(), SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
  }

  Salvaged Run() {
    FoundRows found = WalkRows(images_, shapes_);
    result_.unreadable = found.unreadable;
    result_.isBeginningLost = images_.Count() > 0 && !images_.HasHeader();
    result_.damagedFrames = images_.Log().damagedFrames;
    for (FoundRow& row : found.rows) {
      Choose(std::move(row), false);
    }
    if (images_.Log().HidesCommits()) {
      TakeHidden();
    }
    Check(sqlite3_exec(Database(), "BEGIN", nullptr, nullptr, nullptr), "filling it");
    for (const TableShape& shape : shapes_) {
      Write(shape);
    }
    Check(sqlite3_exec(Database(), "COMMIT", nullptr, nullptr, nullptr), "filling it");
    for (const IndexedKey& key : found.keys) {
      TellMissing(key);
    }
    sqlite3_db_config(Database(), SQLITE_DBCONFIG_ENABLE_TRIGGER, 1, nullptr);
    return std::move(result_);
  }

 private:
  void TakeHidden() {
    const PageImages images(path_, PageImages::View::WITH_HIDDEN);
    FoundRows found = WalkRows(images, shapes_);
    for (FoundRow& row : found.rows) {
      Choose(std::move(row), true);
    }
    if (result_.isBeginningLost && images.HasHeader()) {
      result_.isBeginningLost = false;
      result_.unreadable = found.unreadable;
    }
  }

  sqlite3* Database() const noexcept { return result_.database.get(); }

  void Check(int code, const char* what) const {
    if (code != SQLITE_OK) {
      RaiseSqliteError(code, layout_.fixedPath, ":memory:", what);
    }
  }

  const TableShape* ShapeNamed(const std::string& table) const {
    for (const TableShape& shape : shapes_) {
      if (shape.name == table) {
        return &shape;
      }
    }
    return nullptr;
  }

  void Lose(const FoundRow& row, const std::string& reason) {
    LostRow lost{layout_.fixedPath, row.table, reason, {}};
    const std::vector<std::size_t> order =
        row.shape ? row.shape->RecordOrder() : std::vector<std::size_t>();
    for (std::size_t i = 0; i < row.fields.size(); ++i) {
      lost.cells.push_back(
          {i < order.size() ? row.shape->columns[order[i]].name : "column " + std::to_string(i + 1),
           row.fields[i].Text()});
    }
    // What SQLite sees and what it does not may both have it.
    const auto isSame = [&lost](const LostRow& other) {
      return other.table == lost.table && other.cells == lost.cells;
    };
    if (std::none_of(result_.lost.begin(), result_.lost.end(), isSame)) {
      result_.lost.push_back(std::move(lost));
    }
  }

  // Names are what everything is found by: one that nobody can have written is no row's.
  static bool IsName(const Field& field) {
    return field.type != Field::Type::TEXT ||
           (Json::Utf8::IsValid(field.bytes) && !Json::Utf8::HasControls(field.bytes));
  }

  void Choose(FoundRow row, bool isHidden) {
    const TableShape* shape = ShapeNamed(row.table);
    if (!row.isWhole) {
      Lose(row, "a part of it lay on a page that cannot be read");
      return;
    }
    if (shape == nullptr || !row.shape) {
      Lose(row, "it is of no table of the store, or it cannot be told of which");
      return;
    }
    Candidate candidate{std::vector<const Field*>(shape->columns.size()), std::move(row), isHidden};
    Key key;
    std::string reason;
    Assign(candidate, *shape);
    if (!MakeKey(candidate, *shape, key, reason)) {
      Lose(candidate.row, reason);
      return;
    }
    const auto [there, isNew] = chosen_[shape->name].try_emplace(std::move(key));
    if (!isNew && !IsBetter(candidate, there->second, *shape)) {
      std::swap(candidate, there->second);
    }
    // What was written over is nothing that anybody misses.
    if (!isNew && candidate.row.fields != there->second.row.fields &&
        !IsOlder(there->second, candidate, *shape)) {
      Lose(there->second.row, "another state of the row was found, which may be the newer one");
    }
    there->second = std::move(candidate);
  }

  static bool IsOlder(const Candidate& a, const Candidate& b, const TableShape& shape) {
    return NumberIn(a, shape, "Revision") < NumberIn(b, shape, "Revision");
  }

  // By the names of the columns: the table may be of an older layout, or have been changed.
  void Assign(Candidate& candidate, const TableShape& shape) {
    const std::vector<std::size_t> order = candidate.row.shape->RecordOrder();
    candidate.values.assign(shape.columns.size(), nullptr);
    for (std::size_t i = 0; i < order.size(); ++i) {
      const Field& field = candidate.row.fields[i];
      if (const auto column = shape.Find(candidate.row.shape->columns[order[i]].name)) {
        candidate.values[*column] = &field;
      } else if (field.type != Field::Type::NONE) {
        LostRow lost{layout_.fixedPath, candidate.row.table, "the table has no such column", {}};
        lost.cells.push_back({candidate.row.shape->columns[order[i]].name, field.Text()});
        extra_.push_back(std::move(lost));
      }
    }
  }

  static bool MakeKey(const Candidate& candidate, const TableShape& shape, Key& key,
                      std::string& reason) {
    for (std::size_t i = 0; i < shape.columns.size(); ++i) {
      if (shape.columns[i].keyPosition == 0) {
        continue;
      }
      const Field* value = candidate.values[i];
      if (shape.RowidColumn() == i) {
        key.push_back(std::to_string(candidate.row.rowid));
      } else if (value == nullptr || value->type == Field::Type::NONE || !IsName(*value)) {
        reason = "its " + shape.columns[i].name + " is damaged";
        return false;
      } else {
        key.push_back(*value->Text());
      }
    }
    return true;
  }

  bool IsBetter(const Candidate& a, const Candidate& b, const TableShape& shape) const {
    if (a.isHidden == b.isHidden && a.row.isInTree != b.row.isInTree) {
      return a.row.isInTree;
    }
    if (NumberIn(a, shape, "Revision") != NumberIn(b, shape, "Revision")) {
      return IsOlder(b, a, shape);
    }
    return a.isHidden != b.isHidden && a.isHidden == images_.Log().hiddenIsNewer;
  }

  static int BindValue(sqlite3_stmt* statement, int index, const Field& field) {
    switch (field.type) {
      case Field::Type::INTEGER:
        return sqlite3_bind_int64(statement, index, field.integer);
      case Field::Type::REAL:
        return sqlite3_bind_double(statement, index, field.real);
      case Field::Type::TEXT:
        return sqlite3_bind_text64(statement, index, field.bytes.data(), field.bytes.size(),
                                   SQLITE_STATIC, SQLITE_UTF8);
      case Field::Type::BLOB:
        return sqlite3_bind_blob64(statement, index, field.bytes.data(), field.bytes.size(),
                                   SQLITE_STATIC);
      case Field::Type::NONE:
        break;
    }
    return sqlite3_bind_null(statement, index);
  }

  // The names come from the layout, never from what was found.
  static std::string InsertInto(const TableShape& shape, const Candidate& candidate) {
    std::string columns;
    std::string values;
    for (std::size_t i = 0; i < shape.columns.size(); ++i) {
      if (candidate.values[i] != nullptr || shape.RowidColumn() == i) {
        columns.append(columns.empty() ? "\"" : ", \"").append(shape.columns[i].name).append("\"");
        values.append(values.empty() ? "?" : ", ?").append(std::to_string(i + 1));
      }
    }
    std::string sql = "INSERT OR REPLACE INTO \"";
    sql.append(shape.name).append("\"(").append(columns).append(") VALUES(");
    return sql.append(values).append(")");
  }

  void Write(const TableShape& shape) {
    for (const auto& [key, candidate] : chosen_[shape.name]) {
      Query insert(Database(), InsertInto(shape, candidate));
      int code = insert.Code();
      for (std::size_t i = 0; i < shape.columns.size() && code == SQLITE_OK; ++i) {
        const int index = static_cast<int>(i) + 1;
        if (shape.RowidColumn() == i) {
          code = sqlite3_bind_int64(insert.Statement(), index, candidate.row.rowid);
        } else if (candidate.values[i] != nullptr) {
          code = BindValue(insert.Statement(), index, *candidate.values[i]);
        }
      }
      if (code == SQLITE_OK) {
        insert.Step();
        code = insert.Code();
      }
      if ((code & 0xff) == SQLITE_CONSTRAINT) {
        Lose(candidate.row, std::string("it is refused: ") + sqlite3_errmsg(Database()));
        continue;
      }
      Check(code, "filling it");
      // A row that only counts something is not what anybody looks for.
      result_.rows += shape.RowidColumn() ? 0U : 1U;
      result_.strays += candidate.row.isInTree ? 0U : 1U;
    }
    result_.lost.insert(result_.lost.end(), std::make_move_iterator(extra_.begin()),
                        std::make_move_iterator(extra_.end()));
    extra_.clear();
  }

  void TellMissing(const IndexedKey& indexed) {
    const TableShape* shape = ShapeNamed(indexed.table);
    if (shape == nullptr) {
      return;
    }
    Key key;
    LostRow lost{layout_.fixedPath,
                 indexed.table,
                 "it lay on a page that cannot be read; its key alone is left",
                 {}};
    std::size_t at = 0;
    for (const ColumnShape& column : shape->columns) {
      if (column.keyPosition != 0 && at < indexed.key.size()) {
        const std::optional<std::string> text = indexed.key[at++].Text();
        key.push_back(text.value_or(std::string()));
        lost.cells.push_back({column.name, text});
      }
    }
    const auto& rows = chosen_[shape->name];
    if (at == indexed.key.size() && rows.find(key) == rows.end() &&
        told_.insert({shape->name, key}).second) {
      result_.lost.push_back(std::move(lost));
      ++result_.keysAlone;
    }
  }

  const Layout& layout_;
  const std::string path_;
  const PageImages images_;
  Salvaged result_;
  std::vector<TableShape> shapes_;
  std::map<std::string, std::map<Key, Candidate>> chosen_;
  std::vector<LostRow> extra_;
  std::set<std::pair<std::string, Key>> told_;
};

}  // namespace

std::string Salvaged::Summary() const {
  std::string text = std::to_string(rows) + " rows were found";
  if (strays > 0) {
    text += ", " + std::to_string(strays) + " of them on pages that nothing leads to any more";
  }
  return text;
}

std::string Salvaged::Losses() const {
  std::string text;
  const auto add = [&text](const std::string& part) {
    text.append(text.empty() ? "" : "; ").append(part);
  };
  if (isBeginningLost) {
    add("the first page is lost, so that nothing tells whether others are: rows may be missing, "
        "and "
        "rows that were deleted last may be back");
  }
  if (unreadable > 0) {
    add(std::to_string(unreadable) + " pages could not be read: the rows on them are lost");
  }
  if (lost.size() > keysAlone) {
    add(std::to_string(lost.size() - keysAlone) +
        " rows, or what is left of them, have no place in the new database, and were put aside");
  }
  if (keysAlone > 0) {
    add("of " + std::to_string(keysAlone) + " rows nothing but the key is left");
  }
  if (damagedFrames > 0) {
    add(std::to_string(damagedFrames) +
        " pages of the log could not be read: rows on them may be as they were before, or missing");
  }
  return text;
}

Salvaged Salvage(const Layout& layout, const std::string& path) {
  return Salvager(layout, path).Run();
}

}  // namespace DBStore::internal
