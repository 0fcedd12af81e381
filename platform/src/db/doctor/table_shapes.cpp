#include "db/doctor/table_shapes.h"

#include "db/doctor/statements.h"
#include "db/query.h"
#include "db/raising.h"

#include <algorithm>

namespace DBStore::internal {
namespace {

DatabaseHandle OpenInMemory(int& code) {
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_MEMORY;
  return OpenFile(":memory:", kFlags, code);
}

int RefuseQuestions(void* /*context*/, int action, const char* /*first*/, const char* /*second*/,
                    const char* /*database*/, const char* /*trigger*/) {
  return action == SQLITE_SELECT ? SQLITE_DENY : SQLITE_OK;
}

}  // namespace

std::vector<std::size_t> TableShape::RecordOrder() const {
  std::vector<std::size_t> order(columns.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    order[i] = i;
  }
  if (withoutRowid) {
    // The key comes first, in its own order.
    const auto rank = [this](std::size_t i) {
      const int position = columns[i].keyPosition;
      return position == 0 ? static_cast<int>(columns.size()) : position;
    };
    std::stable_sort(order.begin(), order.end(),
                     [&rank](std::size_t a, std::size_t b) { return rank(a) < rank(b); });
  }
  return order;
}

std::optional<std::size_t> TableShape::RowidColumn() const {
  const auto isKey = [](const ColumnShape& column) { return column.keyPosition != 0; };
  const auto key = std::find_if(columns.begin(), columns.end(), isKey);
  if (withoutRowid || key == columns.end() || key->type != "INTEGER" ||
      std::count_if(columns.begin(), columns.end(), isKey) != 1) {
    return std::nullopt;
  }
  return static_cast<std::size_t>(key - columns.begin());
}

std::optional<std::size_t> TableShape::Find(const std::string& column) const {
  const auto found =
      std::find_if(columns.begin(), columns.end(),
                   [&column](const ColumnShape& shape) { return shape.name == column; });
  return found == columns.end() ? std::nullopt
                                : std::optional(static_cast<std::size_t>(found - columns.begin()));
}

DatabaseHandle MakeInMemory(const Layout& layout) {
  int code = SQLITE_OK;
  DatabaseHandle handle = OpenInMemory(code);
  const std::string marks = "PRAGMA application_id=" + std::to_string(layout.applicationId) +
                            "; PRAGMA user_version=" + std::to_string(layout.version);
  for (const char* sql : {layout.definition, marks.c_str()}) {
    if (code == SQLITE_OK) {
      code = sqlite3_exec(handle.get(), sql, nullptr, nullptr, nullptr);
    }
  }
  if (code != SQLITE_OK) {
    RaiseSqliteError(code, layout.fixedPath, ":memory:", "making an empty database in memory");
  }
  return handle;
}

int ReadTableShapes(sqlite3* database, std::vector<TableShape>& shapes) {
  Query tables(database, Sql::kTables);
  while (tables.Step()) {
    TableShape shape{tables.Text(0), tables.Number(1) != 0, {}};
    Query columns(database, Sql::kColumns);
    columns.Bind(shape.name);
    while (columns.Step()) {
      shape.columns.push_back(
          {columns.Text(0), columns.Text(1), columns.Number(2) != 0, columns.Number(3)});
    }
    if (columns.Code() != SQLITE_OK) {
      return columns.Code();
    }
    shapes.push_back(std::move(shape));
  }
  return tables.Code();
}

int ReadSchemaEntries(sqlite3* database, std::vector<SchemaEntry>& entries) {
  Query query(database, Sql::kObjects);
  while (query.Step()) {
    entries.push_back({query.Text(0), query.Text(1), query.Text(2), query.Text(3)});
  }
  return query.Code();
}

std::optional<TableShape> ShapeOf(const std::string& definition) {
  int code = SQLITE_OK;
  const DatabaseHandle scratch = OpenInMemory(code);
  if (code != SQLITE_OK || definition.rfind("CREATE TABLE", 0) != 0) {
    return std::nullopt;
  }
  // Of a damaged database, the text may be anything: it is run alone, and may ask for nothing.
  sqlite3_set_authorizer(scratch.get(), RefuseQuestions, nullptr);
  {
    Query define(scratch.get(), definition);
    if (define.Step() || define.Code() != SQLITE_OK) {
      return std::nullopt;
    }
  }
  sqlite3_set_authorizer(scratch.get(), nullptr, nullptr);
  std::vector<TableShape> shapes;
  if (ReadTableShapes(scratch.get(), shapes) != SQLITE_OK || shapes.size() != 1) {
    return std::nullopt;
  }
  return std::move(shapes.front());
}

}  // namespace DBStore::internal
