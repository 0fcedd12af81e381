// The pages that tables and indexes consist of (https://sqlite.org/fileformat2.html#b_tree_pages).
#pragma once

#include "db/doctor/page_images.h"

#include <cstdint>
#include <string>
#include <vector>

namespace DBStore::internal {

struct TreeCell {
  std::uint32_t child = 0;  ///< of an inner page: the page of what comes before
  std::int64_t rowid = 0;   ///< of a table
  std::string payload;      ///< its record; none in the inner pages of tables
  bool isWhole = true;      ///< the payload is not cut short by pages that cannot be read
};

struct TreePage {
  enum class Kind : unsigned char { INNER_INDEX = 2, INNER_TABLE = 5, INDEX = 10, TABLE = 13 };
  Kind kind = Kind::TABLE;
  std::vector<TreeCell> cells;
  std::uint32_t last = 0;  ///< of an inner page: the page of what comes after all cells
  bool isDamaged = false;  ///< there are cells that cannot be read
  std::vector<std::uint32_t> overflow;  ///< pages that hold the rest of its payloads

  bool IsInner() const noexcept { return kind == Kind::INNER_INDEX || kind == Kind::INNER_TABLE; }
  bool IsOfIndex() const noexcept { return kind == Kind::INNER_INDEX || kind == Kind::INDEX; }
};

/// Reads a page as one of a tree. False for anything that is none.
bool ReadTreePage(const PageImages& images, std::uint32_t number, TreePage& page);

}  // namespace DBStore::internal
