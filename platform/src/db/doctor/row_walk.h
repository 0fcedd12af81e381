// Finding rows in the pages of a database that SQLite may not be able to read.
#pragma once

#include "db/doctor/page_images.h"
#include "db/doctor/records.h"
#include "db/doctor/table_shapes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace DBStore::internal {

struct FoundRow {
  std::shared_ptr<const TableShape> shape;  ///< null where nothing says which table it is of
  std::string table;                        ///< its name, or those of all that it could be of
  std::int64_t rowid = 0;
  std::vector<Field> fields;  ///< as the record has them
  bool isInTree = false;      ///< the table's tree leads to it
  bool isWhole = true;
};

/// A row that an index knows of.
struct IndexedKey {
  std::string table;
  std::vector<Field> key;
};

struct FoundRows {
  std::vector<FoundRow> rows;
  std::vector<IndexedKey> keys;
  /// Pages of tables, or parts of them, that should hold rows or lead to some, and cannot be read.
  std::size_t unreadable = 0;
};

/// Follows the trees of the tables from their roots, as far as they can be read. Then looks at every
/// page that no tree leads to and that is not free: a page that is lost may have led there. What lies
/// there is told from other things by its shape. Where the first page is lost, all that is found is
/// found so.
/// \param expected  shapes that rows may have without a table that says so
FoundRows WalkRows(const PageImages& images, const std::vector<TableShape>& expected);

}  // namespace DBStore::internal
