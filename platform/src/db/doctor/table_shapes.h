// What a database consists of, and what one should consist of: asked of a database that is made, in
// memory, as the layout says.
#pragma once

#include "db/database_file.h"
#include "db/layout.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace DBStore::internal {

struct ColumnShape {
  std::string name;
  std::string type;
  bool notNull = false;
  int keyPosition = 0;  ///< in the primary key, from 1; 0 for none

  friend bool operator==(const ColumnShape&, const ColumnShape&) = default;
};

struct TableShape {
  std::string name;
  bool withoutRowid = false;
  std::vector<ColumnShape> columns;

  friend bool operator==(const TableShape&, const TableShape&) = default;

  /// The columns, as indexes, in the order in which a record has them.
  std::vector<std::size_t> RecordOrder() const;
  /// The column that stands for the row's number, of which a record has nothing.
  std::optional<std::size_t> RowidColumn() const;
  std::optional<std::size_t> Find(const std::string& column) const;
};

/// A table, index, trigger or view.
struct SchemaEntry {
  std::string type;
  std::string name;
  std::string table;
  std::string sql;
};

/// An empty database in memory. Raises std::runtime_error, reported.
DatabaseHandle MakeInMemory(const Layout& layout);

/// SQLite result codes.
int ReadTableShapes(sqlite3* database, std::vector<TableShape>& shapes);
int ReadSchemaEntries(sqlite3* database, std::vector<SchemaEntry>& entries);

/// The shape that a definition gives a table; nothing for what defines none.
std::optional<TableShape> ShapeOf(const std::string& definition);

}  // namespace DBStore::internal
